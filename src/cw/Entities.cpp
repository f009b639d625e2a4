#include "cw/Entities.h"

#include "cw/GeometryInput.h"

namespace CW {

Entities::Entities(SUEntitiesRef su_entities, SUModelRef su_model)
    : su_entities_(su_entities), su_model_(su_model) {}

Entities::Entities(SUEntitiesRef su_entities, SUEntityRef su_owner) : su_entities_(su_entities) {
  SUEntityGetModel(su_owner, &su_model_);
}

std::vector<Face> Entities::faces() const {
  require_valid(is_null(), "Entities", "faces");
  return fetch_wrapped<Face, SUFaceRef>(
      [this](size_t* count) { return SUEntitiesGetNumFaces(su_entities_, count); },
      [this](size_t len, SUFaceRef* su_faces, size_t* count) {
        return SUEntitiesGetFaces(su_entities_, len, su_faces, count);
      });
}

std::vector<ComponentInstance> Entities::instances() const {
  require_valid(is_null(), "Entities", "instances");
  return fetch_wrapped<ComponentInstance, SUComponentInstanceRef>(
      [this](size_t* count) { return SUEntitiesGetNumInstances(su_entities_, count); },
      [this](size_t len, SUComponentInstanceRef* su_instances, size_t* count) {
        return SUEntitiesGetInstances(su_entities_, len, su_instances, count);
      });
}

std::vector<Group> Entities::groups() const {
  require_valid(is_null(), "Entities", "groups");
  return fetch_wrapped<Group, SUGroupRef>(
      [this](size_t* count) { return SUEntitiesGetNumGroups(su_entities_, count); },
      [this](size_t len, SUGroupRef* su_groups, size_t* count) {
        return SUEntitiesGetGroups(su_entities_, len, su_groups, count);
      });
}

std::vector<Edge> Entities::edges(bool stand_alone_only) const {
  require_valid(is_null(), "Entities", "edges");
  return fetch_wrapped<Edge, SUEdgeRef>(
      [&](size_t* count) { return SUEntitiesGetNumEdges(su_entities_, stand_alone_only, count); },
      [&](size_t len, SUEdgeRef* su_edges, size_t* count) {
        return SUEntitiesGetEdges(su_entities_, stand_alone_only, len, su_edges, count);
      });
}

bool Entities::add(std::vector<Face>& faces) {
  require_valid(is_null(), "Entities", "add");
  std::vector<SUFaceRef> su_faces;
  for (const Face& face : faces) su_faces.push_back(face.ref());
  const bool added =
      SUEntitiesAddFaces(su_entities_, su_faces.size(), su_faces.data()) == SU_ERROR_NONE;
  if (added) {
    for (Face& face : faces) face.attach();
  }
  return added;
}

bool Entities::add(std::vector<Edge>& edges) {
  require_valid(is_null(), "Entities", "add");
  std::vector<SUEdgeRef> su_edges;
  for (const Edge& edge : edges) su_edges.push_back(edge.ref());
  const bool added =
      SUEntitiesAddEdges(su_entities_, su_edges.size(), su_edges.data()) == SU_ERROR_NONE;
  if (added) {
    for (Edge& edge : edges) edge.attach();
  }
  return added;
}

bool Entities::add_group(Group& group) {
  require_valid(is_null(), "Entities", "add_group");
  const bool added = SUEntitiesAddGroup(su_entities_, group.ref()) == SU_ERROR_NONE;
  if (added) group.attach();
  return added;
}

Group Entities::add_group() {
  Group group;
  add_group(group);
  return group;
}

ComponentInstance Entities::add_instance(const ComponentDefinition& definition,
                                         const SUTransformation& transformation,
                                         const std::string& name) {
  require_valid(is_null(), "Entities", "add_instance");
  if (definition.is_null()) {
    throw std::invalid_argument(
        "CW::Entities::add_instance(): ComponentDefinition argument is invalid");
  }
  ComponentInstance instance = definition.create_instance();
  if (instance.is_null()) return instance;
  instance.transformation(transformation);
  if (!name.empty()) instance.name(name);
  if (SUEntitiesAddInstance(su_entities_, instance.ref(), nullptr) != SU_ERROR_NONE) {
    return ComponentInstance(SUComponentInstanceRef SU_INVALID);
  }
  instance.attach();
  return instance;
}

bool Entities::fill(const GeometryInput& input) {
  require_valid(is_null(), "Entities", "fill");
  return SUEntitiesFill(su_entities_, input.ref(), true) == SU_ERROR_NONE;
}

}  // namespace CW
