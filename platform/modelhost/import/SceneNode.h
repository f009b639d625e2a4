// One value of a scene file, with the way to it, so that a complaint can name the place.
#pragma once

#include <SketchUpAPI/color.h>
#include <SketchUpAPI/geometry.h>

#include <cstddef>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace modelhost {

// Lives on the stack of the code that reads it: it points at the node it was got from.
class SceneNode {
 public:
  using Json = nlohmann::ordered_json;

  explicit SceneNode(const Json& root) : json_(&root) {}

  const Json& json() const { return *json_; }
  // "entities[3].front"; empty for the root.
  std::string path() const;
  [[noreturn]] void fail(const std::string& what) const;

  bool isObject() const { return json_->is_object(); }
  bool isArray() const { return json_->is_array(); }
  bool isString() const { return json_->is_string(); }
  bool isNumber() const { return json_->is_number(); }
  bool isBool() const { return json_->is_boolean(); }

  bool has(const char* key) const { return isObject() && json_->contains(key); }
  // Fails when there is no such key.
  SceneNode at(const char* key) const;
  std::optional<SceneNode> get(const char* key) const;
  SceneNode item(std::size_t index) const;
  // Elements of a list; fails for anything else.
  std::size_t size() const;

  // Each fails for a value of another kind; numbers are finite.
  std::string text() const;
  double number() const;
  double positive() const;
  std::size_t index(std::size_t below) const;
  bool flag() const;
  std::vector<double> numbers(std::size_t atLeast, std::size_t atMost) const;
  SUPoint3D point() const;
  std::vector<SUPoint3D> points(std::size_t atLeast) const;
  // "#rrggbb", "#rrggbbaa", or a list of three or four numbers up to 255.
  SUColor color() const;

  // Calls f(key, value) for every entry of an object; fails for anything else.
  template <class F>
  void each(F f) const {
    if (!isObject()) fail("an object is wanted here");
    for (const auto& entry : json_->items()) {
      const std::string& key = entry.key();
      f(key, SceneNode(entry.value(), this, key.c_str(), 0));
    }
  }

  // Fails for an object that has any other key.
  void allow(std::initializer_list<const char*> keys) const;

 private:
  SceneNode(const Json& json, const SceneNode* parent, const char* key, std::size_t index)
      : json_(&json), parent_(parent), key_(key), index_(index) {}

  const Json* json_;
  const SceneNode* parent_ = nullptr;
  // Null for an element of a list.
  const char* key_ = nullptr;
  std::size_t index_ = 0;
};

}  // namespace modelhost
