#pragma once

#include "cw/Entity.h"
#include "cw/TypedValue.h"

namespace CW {

// A named set of typed values on an entity.
class AttributeDictionary : public Entity {
 public:
  // Makes an empty dictionary that no entity has yet.
  explicit AttributeDictionary(const std::string& name);
  AttributeDictionary(SUAttributeDictionaryRef su_dictionary);
  AttributeDictionary(const AttributeDictionary& other);
  AttributeDictionary(AttributeDictionary&&) noexcept = default;
  AttributeDictionary& operator=(AttributeDictionary other) noexcept;

  SUAttributeDictionaryRef ref() const { return SUAttributeDictionaryFromEntity(entity_ref()); }

  std::string name() const;
  // The value under `key`, or `fallback` when the key is not there.
  TypedValue get_attribute(const std::string& key, const TypedValue& fallback = {}) const;
  // False when the host refuses.
  bool set_attribute(const std::string& key, const TypedValue& value);
  std::vector<std::string> get_keys() const;

  void copy_entries_from(const AttributeDictionary& source);
};

}  // namespace CW
