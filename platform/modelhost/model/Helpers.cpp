#include "model/Helpers.h"

#include <algorithm>
#include <cmath>

#include "model/Build.h"
#include "model/Measure.h"
#include "model/Triangulate.h"

namespace modelhost {

namespace {

// What one face contributes at a vertex, and over which of its edges the smoothing goes on.
double angleAt(const Face& face, const Vertex& vertex, std::vector<const Edge*>& onwards) {
  double angle = -1;
  for (const auto& loop : face.loops) {
    const std::size_t n = loop->vertices.size();
    for (std::size_t i = 0; i < n; ++i) {
      if (loop->vertices[i] != &vertex) continue;
      const std::size_t before = (i + n - 1) % n;
      for (const Edge* edge : {loop->edges[before], loop->edges[i]}) {
        if (edge->smooth) onwards.push_back(edge);
      }
      if (angle >= 0) continue;
      const SUVector3D a = loop->vertices[before]->position - vertex.position;
      const SUVector3D b = loop->vertices[(i + 1) % n]->position - vertex.position;
      const double size = length(a) * length(b);
      angle = size > 0 ? std::acos(std::clamp(dot(a, b) / size, -1.0, 1.0)) : 0;
    }
  }
  return std::max(angle, 0.0);
}

}  // namespace

SUVector3D smoothedNormal(const Face& face, const Vertex& vertex) {
  std::vector<const Face*> open{&face};
  std::vector<const Face*> seen{&face};
  std::vector<const Edge*> onwards;
  SUVector3D sum{0, 0, 0};
  while (!open.empty()) {
    const Face* at = open.back();
    open.pop_back();
    onwards.clear();
    const double angle = angleAt(*at, vertex, onwards);
    const SUVector3D n = at->normal();
    // A neighbour that is turned inside out still lies in the same surface.
    sum = sum + (dot(n, face.normal()) < 0 ? -n : n) * angle;
    for (const Edge* edge : onwards) {
      for (const Face* next : edge->faces) {
        if (std::find(seen.begin(), seen.end(), next) != seen.end()) continue;
        seen.push_back(next);
        open.push_back(next);
      }
    }
  }
  return length(sum) < 1e-30 ? face.normal() : unit(sum);
}

UvMapping shownMapping(const Face& face, bool front, const TextureWriter::Entry* entry) {
  if (entry != nullptr && !entry->affine() && entry->front == front) return entry->flatMapping();
  const Material* own = face.sideMaterial(front);
  if (own == nullptr && entry != nullptr) return mappingOf(face, front, entry->tile);
  return mappingOf(face, front, tileOf(own));
}

MeshHelper::MeshHelper(const Face& face)
    : Object(Kind::MeshHelper),
      front(shownMapping(face, true, nullptr)),
      back(shownMapping(face, false, nullptr)) {
  Triangulation mesh = triangulate(outlinesOf(face), face.normal());
  vertices = std::move(mesh.points);
  normals.reserve(vertices.size());
  for (const auto& loop : face.loops) {
    for (const Vertex* vertex : loop->vertices) normals.push_back(smoothedNormal(face, *vertex));
  }
  normals.resize(vertices.size(), face.normal());
  for (const auto& triangle : mesh.triangles) {
    indices.insert(indices.end(), triangle.begin(), triangle.end());
  }
}

}  // namespace modelhost
