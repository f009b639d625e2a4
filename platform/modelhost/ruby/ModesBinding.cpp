// ModelHost.watch, fail_call, cost, allow_circles, reset_modes, call_counts, overlaps, owned_objects.
#include <cstring>

#include "Binding.h"

namespace modelhost_ruby {

namespace {

VALUE watch(int argc, VALUE* argv, VALUE) {
  rb_check_arity(argc, 0, 1);
  const char* categories = argc == 1 ? StringValueCStr(argv[0]) : "";
  if (modelhost_watch(categories) != SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "there is no such category among \"%s\"", categories);
  }
  return Qnil;
}

// fail_call(function, nth = 1, result = 6, onwards = false)
VALUE failCall(int argc, VALUE* argv, VALUE) {
  rb_check_arity(argc, 1, 4);
  const char* function = StringValueCStr(argv[0]);
  const long long nth = argc > 1 ? NUM2LL(argv[1]) : 1;
  const int result = argc > 2 ? NUM2INT(argv[2]) : SU_ERROR_GENERIC;
  const bool onwards = argc > 3 && RTEST(argv[3]);
  if (result < 1 || result > SU_ERROR_INVALID_OPERATION || nth < 1) {
    rb_raise(rb_eArgError, "the number of the call is above 0, the result from 1 to 20");
  }
  modelhost_fail(function, nth, static_cast<SUResult>(result), onwards);
  return Qnil;
}

// cost(function, seconds)
VALUE cost(VALUE, VALUE function, VALUE seconds) {
  const char* name = StringValueCStr(function);
  const double value = rb_num2dbl(seconds);
  if (!(value >= 0 && value < 1e3)) rb_raise(rb_eArgError, "the cost is 0 or more seconds");
  modelhost_cost(name, static_cast<int64_t>(value * 1e9));
  return Qnil;
}

VALUE allowCircles(VALUE) {
  modelhost_allow_circles();
  return Qnil;
}

VALUE resetModes(VALUE) {
  modelhost_reset_modes();
  return Qnil;
}

VALUE lines(VALUE text) {
  return rb_funcall(text, rb_intern("lines"), 0);
}

VALUE callCounts(VALUE) {
  const VALUE list = lines(readText(&modelhost_call_list, "no list"));
  const VALUE hash = rb_hash_new();
  for (long i = 0; i < RARRAY_LEN(list); ++i) {
    const VALUE pair = rb_funcall(rb_ary_entry(list, i), rb_intern("split"), 0);
    rb_hash_aset(hash, rb_ary_entry(pair, 0),
                 rb_funcall(rb_ary_entry(pair, 1), rb_intern("to_i"), 0));
  }
  return hash;
}

VALUE overlaps(VALUE) {
  return lines(readText(
      [](SUStringRef* report) {
        modelhost_overlaps(report);
        return SU_ERROR_NONE;
      },
      "no report"));
}

VALUE ownedObjects(VALUE) {
  return SIZET2NUM(modelhost_owned_objects());
}

}  // namespace

void defineModes() {
  const VALUE module = classes.module;
  singletonMethod<&watch>(module, "watch");
  singletonMethod<&failCall>(module, "fail_call");
  singletonMethod<&cost>(module, "cost");
  singletonMethod<&allowCircles>(module, "allow_circles");
  singletonMethod<&resetModes>(module, "reset_modes");
  singletonMethod<&callCounts>(module, "call_counts");
  singletonMethod<&overlaps>(module, "overlaps");
  singletonMethod<&ownedObjects>(module, "owned_objects");
}

}  // namespace modelhost_ruby
