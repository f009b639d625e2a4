#include "import/SceneNode.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "import/Load.h"

namespace modelhost {

std::string SceneNode::path() const {
  if (parent_ == nullptr) return {};
  const std::string before = parent_->path();
  if (key_ == nullptr) return before + "[" + std::to_string(index_) + "]";
  return before.empty() ? key_ : before + "." + key_;
}

void SceneNode::fail(const std::string& what) const {
  const std::string where = path();
  throw ImportError(where.empty() ? what : where + ": " + what);
}

SceneNode SceneNode::at(const char* key) const {
  if (!isObject()) fail("an object is wanted here");
  const auto found = json_->find(key);
  if (found == json_->end()) fail(std::string("\"") + key + "\" is missing");
  return SceneNode(*found, this, key, 0);
}

std::optional<SceneNode> SceneNode::get(const char* key) const {
  if (!has(key)) return std::nullopt;
  return at(key);
}

SceneNode SceneNode::item(std::size_t index) const {
  return SceneNode((*json_)[index], this, nullptr, index);
}

std::size_t SceneNode::size() const {
  if (!isArray()) fail("a list is wanted here");
  return json_->size();
}

std::string SceneNode::text() const {
  if (!isString()) fail("a text is wanted here");
  return json_->get<std::string>();
}

double SceneNode::number() const {
  if (!isNumber()) fail("a number is wanted here");
  const double value = json_->get<double>();
  if (!std::isfinite(value)) fail("the number is too large");
  return value;
}

double SceneNode::positive() const {
  const double value = number();
  if (!(value > 0)) fail("a number above 0 is wanted here");
  return value;
}

std::size_t SceneNode::index(std::size_t below) const {
  if (!json_->is_number_unsigned() || json_->get<std::size_t>() >= below) {
    fail("a whole number from 0 to " + std::to_string(below - 1) + " is wanted here");
  }
  return json_->get<std::size_t>();
}

bool SceneNode::flag() const {
  if (!isBool()) fail("true or false is wanted here");
  return json_->get<bool>();
}

std::vector<double> SceneNode::numbers(std::size_t atLeast, std::size_t atMost) const {
  const std::size_t n = size();
  if (n < atLeast || n > atMost) {
    fail(atLeast == atMost ? "a list of " + std::to_string(atLeast) + " numbers is wanted here"
                           : "a list of " + std::to_string(atLeast) + " to " +
                                 std::to_string(atMost) + " numbers is wanted here");
  }
  std::vector<double> values;
  for (std::size_t i = 0; i < n; ++i) values.push_back(item(i).number());
  return values;
}

SUPoint3D SceneNode::point() const {
  const auto p = numbers(3, 3);
  return {p[0], p[1], p[2]};
}

std::vector<SUPoint3D> SceneNode::points(std::size_t atLeast) const {
  const std::size_t n = size();
  if (n < atLeast) fail("at least " + std::to_string(atLeast) + " points are wanted here");
  std::vector<SUPoint3D> points;
  points.reserve(n);
  for (std::size_t i = 0; i < n; ++i) points.push_back(item(i).point());
  return points;
}

SUColor SceneNode::color() const {
  if (isString()) {
    const std::string code = text();
    const bool hex = std::all_of(code.begin() + (code.empty() ? 0 : 1), code.end(),
                                 [](unsigned char c) { return std::isxdigit(c) != 0; });
    if ((code.size() == 7 || code.size() == 9) && code[0] == '#' && hex) {
      const auto value = std::strtoul(code.c_str() + 1, nullptr, 16);
      const auto rgba = code.size() == 7 ? value << 8 | 0xff : value;
      return {static_cast<SUByte>(rgba >> 24 & 0xff), static_cast<SUByte>(rgba >> 16 & 0xff),
              static_cast<SUByte>(rgba >> 8 & 0xff), static_cast<SUByte>(rgba & 0xff)};
    }
  } else if (isArray() && (size() == 3 || size() == 4)) {
    const auto parts = numbers(3, 4);
    if (std::all_of(parts.begin(), parts.end(), [](double p) { return p >= 0 && p <= 255; })) {
      const auto byte = [&](std::size_t i) { return static_cast<SUByte>(parts[i]); };
      return {byte(0), byte(1), byte(2), parts.size() == 4 ? byte(3) : SUByte{255}};
    }
  }
  fail("a colour is wanted here: \"#rrggbb\", \"#rrggbbaa\" or a list of 3 or 4 numbers to 255");
}

void SceneNode::allow(std::initializer_list<const char*> keys) const {
  each([&](const std::string& key, const SceneNode&) {
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
      fail("\"" + key + "\" means nothing here");
    }
  });
}

}  // namespace modelhost
