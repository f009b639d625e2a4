#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <SketchUpAPI/sketchup.h>

namespace CW {

// A host value of one of the types below, released with the wrapper.
//
// A getter throws std::logic_error when the wrapper is null or the value has another type. Copying
// goes by type; a 16-bit integer cannot be copied and throws std::logic_error.
class TypedValue {
 public:
  // An empty value.
  TypedValue();
  TypedValue(const TypedValue& other);
  TypedValue(TypedValue&& other) noexcept;
  TypedValue& operator=(TypedValue other) noexcept;
  ~TypedValue();
  // A name for a value that something else owns.
  static TypedValue attached(SUTypedValueRef su_value);

  bool is_null() const { return SUIsInvalid(su_value_); }
  SUTypedValueRef ref() const { return su_value_; }
  // Where an API call writes the value.
  SUTypedValueRef* out() { return &su_value_; }

  SUTypedValueType get_type() const;

  char byte_value() const;
  void byte_value(char value);
  int32_t int32_value() const;
  void int32_value(int32_t value);
  float float_value() const;
  void float_value(float value);
  double double_value() const;
  void double_value(double value);
  bool bool_value() const;
  void bool_value(bool value);
  SUColor color_value() const;
  void color_value(SUColor value);
  // Seconds since 1 January 1970.
  int64_t time_value() const;
  void time_value(int64_t value);
  std::string string_value() const;
  void string_value(const std::string& value);
  SUVector3D vector_value() const;
  void vector_value(SUVector3D value);
  // Copies of the items.
  std::vector<TypedValue> typed_value_array() const;
  void typed_value_array(const std::vector<TypedValue>& values);

 private:
  struct AttachedTag {};
  TypedValue(AttachedTag, SUTypedValueRef su_value) : su_value_(su_value), attached_(true) {}

  void require(const char* operation) const;
  void require_type(const char* operation, SUTypedValueType type, const char* type_name) const;
  void assign_from(const TypedValue& other);

  SUTypedValueRef su_value_ = SU_INVALID;
  bool attached_ = false;
};

}  // namespace CW
