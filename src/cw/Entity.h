#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "cw/Handle.h"

namespace CW {

class AttributeDictionary;
class Model;
class TypedValue;

// The 64-bit persistent id of an entity; 0 when it cannot be read.
uint64_t persistent_id(SUEntityRef su_entity);

// An object of the host. A wrapper made from a handle is attached: the model owns the object, and
// the wrapper is a mere name for it. A wrapper that made its object is not attached and releases
// the object when it goes, unless the object has been handed to the model meanwhile (`attach`).
//
// Copying an attached wrapper copies the name. Copying one that is not attached makes another
// object. What is moved from is null; the object goes along, also into a wrapper of a base class.
//
// Checked operations on a null wrapper throw std::logic_error naming the class and the operation;
// bad arguments throw std::invalid_argument. A failing API call leaves the result as initialised.
// No operation locks: the host's API is not safe to call from several threads at once.
class Entity {
 public:
  Entity() = default;
  Entity(SUEntityRef su_entity) : su_entity_(su_entity) {}
  // Whatever `other` wraps, the copy is a mere name: only its own class can make another object.
  Entity(const Entity& other) : su_entity_(other.su_entity_) {}
  Entity(Entity&& other) noexcept;
  Entity& operator=(Entity other) noexcept;
  virtual ~Entity() {
    if (owns()) release();
  }

  SUEntityRef entity_ref() const { return su_entity_; }
  bool is_null() const { return SUIsInvalid(su_entity_); }
  bool attached() const { return attached_; }
  // The model has taken the object over.
  void attach() { attached_ = true; }

  uint64_t persistent_id() const { return CW::persistent_id(su_entity_); }
  SURefType entity_type() const;
  // The model that owns the entity.
  Model parent() const;

  std::vector<AttributeDictionary> attribute_dictionaries() const;
  // The dictionary of that name; it is made when the entity has none.
  AttributeDictionary attribute_dictionary(const std::string& name) const;
  // Sets `key` in the dictionary `dictionary_name`; false when the host refuses.
  bool set_attribute(const std::string& dictionary_name, const std::string& key,
                     const TypedValue& value);
  // Adds every key of every dictionary of `source` to the dictionaries of this entity.
  void copy_attributes_from(const Entity& source);

 protected:
  Entity(SUEntityRef su_entity, bool attached) : su_entity_(su_entity), attached_(attached) {}

  // Whether the wrapper still has an object to release.
  bool owns() const { return !attached_ && !is_null(); }
  void swap(Entity& other) noexcept;
  void reset(SUEntityRef su_entity, bool attached);

 private:
  void release();

  SUEntityRef su_entity_ = SU_INVALID;
  bool attached_ = true;
};

}  // namespace CW
