#include <SketchUpAPI/model/entities.h>

#include <array>

#include "core/Args.h"
#include "core/CallModes.h"
#include "model/Build.h"
#include "model/Measure.h"
#include "model/Model.h"

using namespace modelhost;

namespace {

auto standAlone(const Entities& entities) {
  std::vector<const Edge*> edges;
  for (const auto& edge : entities.edges()) {
    if (edge->faces.empty()) edges.push_back(edge.get());
  }
  return edges;
}

// Takes over an instance, group or image that still belongs to its maker.
SUResult place(SUEntitiesRef ref, Instance* instance, Kind kind) {
  Entities* entities = find(ref);
  if (entities == nullptr || instance == nullptr) return SU_ERROR_INVALID_INPUT;
  if (kind != Kind::None && instance->kind() != kind) return SU_ERROR_INVALID_INPUT;
  Definition* definition = instance->definition();
  if (instance->parent != nullptr || definition == nullptr) return SU_ERROR_INVALID_INPUT;
  if (definition->model() != nullptr && entities->model() != nullptr &&
      definition->model() != entities->model()) {
    return SU_ERROR_INVALID_INPUT;
  }
  if (definition->contains(*entities) && !CallModes::instance().circlesAllowed()) {
    return SU_ERROR_INVALID_ARGUMENT;
  }
  entities->adopt(std::unique_ptr<Instance>(instance));
  return SU_ERROR_NONE;
}

}  // namespace

SUResult SUEntitiesGetBoundingBox(SUEntitiesRef entities, SUBoundingBox3D* box) {
  MODELHOST_CALL(SUEntitiesGetBoundingBox);
  return give(entities, box, [](const Entities& e) { return boxOf(e).get(); });
}

SUResult SUEntitiesClear(SUEntitiesRef entities) {
  MODELHOST_CALL(SUEntitiesClear);
  return change(entities, [](Entities& e) { e.clear(); });
}

SUResult SUEntitiesFill(SUEntitiesRef entities, SUGeometryInputRef input, bool weld_vertices) {
  MODELHOST_CALL(SUEntitiesFill);
  Entities* e = find(entities);
  const GeometryInput* i = find(input);
  if (e == nullptr || i == nullptr) return SU_ERROR_INVALID_INPUT;
  return fill(*e, *i, weld_vertices);
}

SUResult SUEntitiesAddFaces(SUEntitiesRef entities, size_t len, const SUFaceRef faces[]) {
  MODELHOST_CALL(SUEntitiesAddFaces);
  Entities* e = find(entities);
  if (e == nullptr) return SU_ERROR_INVALID_INPUT;
  if (faces == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  for (size_t i = 0; i < len; ++i) {
    Face* face = find(faces[i]);
    if (face == nullptr || face->parent != nullptr) return SU_ERROR_INVALID_INPUT;
    e->adopt(std::unique_ptr<Face>(face));
  }
  return SU_ERROR_NONE;
}

SUResult SUEntitiesAddEdges(SUEntitiesRef entities, size_t len, const SUEdgeRef edges[]) {
  MODELHOST_CALL(SUEntitiesAddEdges);
  Entities* e = find(entities);
  if (e == nullptr) return SU_ERROR_INVALID_INPUT;
  if (edges == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  for (size_t i = 0; i < len; ++i) {
    Edge* edge = find(edges[i]);
    if (edge == nullptr || !edge->scratch) return SU_ERROR_INVALID_INPUT;
    e->adopt(std::unique_ptr<Edge>(edge));
  }
  return SU_ERROR_NONE;
}

SUResult SUEntitiesAddGroup(SUEntitiesRef entities, SUGroupRef group) {
  MODELHOST_CALL(SUEntitiesAddGroup);
  return place(entities, find(group), Kind::Group);
}

SUResult SUEntitiesAddImage(SUEntitiesRef entities, SUImageRef image) {
  MODELHOST_CALL(SUEntitiesAddImage);
  return place(entities, find(image), Kind::Image);
}

SUResult SUEntitiesAddInstance(SUEntitiesRef entities, SUComponentInstanceRef instance,
                               SUStringRef* name) {
  MODELHOST_CALL(SUEntitiesAddInstance);
  Instance* i = find(instance);
  const SUResult placed = place(entities, i, Kind::None);
  if (placed == SU_ERROR_NONE && name != nullptr) return putText(i->name, name);
  return placed;
}

SUResult SUEntitiesErase(SUEntitiesRef entities, size_t len, SUEntityRef elements[]) {
  MODELHOST_CALL(SUEntitiesErase);
  Entities* e = find(entities);
  if (e == nullptr) return SU_ERROR_INVALID_INPUT;
  if (elements == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  std::unordered_set<const Entity*> doomed;
  for (size_t i = 0; i < len; ++i) {
    const DrawingElement* element = find(SUDrawingElementRef{elements[i].ptr});
    if (element == nullptr || element->parent != e) return SU_ERROR_INVALID_INPUT;
    doomed.insert(element);
  }
  e->erase(doomed);
  return SU_ERROR_NONE;
}

SUResult SUEntitiesGetNumFaces(SUEntitiesRef entities, size_t* count) {
  MODELHOST_CALL(SUEntitiesGetNumFaces);
  return give(entities, count, [](const Entities& e) { return e.faces().size(); });
}

SUResult SUEntitiesGetFaces(SUEntitiesRef entities, size_t len, SUFaceRef faces[], size_t* count) {
  MODELHOST_CALL(SUEntitiesGetFaces);
  return giveList(
      entities, len, faces, count, [](const Entities& e) -> const auto& { return e.faces(); });
}

SUResult SUEntitiesGetNumEdges(SUEntitiesRef entities, bool stand_alone_only, size_t* count) {
  MODELHOST_CALL(SUEntitiesGetNumEdges);
  return give(entities, count, [&](const Entities& e) {
    return stand_alone_only ? standAlone(e).size() : e.edges().size();
  });
}

SUResult SUEntitiesGetEdges(SUEntitiesRef entities, bool stand_alone_only, size_t len,
                            SUEdgeRef edges[], size_t* count) {
  MODELHOST_CALL(SUEntitiesGetEdges);
  if (stand_alone_only) return giveList(entities, len, edges, count, &standAlone);
  return giveList(
      entities, len, edges, count, [](const Entities& e) -> const auto& { return e.edges(); });
}

SUResult SUEntitiesGetNumGroups(SUEntitiesRef entities, size_t* count) {
  MODELHOST_CALL(SUEntitiesGetNumGroups);
  return give(entities, count, [](const Entities& e) { return e.groups().size(); });
}

SUResult SUEntitiesGetGroups(SUEntitiesRef entities, size_t len, SUGroupRef groups[],
                             size_t* count) {
  MODELHOST_CALL(SUEntitiesGetGroups);
  return giveList(
      entities, len, groups, count, [](const Entities& e) -> const auto& { return e.groups(); });
}

SUResult SUEntitiesGetNumImages(SUEntitiesRef entities, size_t* count) {
  MODELHOST_CALL(SUEntitiesGetNumImages);
  return give(entities, count, [](const Entities& e) { return e.images().size(); });
}

SUResult SUEntitiesGetImages(SUEntitiesRef entities, size_t len, SUImageRef images[],
                             size_t* count) {
  MODELHOST_CALL(SUEntitiesGetImages);
  return giveList(
      entities, len, images, count, [](const Entities& e) -> const auto& { return e.images(); });
}

SUResult SUEntitiesGetNumInstances(SUEntitiesRef entities, size_t* count) {
  MODELHOST_CALL(SUEntitiesGetNumInstances);
  return give(entities, count, [](const Entities& e) { return e.instances().size(); });
}

SUResult SUEntitiesGetInstances(SUEntitiesRef entities, size_t len,
                                SUComponentInstanceRef instances[], size_t* count) {
  MODELHOST_CALL(SUEntitiesGetInstances);
  return giveList(
      entities, len, instances, count,
      [](const Entities& e) -> const auto& { return e.instances(); });
}
