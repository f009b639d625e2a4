// What an attribute or a rendering option holds, and the two objects that carry such things over
// the API.
#pragma once

#include <SketchUpAPI/color.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "core/Object.h"

namespace modelhost {

struct Time {
  std::int64_t seconds;
};

struct Value;
using ValueList = std::vector<Value>;

// The order of the alternatives is that of the API's type numbers.
struct Value : std::variant<std::monostate, char, std::int16_t, std::int32_t, float, double, bool,
                            SUColor, Time, std::string, std::array<double, 3>, ValueList> {
  using variant::variant;
};

class String : public Object {
 public:
  explicit String(std::string content = {}) : Object(Kind::String), text(std::move(content)) {}
  std::string text;
};

class TypedValue : public Object {
 public:
  TypedValue() : Object(Kind::TypedValue) {}
  explicit TypedValue(const Value& value) : TypedValue() { set(value); }

  const Value& value() const { return value_; }
  void set(const Value& value);
  // Objects for the items of an array, owned by it.
  const std::vector<std::unique_ptr<TypedValue>>& items() const { return items_; }

  bool isItem = false;

 private:
  Value value_;
  std::vector<std::unique_ptr<TypedValue>> items_;
};

}  // namespace modelhost
