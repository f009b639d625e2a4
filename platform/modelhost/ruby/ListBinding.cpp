// Methods that every list of named things has.
#include "Binding.h"

namespace modelhost_ruby {

namespace {

VALUE eachItem(VALUE self) {
  RETURN_ENUMERATOR(self, 0, nullptr);
  const VALUE all = rb_funcall(self, rb_intern("to_a"), 0);
  for (long i = 0; i < RARRAY_LEN(all); ++i) rb_yield(rb_ary_entry(all, i));
  return self;
}

VALUE itemAt(VALUE self, VALUE key) {
  const VALUE all = rb_funcall(self, rb_intern("to_a"), 0);
  if (RB_INTEGER_TYPE_P(key)) return rb_ary_entry(all, NUM2LONG(key));
  StringValue(key);
  for (long i = 0; i < RARRAY_LEN(all); ++i) {
    const VALUE item = rb_ary_entry(all, i);
    if (RTEST(rb_str_equal(rb_funcall(item, rb_intern("name"), 0), key))) return item;
  }
  return Qnil;
}

VALUE itemCount(VALUE self) {
  return LONG2NUM(RARRAY_LEN(rb_funcall(self, rb_intern("to_a"), 0)));
}

}  // namespace

void defineList(VALUE klass) {
  rb_include_module(klass, rb_mEnumerable);
  method<&eachItem>(klass, "each");
  method<&itemAt>(klass, "[]");
  method<&itemCount>(klass, "length");
  method<&itemCount>(klass, "size");
}

}  // namespace modelhost_ruby
