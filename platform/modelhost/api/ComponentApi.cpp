#include <SketchUpAPI/model/component_definition.h>
#include <SketchUpAPI/model/component_instance.h>

#include "core/Args.h"
#include "model/Measure.h"
#include "model/Model.h"

using namespace modelhost;

SUEntityRef SUComponentDefinitionToEntity(SUComponentDefinitionRef definition) {
  MODELHOST_CALL_INFALLIBLE(SUComponentDefinitionToEntity);
  return convert<SUEntityRef>(definition);
}

SUComponentDefinitionRef SUComponentDefinitionFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUComponentDefinitionFromEntity);
  return convert<SUComponentDefinitionRef>(entity);
}

SUDrawingElementRef SUComponentDefinitionToDrawingElement(SUComponentDefinitionRef definition) {
  MODELHOST_CALL_INFALLIBLE(SUComponentDefinitionToDrawingElement);
  return convert<SUDrawingElementRef>(definition);
}

SUComponentDefinitionRef SUComponentDefinitionFromDrawingElement(SUDrawingElementRef element) {
  MODELHOST_CALL_INFALLIBLE(SUComponentDefinitionFromDrawingElement);
  return convert<SUComponentDefinitionRef>(element);
}

SUResult SUComponentDefinitionCreate(SUComponentDefinitionRef* out_definition) {
  MODELHOST_CALL(SUComponentDefinitionCreate);
  return create(out_definition, SUComponentType_Normal);
}

SUResult SUComponentDefinitionRelease(SUComponentDefinitionRef* definition) {
  MODELHOST_CALL(SUComponentDefinitionRelease);
  return releaseIf(definition, [](const Definition& d) {
    // Groups and images hold theirs; one that is placed somewhere cannot go.
    for (const Instance* instance : d.instances) {
      if (instance->parent != nullptr) return false;
    }
    return d.model() == nullptr && d.type == SUComponentType_Normal;
  });
}

SUResult SUComponentDefinitionCreateInstance(SUComponentDefinitionRef definition,
                                             SUComponentInstanceRef* out_instance) {
  MODELHOST_CALL(SUComponentDefinitionCreateInstance);
  Definition* d = find(definition);
  if (d == nullptr) return SU_ERROR_INVALID_INPUT;
  if (const SUResult may = mayCreate(out_instance); may != SU_ERROR_NONE) return may;
  Instance* instance = nullptr;
  if (d->type == SUComponentType_Normal) {
    instance = new Instance(*d);
  } else {
    // Another group or image that shares the definition; one of them holds it at any time.
    const std::shared_ptr<Definition> shared = d->instances.front()->sharedDefinition();
    instance = d->type == SUComponentType_Group ? static_cast<Instance*>(new Group(shared))
                                                : new Image(shared);
  }
  *out_instance = refOf<SUComponentInstanceRef>(instance);
  return SU_ERROR_NONE;
}

SUResult SUComponentDefinitionGetName(SUComponentDefinitionRef definition, SUStringRef* name) {
  MODELHOST_CALL(SUComponentDefinitionGetName);
  return giveText(definition, name, [](const Definition& d) -> std::string_view { return d.name; });
}

SUResult SUComponentDefinitionSetName(SUComponentDefinitionRef definition, const char* name) {
  MODELHOST_CALL(SUComponentDefinitionSetName);
  return changeFrom(definition, name, [&](Definition& d, char) {
    if (d.model() != nullptr && d.type == SUComponentType_Normal) {
      d.model()->rename(d, name);
    } else {
      d.name = name;
    }
  });
}

SUResult SUComponentDefinitionGetDescription(SUComponentDefinitionRef definition,
                                             SUStringRef* description) {
  MODELHOST_CALL(SUComponentDefinitionGetDescription);
  return giveText(definition, description,
                  [](const Definition& d) -> std::string_view { return d.description; });
}

SUResult SUComponentDefinitionSetDescription(SUComponentDefinitionRef definition,
                                             const char* description) {
  MODELHOST_CALL(SUComponentDefinitionSetDescription);
  return changeFrom(definition, description,
                    [&](Definition& d, char) { d.description = description; });
}

SUResult SUComponentDefinitionGetEntities(SUComponentDefinitionRef definition,
                                          SUEntitiesRef* entities) {
  MODELHOST_CALL(SUComponentDefinitionGetEntities);
  return giveRef(definition, entities, [](const Definition& d) { return d.entities.get(); });
}

SUResult SUComponentDefinitionGetType(SUComponentDefinitionRef definition, SUComponentType* type) {
  MODELHOST_CALL(SUComponentDefinitionGetType);
  return give(definition, type, [](const Definition& d) { return d.type; });
}

SUResult SUComponentDefinitionGetBehavior(SUComponentDefinitionRef definition,
                                          SUComponentBehavior* behavior) {
  MODELHOST_CALL(SUComponentDefinitionGetBehavior);
  return give(definition, behavior, [](const Definition& d) { return d.behavior; });
}

SUResult SUComponentDefinitionSetBehavior(SUComponentDefinitionRef definition,
                                          const SUComponentBehavior* behavior) {
  MODELHOST_CALL(SUComponentDefinitionSetBehavior);
  return changeFrom(definition, behavior,
                    [](Definition& d, const SUComponentBehavior& b) { d.behavior = b; });
}

SUResult SUComponentDefinitionIsManifold(SUComponentDefinitionRef definition, bool* manifold) {
  MODELHOST_CALL(SUComponentDefinitionIsManifold);
  return give(definition, manifold, [](const Definition& d) { return isManifold(d); });
}

namespace {

std::vector<const Instance*> placedInstances(const Definition& definition) {
  std::vector<const Instance*> placed;
  for (const Instance* instance : definition.instances) {
    if (instance->parent != nullptr) placed.push_back(instance);
  }
  return placed;
}

}  // namespace

SUResult SUComponentDefinitionGetNumInstances(SUComponentDefinitionRef definition, size_t* count) {
  MODELHOST_CALL(SUComponentDefinitionGetNumInstances);
  return give(definition, count, [](const Definition& d) { return placedInstances(d).size(); });
}

SUResult SUComponentDefinitionGetInstances(SUComponentDefinitionRef definition, size_t len,
                                           SUComponentInstanceRef instances[], size_t* count) {
  MODELHOST_CALL(SUComponentDefinitionGetInstances);
  return giveList(definition, len, instances, count, &placedInstances);
}

SUEntityRef SUComponentInstanceToEntity(SUComponentInstanceRef instance) {
  MODELHOST_CALL_INFALLIBLE(SUComponentInstanceToEntity);
  return convert<SUEntityRef>(instance);
}

SUComponentInstanceRef SUComponentInstanceFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUComponentInstanceFromEntity);
  return convert<SUComponentInstanceRef>(entity);
}

SUDrawingElementRef SUComponentInstanceToDrawingElement(SUComponentInstanceRef instance) {
  MODELHOST_CALL_INFALLIBLE(SUComponentInstanceToDrawingElement);
  return convert<SUDrawingElementRef>(instance);
}

SUComponentInstanceRef SUComponentInstanceFromDrawingElement(SUDrawingElementRef element) {
  MODELHOST_CALL_INFALLIBLE(SUComponentInstanceFromDrawingElement);
  return convert<SUComponentInstanceRef>(element);
}

SUResult SUComponentInstanceRelease(SUComponentInstanceRef* instance) {
  MODELHOST_CALL(SUComponentInstanceRelease);
  return releaseIf(instance, [](const Instance& i) { return i.parent == nullptr; });
}

SUResult SUComponentInstanceGetName(SUComponentInstanceRef instance, SUStringRef* name) {
  MODELHOST_CALL(SUComponentInstanceGetName);
  return giveText(instance, name, [](const Instance& i) -> std::string_view { return i.name; });
}

SUResult SUComponentInstanceSetName(SUComponentInstanceRef instance, const char* name) {
  MODELHOST_CALL(SUComponentInstanceSetName);
  return changeFrom(instance, name, [&](Instance& i, char) { i.name = name; });
}

SUResult SUComponentInstanceGetTransform(SUComponentInstanceRef instance,
                                         SUTransformation* transform) {
  MODELHOST_CALL(SUComponentInstanceGetTransform);
  return give(instance, transform, [](const Instance& i) { return i.transform; });
}

SUResult SUComponentInstanceSetTransform(SUComponentInstanceRef instance,
                                         const SUTransformation* transform) {
  MODELHOST_CALL(SUComponentInstanceSetTransform);
  return changeFrom(instance, transform,
                    [](Instance& i, const SUTransformation& t) { i.transform = t; });
}

SUResult SUComponentInstanceGetDefinition(SUComponentInstanceRef instance,
                                          SUComponentDefinitionRef* definition) {
  MODELHOST_CALL(SUComponentInstanceGetDefinition);
  return giveRef(instance, definition, [](const Instance& i) { return i.definition(); });
}
