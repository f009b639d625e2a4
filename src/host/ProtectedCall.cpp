#include "host/ProtectedCall.h"

#include <cstdio>
#include <utility>

#include "support/TimingLog.h"

namespace quellix {

namespace {

constexpr std::size_t kTextBytes = 900;

struct Described {
  VALUE error;
  char* text;
  const char* callback;
};

// The first backtrace line of an error, or nil.
VALUE FirstLine(VALUE error) {
  const VALUE lines = rb_funcall(error, rb_intern("backtrace"), 0);
  return RB_TYPE_P(lines, T_ARRAY) ? rb_ary_entry(lines, 0) : Qnil;
}

VALUE Describe(VALUE context) {
  const auto* described = reinterpret_cast<const Described*>(context);
  const VALUE line = FirstLine(described->error);
  VALUE message = rb_obj_as_string(described->error);
  VALUE place = NIL_P(line) ? rb_str_new_cstr("an unknown place") : rb_obj_as_string(line);
  std::snprintf(described->text, kTextBytes, "%s raised %s: %.*s (%.*s)", described->callback,
                rb_obj_classname(described->error), static_cast<int>(RSTRING_LEN(message)),
                RSTRING_PTR(message), static_cast<int>(RSTRING_LEN(place)), RSTRING_PTR(place));
  RB_GC_GUARD(message);
  RB_GC_GUARD(place);
  return Qnil;
}

// An error whose own message cannot be had is told by its class alone.
void Report(const char* callback, VALUE error) {
  char text[kTextBytes];
  const Described described{error, text, callback};
  int failed = 0;
  rb_protect(Describe, reinterpret_cast<VALUE>(&described), &failed);
  if (failed != 0) {
    rb_set_errinfo(Qnil);
    std::snprintf(text, sizeof text, "%s raised %s", callback, rb_obj_classname(error));
  }
  std::fprintf(stderr, "[Quellix] %s\n", text);
  std::fflush(stderr);
  LogLine("callback %s", text);
}

// The jump that is on its way to the caller; its error stays Ruby's current one meanwhile.
int interruption = 0;

// Whether a callback may well have raised that itself. Anything else came to it from outside: a
// time-out, an interrupt, the end of its thread, a throw. Only exceptions are objects that can be
// asked; a throw or the end of a thread is neither an error nor an object.
bool IsCallbacksOwn(VALUE error) {
  if (RB_SPECIAL_CONST_P(error) || RB_BUILTIN_TYPE(error) == T_IMEMO) return false;
  for (const VALUE own : {rb_eStandardError, rb_eScriptError, rb_eSystemExit}) {
    if (RTEST(rb_obj_is_kind_of(error, own))) return true;
  }
  return false;
}

// A thread in a wait keeps the interpreter. The main one, which signals come to, gets its turn when
// there is one for it.
VALUE CheckInterrupts(VALUE) {
  const VALUE main = rb_thread_main();
  if (rb_thread_current() != main && rb_thread_interrupted(main) != 0) rb_thread_schedule();
  rb_thread_check_ints();
  return Qnil;
}

}  // namespace

bool Interrupted() {
  if (interruption != 0) return true;
  if (rb_thread_interrupted(rb_thread_current()) == 0 &&
      rb_thread_interrupted(rb_thread_main()) == 0) {
    return false;
  }
  rb_protect(CheckInterrupts, Qnil, &interruption);
  return interruption != 0;
}

int TakeInterruption() {
  return std::exchange(interruption, 0);
}

bool RunProtected(const char* callback, VALUE (*call)(VALUE context), VALUE context) {
  int failed = 0;
  rb_protect(call, context, &failed);
  if (failed == 0) return true;
  const VALUE error = rb_errinfo();
  if (!IsCallbacksOwn(error)) {
    interruption = failed;
    return false;
  }
  rb_set_errinfo(Qnil);
  Report(callback, error);
  return false;
}

}  // namespace quellix
