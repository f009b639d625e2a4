// Ruby values as typed values and back. An Integer is a 32-bit one, a Float a double; a hash with
// one key names another type: {float: 0.5}, {color: [255, 128, 0]}, {byte: 1}, {short: 2},
// {int: 3}, {double: 4}, {time: 5}, {vector: [0, 0, 1]}.
#include <cstring>

#include "Binding.h"

namespace modelhost_ruby {

namespace {

void fill(SUTypedValueRef target, VALUE value);

struct ArrayItems {
  SUTypedValueRef target;
  VALUE array;
  SUTypedValueRef* items;
  long made;
};

VALUE fillItems(VALUE argument) {
  auto* list = reinterpret_cast<ArrayItems*>(argument);
  const long n = RARRAY_LEN(list->array);
  for (long i = 0; i < n; ++i) {
    list->items[i] = SUTypedValueRef(SU_INVALID);
    SUTypedValueCreate(&list->items[i]);
    list->made = i + 1;
    fill(list->items[i], rb_ary_entry(list->array, i));
  }
  SUTypedValueSetArrayItems(list->target, static_cast<size_t>(n), list->items);
  return Qnil;
}

VALUE releaseItems(VALUE argument) {
  auto* list = reinterpret_cast<ArrayItems*>(argument);
  for (long i = 0; i < list->made; ++i) SUTypedValueRelease(&list->items[i]);
  return Qnil;
}

void fillArray(SUTypedValueRef target, VALUE array) {
  VALUE holder = 0;
  ArrayItems list{target, array, ALLOCV_N(SUTypedValueRef, holder, RARRAY_LEN(array) + 1), 0};
  rb_ensure(&fillItems, reinterpret_cast<VALUE>(&list), &releaseItems,
            reinterpret_cast<VALUE>(&list));
  ALLOCV_END(holder);
}

int takeEntry(VALUE key, VALUE value, VALUE argument) {
  auto* entry = reinterpret_cast<VALUE*>(argument);
  entry[0] = key;
  entry[1] = value;
  return ST_STOP;
}

void fillNamed(SUTypedValueRef target, VALUE hash) {
  if (RHASH_SIZE(hash) != 1) rb_raise(rb_eArgError, "a typed value is a hash with one key");
  VALUE entry[2] = {Qnil, Qnil};
  rb_hash_foreach(hash, &takeEntry, reinterpret_cast<VALUE>(entry));
  VALUE name = rb_obj_as_string(entry[0]);
  const char* type = StringValueCStr(name);
  const VALUE value = entry[1];
  const auto is = [&](const char* wanted) { return std::strcmp(type, wanted) == 0; };
  if (is("float")) {
    SUTypedValueSetFloat(target, static_cast<float>(rb_num2dbl(value)));
  } else if (is("double")) {
    SUTypedValueSetDouble(target, rb_num2dbl(value));
  } else if (is("int")) {
    SUTypedValueSetInt32(target, NUM2INT(value));
  } else if (is("short")) {
    SUTypedValueSetInt16(target, NUM2SHORT(value));
  } else if (is("byte")) {
    SUTypedValueSetByte(target, static_cast<char>(NUM2INT(value)));
  } else if (is("time")) {
    SUTypedValueSetTime(target, NUM2LL(value));
  } else if (is("color")) {
    const SUColor color = colorFrom(value);
    SUTypedValueSetColor(target, &color);
  } else if (is("vector")) {
    const SUPoint3D p = pointFrom(value);
    const double vector[3] = {p.x, p.y, p.z};
    SUTypedValueSetVector3d(target, vector);
  } else {
    rb_raise(rb_eArgError, "there is no type %s", type);
  }
}

void fill(SUTypedValueRef target, VALUE value) {
  if (value == Qtrue || value == Qfalse) {
    SUTypedValueSetBool(target, value == Qtrue);
  } else if (RB_INTEGER_TYPE_P(value)) {
    SUTypedValueSetInt32(target, NUM2INT(value));
  } else if (RB_FLOAT_TYPE_P(value)) {
    SUTypedValueSetDouble(target, rb_float_value(value));
  } else if (RB_TYPE_P(value, T_STRING)) {
    SUTypedValueSetString(target, StringValueCStr(value));
  } else if (RB_TYPE_P(value, T_ARRAY)) {
    fillArray(target, value);
  } else if (RB_TYPE_P(value, T_HASH)) {
    fillNamed(target, value);
  } else if (RTEST(rb_obj_is_kind_of(value, rb_cTime))) {
    SUTypedValueSetTime(target, NUM2LL(rb_funcall(value, rb_intern("to_i"), 0)));
  } else {
    rb_raise(rb_eTypeError, "an attribute cannot hold a %" PRIsVALUE, rb_obj_class(value));
  }
}

struct Store {
  SUTypedValueRef typed;
  VALUE value;
  void (*store)(void*, SUTypedValueRef);
  void* context;
};

VALUE fillAndStore(VALUE argument) {
  const auto* s = reinterpret_cast<Store*>(argument);
  fill(s->typed, s->value);
  s->store(s->context, s->typed);
  return Qnil;
}

VALUE releaseStored(VALUE argument) {
  SUTypedValueRelease(&reinterpret_cast<Store*>(argument)->typed);
  return Qnil;
}

VALUE arrayTo(SUTypedValueRef value) {
  size_t count = 0;
  SUTypedValueGetNumArrayItems(value, &count);
  VALUE holder = 0;
  SUTypedValueRef* items = ALLOCV_N(SUTypedValueRef, holder, static_cast<long>(count + 1));
  SUTypedValueGetArrayItems(value, count, items, &count);
  const VALUE array = rb_ary_new();
  for (size_t i = 0; i < count; ++i) rb_ary_push(array, valueTo(items[i]));
  ALLOCV_END(holder);
  return array;
}

// Calls use(dictionary, its name) for each dictionary of an entity or a model.
template <class Use>
void eachDictionary(VALUE owner, Use use) {
  const bool ofModel = RTEST(rb_obj_is_kind_of(owner, classes.model));
  const SUModelRef model = ofModel ? modelRefOf(owner) : SUModelRef SU_INVALID;
  const SUEntityRef entity = ofModel ? SUEntityRef SU_INVALID : entityOf(owner);
  size_t count = 0;
  check(ofModel ? modelhost_get_num_model_dictionaries(model, &count)
                : SUEntityGetNumAttributeDictionaries(entity, &count),
        "no attributes");
  if (count == 0) return;
  VALUE holder = 0;
  SUAttributeDictionaryRef* all =
      ALLOCV_N(SUAttributeDictionaryRef, holder, static_cast<long>(count));
  if (ofModel) {
    modelhost_get_model_dictionaries(model, count, all, &count);
  } else {
    SUEntityGetAttributeDictionaries(entity, count, all, &count);
  }
  for (size_t i = 0; i < count; ++i) {
    use(all[i], readText([&](SUStringRef* s) { return SUAttributeDictionaryGetName(all[i], s); },
                         "no name"));
  }
  ALLOCV_END(holder);
}

struct AttributeTarget {
  SUAttributeDictionaryRef dictionary;
  const char* key;
};

}  // namespace

SUAttributeDictionaryRef findDictionary(VALUE owner, const char* wanted) {
  SUAttributeDictionaryRef found = SU_INVALID;
  eachDictionary(owner, [&](SUAttributeDictionaryRef dictionary, VALUE name) {
    if (std::strcmp(StringValueCStr(name), wanted) == 0) found = dictionary;
  });
  return found;
}

VALUE dictionaryNames(VALUE owner) {
  const VALUE names = rb_ary_new();
  eachDictionary(owner, [&](SUAttributeDictionaryRef, VALUE name) { rb_ary_push(names, name); });
  return names;
}

void withTypedValue(VALUE value, void (*store)(void*, SUTypedValueRef), void* context) {
  Store s{SU_INVALID, value, store, context};
  SUTypedValueCreate(&s.typed);
  rb_ensure(&fillAndStore, reinterpret_cast<VALUE>(&s), &releaseStored,
            reinterpret_cast<VALUE>(&s));
}

VALUE valueTo(SUTypedValueRef value) {
  SUTypedValueType type = SUTypedValueType_Empty;
  SUTypedValueGetType(value, &type);
  switch (type) {
    case SUTypedValueType_Byte: {
      char v = 0;
      SUTypedValueGetByte(value, &v);
      return INT2FIX(v);
    }
    case SUTypedValueType_Short: {
      int16_t v = 0;
      SUTypedValueGetInt16(value, &v);
      return INT2FIX(v);
    }
    case SUTypedValueType_Int32: {
      int32_t v = 0;
      SUTypedValueGetInt32(value, &v);
      return INT2NUM(v);
    }
    case SUTypedValueType_Float: {
      float v = 0;
      SUTypedValueGetFloat(value, &v);
      return rb_float_new(static_cast<double>(v));
    }
    case SUTypedValueType_Double: {
      double v = 0;
      SUTypedValueGetDouble(value, &v);
      return rb_float_new(v);
    }
    case SUTypedValueType_Bool: {
      bool v = false;
      SUTypedValueGetBool(value, &v);
      return flagTo(v);
    }
    case SUTypedValueType_Color: {
      SUColor v{};
      SUTypedValueGetColor(value, &v);
      return colorTo(v);
    }
    case SUTypedValueType_Time: {
      int64_t v = 0;
      SUTypedValueGetTime(value, &v);
      return LL2NUM(v);
    }
    case SUTypedValueType_String:
      return readText([&](SUStringRef* s) { return SUTypedValueGetString(value, s); }, "no text");
    case SUTypedValueType_Vector3D: {
      double v[3] = {};
      SUTypedValueGetVector3d(value, v);
      return pointTo({v[0], v[1], v[2]});
    }
    case SUTypedValueType_Array:
      return arrayTo(value);
    default:
      return Qnil;
  }
}

VALUE readAttribute(SUAttributeDictionaryRef dictionary, const char* key) {
  if (SUIsInvalid(dictionary)) return Qnil;
  SUTypedValueRef value = SU_INVALID;
  SUTypedValueCreate(&value);
  VALUE result = Qnil;
  if (SUAttributeDictionaryGetValue(dictionary, key, &value) == SU_ERROR_NONE) {
    result = valueTo(value);
  }
  SUTypedValueRelease(&value);
  return result;
}

void writeAttribute(SUAttributeDictionaryRef dictionary, const char* key, VALUE value) {
  AttributeTarget target{dictionary, key};
  withTypedValue(
      value,
      [](void* context, SUTypedValueRef typed) {
        const auto* to = static_cast<AttributeTarget*>(context);
        SUAttributeDictionarySetValue(to->dictionary, to->key, typed);
      },
      &target);
}

}  // namespace modelhost_ruby
