#include <SketchUpAPI/model/typed_value.h>

#include "core/Args.h"

namespace modelhost {

SUResult putValue(const Value* value, SUTypedValueRef* out) {
  if (out == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  TypedValue* typed = find(*out);
  if (typed == nullptr) return SU_ERROR_INVALID_OUTPUT;
  if (value == nullptr) return SU_ERROR_NO_DATA;
  typed->set(*value);
  return SU_ERROR_NONE;
}

}  // namespace modelhost

using namespace modelhost;

namespace {

template <class T>
SUResult giveAs(SUTypedValueRef ref, T* out) {
  const TypedValue* typed = find(ref);
  if (typed == nullptr) return SU_ERROR_INVALID_INPUT;
  if (out == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  const T* held = std::get_if<T>(&typed->value());
  if (held == nullptr) return SU_ERROR_NO_DATA;
  *out = *held;
  return SU_ERROR_NONE;
}

SUResult setTo(SUTypedValueRef ref, const Value& value) {
  return change(ref, [&](TypedValue& typed) { typed.set(value); });
}

}  // namespace

SUResult SUTypedValueCreate(SUTypedValueRef* out_value) {
  MODELHOST_CALL(SUTypedValueCreate);
  return create(out_value);
}

SUResult SUTypedValueRelease(SUTypedValueRef* value) {
  MODELHOST_CALL(SUTypedValueRelease);
  return releaseIf(value, [](const TypedValue& v) { return !v.isItem; });
}

SUResult SUTypedValueGetType(SUTypedValueRef value, SUTypedValueType* type) {
  MODELHOST_CALL(SUTypedValueGetType);
  return give(value, type,
              [](const TypedValue& v) { return static_cast<SUTypedValueType>(v.value().index()); });
}

SUResult SUTypedValueGetByte(SUTypedValueRef value, char* byte_value) {
  MODELHOST_CALL(SUTypedValueGetByte);
  return giveAs(value, byte_value);
}

SUResult SUTypedValueSetByte(SUTypedValueRef value, char byte_value) {
  MODELHOST_CALL(SUTypedValueSetByte);
  return setTo(value, byte_value);
}

SUResult SUTypedValueGetInt16(SUTypedValueRef value, int16_t* int16_value) {
  MODELHOST_CALL(SUTypedValueGetInt16);
  return giveAs(value, int16_value);
}

SUResult SUTypedValueSetInt16(SUTypedValueRef value, int16_t int16_value) {
  MODELHOST_CALL(SUTypedValueSetInt16);
  return setTo(value, int16_value);
}

SUResult SUTypedValueGetInt32(SUTypedValueRef value, int32_t* int32_value) {
  MODELHOST_CALL(SUTypedValueGetInt32);
  return giveAs(value, int32_value);
}

SUResult SUTypedValueSetInt32(SUTypedValueRef value, int32_t int32_value) {
  MODELHOST_CALL(SUTypedValueSetInt32);
  return setTo(value, int32_value);
}

SUResult SUTypedValueGetFloat(SUTypedValueRef value, float* float_value) {
  MODELHOST_CALL(SUTypedValueGetFloat);
  return giveAs(value, float_value);
}

SUResult SUTypedValueSetFloat(SUTypedValueRef value, float float_value) {
  MODELHOST_CALL(SUTypedValueSetFloat);
  return setTo(value, float_value);
}

SUResult SUTypedValueGetDouble(SUTypedValueRef value, double* double_value) {
  MODELHOST_CALL(SUTypedValueGetDouble);
  return giveAs(value, double_value);
}

SUResult SUTypedValueSetDouble(SUTypedValueRef value, double double_value) {
  MODELHOST_CALL(SUTypedValueSetDouble);
  return setTo(value, double_value);
}

SUResult SUTypedValueGetBool(SUTypedValueRef value, bool* bool_value) {
  MODELHOST_CALL(SUTypedValueGetBool);
  return giveAs(value, bool_value);
}

SUResult SUTypedValueSetBool(SUTypedValueRef value, bool bool_value) {
  MODELHOST_CALL(SUTypedValueSetBool);
  return setTo(value, bool_value);
}

SUResult SUTypedValueGetColor(SUTypedValueRef value, SUColor* color) {
  MODELHOST_CALL(SUTypedValueGetColor);
  return giveAs(value, color);
}

SUResult SUTypedValueSetColor(SUTypedValueRef value, const SUColor* color) {
  MODELHOST_CALL(SUTypedValueSetColor);
  if (color == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return setTo(value, *color);
}

SUResult SUTypedValueGetTime(SUTypedValueRef value, int64_t* time_value) {
  MODELHOST_CALL(SUTypedValueGetTime);
  if (time_value == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  Time time{};
  const SUResult result = giveAs(value, &time);
  if (result == SU_ERROR_NONE) *time_value = time.seconds;
  return result;
}

SUResult SUTypedValueSetTime(SUTypedValueRef value, int64_t time_value) {
  MODELHOST_CALL(SUTypedValueSetTime);
  return setTo(value, Time{time_value});
}

SUResult SUTypedValueGetString(SUTypedValueRef value, SUStringRef* text) {
  MODELHOST_CALL(SUTypedValueGetString);
  std::string held;
  const SUResult result = giveAs(value, &held);
  return result == SU_ERROR_NONE ? putText(held, text) : result;
}

SUResult SUTypedValueSetString(SUTypedValueRef value, const char* text) {
  MODELHOST_CALL(SUTypedValueSetString);
  if (text == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return setTo(value, std::string(text));
}

SUResult SUTypedValueGetVector3d(SUTypedValueRef value, double vector[3]) {
  MODELHOST_CALL(SUTypedValueGetVector3d);
  if (vector == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  std::array<double, 3> held{};
  const SUResult result = giveAs(value, &held);
  if (result == SU_ERROR_NONE) std::copy(held.begin(), held.end(), vector);
  return result;
}

SUResult SUTypedValueSetVector3d(SUTypedValueRef value, const double vector[3]) {
  MODELHOST_CALL(SUTypedValueSetVector3d);
  if (vector == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return setTo(value, std::array{vector[0], vector[1], vector[2]});
}

SUResult SUTypedValueGetNumArrayItems(SUTypedValueRef value, size_t* count) {
  MODELHOST_CALL(SUTypedValueGetNumArrayItems);
  const TypedValue* v = find(value);
  if (v != nullptr && !std::holds_alternative<ValueList>(v->value())) return SU_ERROR_NO_DATA;
  return give(value, count, [](const TypedValue& typed) { return typed.items().size(); });
}

SUResult SUTypedValueGetArrayItems(SUTypedValueRef value, size_t len, SUTypedValueRef items[],
                                   size_t* count) {
  MODELHOST_CALL(SUTypedValueGetArrayItems);
  const TypedValue* v = find(value);
  if (v != nullptr && !std::holds_alternative<ValueList>(v->value())) return SU_ERROR_NO_DATA;
  return giveList(
      value, len, items, count,
      [](const TypedValue& typed) -> const auto& { return typed.items(); });
}

SUResult SUTypedValueSetArrayItems(SUTypedValueRef value, size_t len, SUTypedValueRef items[]) {
  MODELHOST_CALL(SUTypedValueSetArrayItems);
  if (items == nullptr && len > 0) return SU_ERROR_NULL_POINTER_INPUT;
  ValueList list;
  for (size_t i = 0; i < len; ++i) {
    const TypedValue* item = find(items[i]);
    if (item == nullptr) return SU_ERROR_INVALID_INPUT;
    list.push_back(item->value());
  }
  return setTo(value, Value(std::move(list)));
}
