#include "cw/Entity.h"

#include <utility>

#include "cw/AttributeDictionary.h"
#include "cw/Model.h"
#include "cw/TypedValue.h"

namespace CW {

uint64_t persistent_id(SUEntityRef su_entity) {
  int64_t id = 0;
  return SUEntityGetPersistentID(su_entity, &id) == SU_ERROR_NONE ? static_cast<uint64_t>(id) : 0;
}

namespace {

template <class Ref>
void release_ref(Ref su_ref, SUResult (*release)(Ref*)) {
  release(&su_ref);
}

}  // namespace

// The host has a release for every kind of object. The kind is asked of the object, not of the
// wrapper's class, which may be a base of the one that made it.
void Entity::release() {
  switch (SUEntityGetType(su_entity_)) {
    case SURefType_AttributeDictionary:
      return release_ref(SUAttributeDictionaryFromEntity(su_entity_), SUAttributeDictionaryRelease);
    case SURefType_ComponentDefinition:
      return release_ref(SUComponentDefinitionFromEntity(su_entity_), SUComponentDefinitionRelease);
    case SURefType_ComponentInstance:
    case SURefType_Group:  // an instance, too
      return release_ref(SUComponentInstanceFromEntity(su_entity_), SUComponentInstanceRelease);
    case SURefType_Edge:
      return release_ref(SUEdgeFromEntity(su_entity_), SUEdgeRelease);
    case SURefType_Face:
      return release_ref(SUFaceFromEntity(su_entity_), SUFaceRelease);
    case SURefType_Layer:
      return release_ref(SULayerFromEntity(su_entity_), SULayerRelease);
    case SURefType_Material:
      return release_ref(SUMaterialFromEntity(su_entity_), SUMaterialRelease);
    case SURefType_Texture:
      return release_ref(SUTextureFromEntity(su_entity_), SUTextureRelease);
    default:
      return;
  }
}

Entity::Entity(Entity&& other) noexcept {
  swap(other);
}

Entity& Entity::operator=(Entity other) noexcept {
  swap(other);
  return *this;
}

void Entity::swap(Entity& other) noexcept {
  std::swap(su_entity_, other.su_entity_);
  std::swap(attached_, other.attached_);
}

void Entity::reset(SUEntityRef su_entity, bool attached) {
  su_entity_ = su_entity;
  attached_ = attached;
}

SURefType Entity::entity_type() const {
  require_valid(is_null(), "Entity", "entity_type");
  return SUEntityGetType(su_entity_);
}

Model Entity::parent() const {
  require_valid(is_null(), "Entity", "parent");
  SUModelRef su_model = SU_INVALID;
  const SUResult result = SUEntityGetModel(su_entity_, &su_model);
  return Model(su_model, false, result);
}

std::vector<AttributeDictionary> Entity::attribute_dictionaries() const {
  require_valid(is_null(), "Entity", "attribute_dictionaries");
  return fetch_wrapped<AttributeDictionary, SUAttributeDictionaryRef>(
      [this](size_t* count) { return SUEntityGetNumAttributeDictionaries(su_entity_, count); },
      [this](size_t len, SUAttributeDictionaryRef* su_items, size_t* count) {
        return SUEntityGetAttributeDictionaries(su_entity_, len, su_items, count);
      });
}

AttributeDictionary Entity::attribute_dictionary(const std::string& name) const {
  require_valid(is_null(), "Entity", "attribute_dictionary");
  SUAttributeDictionaryRef su_dictionary = SU_INVALID;
  SUEntityGetAttributeDictionary(su_entity_, name.c_str(), &su_dictionary);
  return AttributeDictionary(su_dictionary);
}

bool Entity::set_attribute(const std::string& dictionary_name, const std::string& key,
                           const TypedValue& value) {
  require_valid(is_null(), "Entity", "set_attribute");
  AttributeDictionary dictionary = attribute_dictionary(dictionary_name);
  return !dictionary.is_null() && dictionary.set_attribute(key, value);
}

void Entity::copy_attributes_from(const Entity& source) {
  require_valid(is_null(), "Entity", "copy_attributes_from");
  if (source.is_null()) {
    throw std::invalid_argument("CW::Entity::copy_attributes_from(): Entity argument is null");
  }
  for (const AttributeDictionary& dictionary : source.attribute_dictionaries()) {
    AttributeDictionary target = attribute_dictionary(dictionary.name());
    if (!target.is_null()) target.copy_entries_from(dictionary);
  }
}

}  // namespace CW
