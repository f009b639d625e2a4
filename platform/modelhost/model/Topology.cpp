#include "model/Topology.h"

#include "model/Components.h"
#include "model/Entities.h"
#include "model/Material.h"

namespace modelhost {

Edge::Edge(Vertex& from, Vertex& to) : DrawingElement(Kind::Edge), start(&from), end(&to) {}
Edge::~Edge() = default;

Face::Face() : DrawingElement(Kind::Face) {}
Face::~Face() = default;

std::vector<SUPoint3D> Loop::points() const {
  std::vector<SUPoint3D> points;
  points.reserve(vertices.size());
  for (const Vertex* vertex : vertices) points.push_back(vertex->position);
  return points;
}

Material* Face::sideMaterial(bool front) const {
  return (front ? material : backMaterial).get();
}

const UvMapping* Face::sideMapping(bool front) const {
  if (sideMaterial(front) == nullptr) return nullptr;
  return (front ? frontMapping : backMapping).get();
}

void Face::paint(bool front, Material* with, std::optional<UvMapping> mapping) {
  (front ? material : backMaterial) = with;
  (front ? frontMapping : backMapping) = mapping ? std::make_unique<UvMapping>(*mapping) : nullptr;
}

}  // namespace modelhost
