#include "cw/AttributeDictionary.h"

#include "cw/String.h"

namespace CW {

namespace {

SUEntityRef create(const std::string& name) {
  SUAttributeDictionaryRef su_dictionary = SU_INVALID;
  SUAttributeDictionaryCreate(&su_dictionary, name.c_str());
  return SUAttributeDictionaryToEntity(su_dictionary);
}

}  // namespace

AttributeDictionary::AttributeDictionary(const std::string& name) : Entity(create(name), false) {}

AttributeDictionary::AttributeDictionary(SUAttributeDictionaryRef su_dictionary)
    : Entity(SUAttributeDictionaryToEntity(su_dictionary)) {}

AttributeDictionary::AttributeDictionary(const AttributeDictionary& other) : Entity(other) {
  if (!other.owns()) return;
  reset(create(other.name()), false);
  if (is_null()) return;
  copy_entries_from(other);
  copy_attributes_from(other);
}

AttributeDictionary& AttributeDictionary::operator=(AttributeDictionary other) noexcept {
  swap(other);
  return *this;
}

std::string AttributeDictionary::name() const {
  require_valid(is_null(), "AttributeDictionary", "name");
  return fetch_text(
      [this](SUStringRef* su_name) { return SUAttributeDictionaryGetName(ref(), su_name); });
}

TypedValue AttributeDictionary::get_attribute(const std::string& key,
                                              const TypedValue& fallback) const {
  require_valid(is_null(), "AttributeDictionary", "get_attribute");
  TypedValue value;
  if (SUAttributeDictionaryGetValue(ref(), key.c_str(), value.out()) != SU_ERROR_NONE) {
    return fallback;
  }
  return value;
}

bool AttributeDictionary::set_attribute(const std::string& key, const TypedValue& value) {
  require_valid(is_null(), "AttributeDictionary", "set_attribute");
  return SUAttributeDictionarySetValue(ref(), key.c_str(), value.ref()) == SU_ERROR_NONE;
}

std::vector<std::string> AttributeDictionary::get_keys() const {
  require_valid(is_null(), "AttributeDictionary", "get_keys");
  size_t count = 0;
  SUAttributeDictionaryGetNumKeys(ref(), &count);
  if (count == 0) return {};
  std::vector<String> keys(count);
  std::vector<SUStringRef> su_keys;
  for (const String& key : keys) su_keys.push_back(key.ref());
  if (SUAttributeDictionaryGetKeys(ref(), count, su_keys.data(), &count) != SU_ERROR_NONE) {
    return {};
  }
  std::vector<std::string> texts;
  for (size_t i = 0; i < count && i < keys.size(); ++i) texts.push_back(keys[i].std_string());
  return texts;
}

void AttributeDictionary::copy_entries_from(const AttributeDictionary& source) {
  for (const std::string& key : source.get_keys()) set_attribute(key, source.get_attribute(key));
}

}  // namespace CW
