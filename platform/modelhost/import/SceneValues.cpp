#include "import/SceneValues.h"

#include <SketchUpAPI/model/attribute_dictionary.h>
#include <SketchUpAPI/model/entity.h>
#include <SketchUpAPI/model/rendering_options.h>
#include <SketchUpAPI/model/typed_value.h>

#include <cstdint>
#include <limits>

namespace modelhost {

namespace {

// A typed value for as long as it is needed.
class OwnedValue {
 public:
  OwnedValue() { SUTypedValueCreate(&ref_); }
  ~OwnedValue() { SUTypedValueRelease(&ref_); }
  OwnedValue(const OwnedValue&) = delete;
  OwnedValue& operator=(const OwnedValue&) = delete;
  SUTypedValueRef ref() const { return ref_; }

 private:
  SUTypedValueRef ref_ = SU_INVALID;
};

template <class Int>
Int wholeNumber(const SceneNode& node) {
  if (!node.json().is_number_integer()) node.fail("a whole number is wanted here");
  const auto value = node.json().get<std::int64_t>();
  if (value < std::numeric_limits<Int>::min() || value > std::numeric_limits<Int>::max()) {
    node.fail("the number does not fit the type");
  }
  return static_cast<Int>(value);
}

void readArray(const SceneNode& node, SUTypedValueRef value) {
  std::vector<SUTypedValueRef> items;
  std::vector<std::unique_ptr<OwnedValue>> owned;
  for (std::size_t i = 0; i < node.size(); ++i) {
    owned.push_back(std::make_unique<OwnedValue>());
    readValue(node.item(i), owned.back()->ref());
    items.push_back(owned.back()->ref());
  }
  SUTypedValueSetArrayItems(value, items.size(), items.data());
}

void readNamedType(const SceneNode& node, SUTypedValueRef value) {
  if (node.json().size() != 1) node.fail("an object with one key, the type, is wanted here");
  node.each([&](const std::string& type, const SceneNode& of) {
    if (type == "byte") {
      SUTypedValueSetByte(value, static_cast<char>(wholeNumber<std::int8_t>(of)));
    } else if (type == "short") {
      SUTypedValueSetInt16(value, wholeNumber<std::int16_t>(of));
    } else if (type == "int") {
      SUTypedValueSetInt32(value, wholeNumber<std::int32_t>(of));
    } else if (type == "float") {
      SUTypedValueSetFloat(value, static_cast<float>(of.number()));
    } else if (type == "double") {
      SUTypedValueSetDouble(value, of.number());
    } else if (type == "time") {
      SUTypedValueSetTime(value, wholeNumber<std::int64_t>(of));
    } else if (type == "color") {
      const SUColor color = of.color();
      SUTypedValueSetColor(value, &color);
    } else if (type == "vector") {
      SUTypedValueSetVector3d(value, of.numbers(3, 3).data());
    } else {
      of.fail("this is none of the types byte, short, int, float, double, time, color, vector");
    }
  });
}

void readDictionaries(const SceneNode& node, SUEntityRef entity) {
  node.each([&](const std::string& name, const SceneNode& entries) {
    SUAttributeDictionaryRef dictionary = SU_INVALID;
    SUAttributeDictionaryCreate(&dictionary, name.c_str());
    SUEntityAddAttributeDictionary(entity, dictionary);
    entries.each([&](const std::string& key, const SceneNode& entry) {
      const OwnedValue value;
      readValue(entry, value.ref());
      SUAttributeDictionarySetValue(dictionary, key.c_str(), value.ref());
    });
  });
}

}  // namespace

void readValue(const SceneNode& node, SUTypedValueRef value) {
  const auto& json = node.json();
  if (json.is_boolean()) {
    SUTypedValueSetBool(value, json.get<bool>());
  } else if (json.is_number_integer()) {
    SUTypedValueSetInt32(value, wholeNumber<std::int32_t>(node));
  } else if (json.is_number()) {
    SUTypedValueSetDouble(value, node.number());
  } else if (json.is_string()) {
    SUTypedValueSetString(value, node.text().c_str());
  } else if (json.is_array()) {
    readArray(node, value);
  } else if (json.is_object()) {
    readNamedType(node, value);
  } else {
    node.fail("a value is wanted here");
  }
}

void readAttributes(const SceneNode& node, SUEntityRef entity) {
  if (node.isObject()) return readDictionaries(node, entity);
  // A list: the only way to say two dictionaries of one name.
  for (std::size_t i = 0; i < node.size(); ++i) readDictionaries(node.item(i), entity);
}

void readRenderingOptions(const SceneNode& node, SURenderingOptionsRef options) {
  node.each([&](const std::string& key, const SceneNode& entry) {
    const OwnedValue value;
    // What is written like a colour is one.
    if (entry.isString() && entry.text().starts_with('#')) {
      const SUColor color = entry.color();
      SUTypedValueSetColor(value.ref(), &color);
    } else {
      readValue(entry, value.ref());
    }
    SURenderingOptionsSetValue(options, key.c_str(), value.ref());
  });
}

}  // namespace modelhost
