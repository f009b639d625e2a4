#pragma once

#include <exception>
#include <type_traits>

#include "host/RubyHeaders.h"

namespace quellix {

// Runs `call(context)` so that a Ruby error in it ends here. False when there was one; it is told,
// under the callback's name, with its class, its message and where it came from. What is no
// StandardError, ScriptError or exit, and so ends the callback's caller as well (an interrupt, a
// time-out, a throw, the end of its thread), is kept instead, as by Interrupted.
bool RunProtected(const char* callback, VALUE (*call)(VALUE context), VALUE context);

// True when Ruby wants the running method to end: by Ctrl-C, a time-out, the end of its thread.
// Whatever that raised is kept until TakeInterruption; no Ruby code may run before.
bool Interrupted();

// The tag of what was kept, for rb_jump_tag once all destructors have run; 0 for nothing.
int TakeInterruption();

// The same as RunProtected for a callable, which may refer to objects of its caller. A Ruby error
// leaves it without running destructors, so nothing inside it may rely on one. A C++ exception in
// it passes on to the caller, around the interpreter's frames.
template <class Call>
bool ProtectedCall(const char* callback, Call&& call) {
  struct Context {
    std::remove_reference_t<Call>& call;
    std::exception_ptr error;
  } context{call, nullptr};
  const bool done = RunProtected(
      callback,
      [](VALUE address) -> VALUE {
        auto& inside = *reinterpret_cast<Context*>(address);
        try {
          inside.call();
        } catch (...) {
          inside.error = std::current_exception();
        }
        return Qnil;
      },
      reinterpret_cast<VALUE>(&context));
  if (context.error) std::rethrow_exception(context.error);
  return done;
}

}  // namespace quellix
