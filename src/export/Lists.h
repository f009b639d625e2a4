#pragma once

#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "cw/Entity.h"
#include "cw/Handle.h"

// What the walks read of an entities collection and its elements. A call that fails gives an empty
// list, a null handle or false.

namespace quellix {

inline std::vector<SUComponentInstanceRef> InstancesOf(SUEntitiesRef su_entities) {
  return CW::fetch_list<SUComponentInstanceRef>(
      [&](size_t* count) { return SUEntitiesGetNumInstances(su_entities, count); },
      [&](size_t len, SUComponentInstanceRef* su_items, size_t* count) {
        return SUEntitiesGetInstances(su_entities, len, su_items, count);
      });
}

inline std::vector<SUGroupRef> GroupsOf(SUEntitiesRef su_entities) {
  return CW::fetch_list<SUGroupRef>(
      [&](size_t* count) { return SUEntitiesGetNumGroups(su_entities, count); },
      [&](size_t len, SUGroupRef* su_items, size_t* count) {
        return SUEntitiesGetGroups(su_entities, len, su_items, count);
      });
}

inline std::vector<SUImageRef> ImagesOf(SUEntitiesRef su_entities) {
  return CW::fetch_list<SUImageRef>(
      [&](size_t* count) { return SUEntitiesGetNumImages(su_entities, count); },
      [&](size_t len, SUImageRef* su_items, size_t* count) {
        return SUEntitiesGetImages(su_entities, len, su_items, count);
      });
}

inline bool IsHidden(SUDrawingElementRef su_element) {
  bool hidden = false;
  SUDrawingElementGetHidden(su_element, &hidden);
  return hidden;
}

inline SUMaterialRef MaterialOf(SUDrawingElementRef su_element) {
  SUMaterialRef su_material = SU_INVALID;
  SUDrawingElementGetMaterial(su_element, &su_material);
  return su_material;
}

inline SUComponentDefinitionRef DefinitionOf(SUComponentInstanceRef su_instance) {
  SUComponentDefinitionRef su_definition = SU_INVALID;
  SUComponentInstanceGetDefinition(su_instance, &su_definition);
  return su_definition;
}

inline SUComponentDefinitionRef DefinitionOf(SUGroupRef su_group) {
  SUComponentDefinitionRef su_definition = SU_INVALID;
  SUGroupGetDefinition(su_group, &su_definition);
  return su_definition;
}

inline SUEntitiesRef EntitiesOf(SUComponentDefinitionRef su_definition) {
  SUEntitiesRef su_entities = SU_INVALID;
  SUComponentDefinitionGetEntities(su_definition, &su_entities);
  return su_entities;
}

inline SUEntitiesRef RootEntitiesOf(SUModelRef su_model) {
  SUEntitiesRef su_entities = SU_INVALID;
  SUModelGetEntities(su_model, &su_entities);
  return su_entities;
}

inline bool AlwaysFacesCamera(SUComponentDefinitionRef su_definition) {
  SUComponentBehavior behavior{};
  return SUComponentDefinitionGetBehavior(su_definition, &behavior) == SU_ERROR_NONE &&
         behavior.component_always_face_camera;
}

inline std::uint64_t IdOf(SUComponentInstanceRef su_instance) {
  return CW::persistent_id(SUComponentInstanceToEntity(su_instance));
}

inline std::uint64_t IdOf(SUGroupRef su_group) {
  return CW::persistent_id(SUGroupToEntity(su_group));
}

inline std::uint64_t IdOf(SUComponentDefinitionRef su_definition) {
  return CW::persistent_id(SUComponentDefinitionToEntity(su_definition));
}

inline std::uint64_t IdOf(SUImageRef su_image) {
  return CW::persistent_id(SUImageToEntity(su_image));
}

// The low half, which is what materials are known by.
inline std::uint32_t IdOf(SUMaterialRef su_material) {
  return static_cast<std::uint32_t>(CW::persistent_id(SUMaterialToEntity(su_material)));
}

}  // namespace quellix
