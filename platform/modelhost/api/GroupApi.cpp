#include <SketchUpAPI/model/group.h>

#include "core/Args.h"
#include "model/Model.h"

using namespace modelhost;

SUEntityRef SUGroupToEntity(SUGroupRef group) {
  MODELHOST_CALL_INFALLIBLE(SUGroupToEntity);
  return convert<SUEntityRef>(group);
}

SUGroupRef SUGroupFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUGroupFromEntity);
  return convert<SUGroupRef>(entity);
}

SUDrawingElementRef SUGroupToDrawingElement(SUGroupRef group) {
  MODELHOST_CALL_INFALLIBLE(SUGroupToDrawingElement);
  return convert<SUDrawingElementRef>(group);
}

SUGroupRef SUGroupFromDrawingElement(SUDrawingElementRef element) {
  MODELHOST_CALL_INFALLIBLE(SUGroupFromDrawingElement);
  return convert<SUGroupRef>(element);
}

SUComponentInstanceRef SUGroupToComponentInstance(SUGroupRef group) {
  MODELHOST_CALL_INFALLIBLE(SUGroupToComponentInstance);
  return convert<SUComponentInstanceRef>(group);
}

SUGroupRef SUGroupFromComponentInstance(SUComponentInstanceRef instance) {
  MODELHOST_CALL_INFALLIBLE(SUGroupFromComponentInstance);
  return convert<SUGroupRef>(instance);
}

SUResult SUGroupCreate(SUGroupRef* out_group) {
  MODELHOST_CALL(SUGroupCreate);
  return create(out_group);
}

SUResult SUGroupRelease(SUGroupRef* group) {
  MODELHOST_CALL(SUGroupRelease);
  return releaseIf(group, [](const Group& g) { return g.parent == nullptr; });
}

SUResult SUGroupGetName(SUGroupRef group, SUStringRef* name) {
  MODELHOST_CALL(SUGroupGetName);
  return giveText(group, name, [](const Group& g) -> std::string_view { return g.name; });
}

SUResult SUGroupSetName(SUGroupRef group, const char* name) {
  MODELHOST_CALL(SUGroupSetName);
  return changeFrom(group, name, [&](Group& g, char) { g.name = name; });
}

SUResult SUGroupGetTransform(SUGroupRef group, SUTransformation* transform) {
  MODELHOST_CALL(SUGroupGetTransform);
  return give(group, transform, [](const Group& g) { return g.transform; });
}

SUResult SUGroupSetTransform(SUGroupRef group, const SUTransformation* transform) {
  MODELHOST_CALL(SUGroupSetTransform);
  return changeFrom(group, transform, [](Group& g, const SUTransformation& t) { g.transform = t; });
}

SUResult SUGroupGetEntities(SUGroupRef group, SUEntitiesRef* entities) {
  MODELHOST_CALL(SUGroupGetEntities);
  return giveRef(group, entities, [](const Group& g) { return g.definition()->entities.get(); });
}

SUResult SUGroupGetDefinition(SUGroupRef group, SUComponentDefinitionRef* definition) {
  MODELHOST_CALL(SUGroupGetDefinition);
  return giveRef(group, definition, [](const Group& g) { return g.definition(); });
}
