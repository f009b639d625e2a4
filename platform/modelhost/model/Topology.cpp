#include "model/Topology.h"

#include <algorithm>

#include "model/Model.h"

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

void Face::turnLoops() {
  Recorder* recorder = model() != nullptr ? model()->recorder() : nullptr;
  for (const auto& loop : loops) {
    if (recorder != nullptr) recorder->keep(*loop);
    std::reverse(loop->vertices.begin(), loop->vertices.end());
    std::reverse(loop->edges.begin(), loop->edges.end());
    std::rotate(loop->edges.begin(), loop->edges.begin() + 1, loop->edges.end());
  }
}

void Face::paint(bool front, Material* with, std::optional<UvMapping> mapping) {
  (front ? material : backMaterial) = with;
  (front ? frontMapping : backMapping) = mapping ? std::make_unique<UvMapping>(*mapping) : nullptr;
}

}  // namespace modelhost
