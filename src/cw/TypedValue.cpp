#include "cw/TypedValue.h"

#include <utility>

#include "cw/Handle.h"
#include "cw/String.h"

namespace CW {

TypedValue::TypedValue() {
  SUTypedValueCreate(&su_value_);
}

TypedValue::TypedValue(const TypedValue& other) {
  if (other.is_null()) return;
  TypedValue copy;
  copy.assign_from(other);
  *this = std::move(copy);
}

TypedValue::TypedValue(TypedValue&& other) noexcept {
  std::swap(su_value_, other.su_value_);
  std::swap(attached_, other.attached_);
}

TypedValue& TypedValue::operator=(TypedValue other) noexcept {
  std::swap(su_value_, other.su_value_);
  std::swap(attached_, other.attached_);
  return *this;
}

TypedValue::~TypedValue() {
  if (!attached_ && !is_null()) SUTypedValueRelease(&su_value_);
}

TypedValue TypedValue::attached(SUTypedValueRef su_value) {
  return TypedValue(AttachedTag{}, su_value);
}

void TypedValue::require(const char* operation) const {
  require_valid(is_null(), "TypedValue", operation);
}

void TypedValue::require_type(const char* operation, SUTypedValueType type,
                              const char* type_name) const {
  require(operation);
  if (get_type() != type) {
    throw std::logic_error(std::string("CW::TypedValue::") + operation +
                           "(): TypedValue is not SUTypedValueType_" + type_name + " type");
  }
}

SUTypedValueType TypedValue::get_type() const {
  require("get_type");
  SUTypedValueType type = SUTypedValueType_Empty;
  SUTypedValueGetType(su_value_, &type);
  return type;
}

void TypedValue::assign_from(const TypedValue& other) {
  switch (other.get_type()) {
    case SUTypedValueType_Empty:
      return;
    case SUTypedValueType_Byte:
      return byte_value(other.byte_value());
    case SUTypedValueType_Short:
      throw std::logic_error("this part hasn't been made yet.");
    case SUTypedValueType_Int32:
      return int32_value(other.int32_value());
    case SUTypedValueType_Float:
      return float_value(other.float_value());
    case SUTypedValueType_Double:
      return double_value(other.double_value());
    case SUTypedValueType_Bool:
      return bool_value(other.bool_value());
    case SUTypedValueType_Color:
      return color_value(other.color_value());
    case SUTypedValueType_Time:
      return time_value(other.time_value());
    case SUTypedValueType_String:
      return string_value(other.string_value());
    case SUTypedValueType_Vector3D:
      return vector_value(other.vector_value());
    case SUTypedValueType_Array:
      return typed_value_array(other.typed_value_array());
  }
}

char TypedValue::byte_value() const {
  require_type("byte_value", SUTypedValueType_Byte, "Byte");
  char value = 0;
  SUTypedValueGetByte(su_value_, &value);
  return value;
}

void TypedValue::byte_value(char value) {
  require("byte_value");
  SUTypedValueSetByte(su_value_, value);
}

int32_t TypedValue::int32_value() const {
  require_type("int32_value", SUTypedValueType_Int32, "Int32");
  int32_t value = 0;
  SUTypedValueGetInt32(su_value_, &value);
  return value;
}

void TypedValue::int32_value(int32_t value) {
  require("int32_value");
  SUTypedValueSetInt32(su_value_, value);
}

float TypedValue::float_value() const {
  require_type("float_value", SUTypedValueType_Float, "Float");
  float value = 0;
  SUTypedValueGetFloat(su_value_, &value);
  return value;
}

void TypedValue::float_value(float value) {
  require("float_value");
  SUTypedValueSetFloat(su_value_, value);
}

double TypedValue::double_value() const {
  require_type("double_value", SUTypedValueType_Double, "Double");
  double value = 0;
  SUTypedValueGetDouble(su_value_, &value);
  return value;
}

void TypedValue::double_value(double value) {
  require("double_value");
  SUTypedValueSetDouble(su_value_, value);
}

bool TypedValue::bool_value() const {
  require_type("bool_value", SUTypedValueType_Bool, "Bool");
  bool value = false;
  SUTypedValueGetBool(su_value_, &value);
  return value;
}

void TypedValue::bool_value(bool value) {
  require("bool_value");
  SUTypedValueSetBool(su_value_, value);
}

SUColor TypedValue::color_value() const {
  require_type("color_value", SUTypedValueType_Color, "Color");
  SUColor value = {};
  SUTypedValueGetColor(su_value_, &value);
  return value;
}

void TypedValue::color_value(SUColor value) {
  require("color_value");
  SUTypedValueSetColor(su_value_, &value);
}

int64_t TypedValue::time_value() const {
  require_type("time_value", SUTypedValueType_Time, "Time");
  int64_t value = 0;
  SUTypedValueGetTime(su_value_, &value);
  return value;
}

void TypedValue::time_value(int64_t value) {
  require("time_value");
  SUTypedValueSetTime(su_value_, value);
}

std::string TypedValue::string_value() const {
  require_type("string_value", SUTypedValueType_String, "String");
  return fetch_text(
      [this](SUStringRef* su_text) { return SUTypedValueGetString(su_value_, su_text); });
}

void TypedValue::string_value(const std::string& value) {
  require("string_value");
  SUTypedValueSetString(su_value_, value.c_str());
}

SUVector3D TypedValue::vector_value() const {
  require_type("vector_value", SUTypedValueType_Vector3D, "Vector3D");
  double value[3] = {};
  SUTypedValueGetVector3d(su_value_, value);
  return {value[0], value[1], value[2]};
}

void TypedValue::vector_value(SUVector3D value) {
  require("vector_value");
  const double components[3] = {value.x, value.y, value.z};
  SUTypedValueSetVector3d(su_value_, components);
}

std::vector<TypedValue> TypedValue::typed_value_array() const {
  require_type("typed_value_array", SUTypedValueType_Array, "Array");
  const auto su_items = fetch_list<SUTypedValueRef>(
      [this](size_t* count) { return SUTypedValueGetNumArrayItems(su_value_, count); },
      [this](size_t len, SUTypedValueRef* items, size_t* count) {
        return SUTypedValueGetArrayItems(su_value_, len, items, count);
      });
  std::vector<TypedValue> values;
  values.reserve(su_items.size());
  // The array keeps its items, so they are copied, not taken.
  for (SUTypedValueRef su_item : su_items) {
    const TypedValue item = attached(su_item);
    values.push_back(item);
  }
  return values;
}

// The array copies the values that it is given.
void TypedValue::typed_value_array(const std::vector<TypedValue>& values) {
  require("typed_value_array");
  std::vector<SUTypedValueRef> su_items;
  su_items.reserve(values.size());
  for (const TypedValue& value : values) su_items.push_back(value.su_value_);
  SUTypedValueSetArrayItems(su_value_, su_items.size(), su_items.data());
}

}  // namespace CW
