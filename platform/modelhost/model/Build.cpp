#include "model/Build.h"

#include <algorithm>
#include <utility>

#include "model/Layer.h"
#include "model/Material.h"

namespace modelhost {

namespace {

// The points of a loop; none when an index is out of range or too few points differ.
std::optional<std::vector<SUPoint3D>> pointsOf(const LoopInput& loop,
                                               std::span<const SUPoint3D> all) {
  std::vector<SUPoint3D> points;
  points.reserve(loop.indices.size());
  for (const std::size_t index : loop.indices) {
    if (index >= all.size() || !isFinite(all[index])) return std::nullopt;
    points.push_back(all[index]);
  }
  if (points.size() < 3) return std::nullopt;
  return points;
}

struct Outline {
  std::vector<SUPoint3D> points;
  SUPlane3D plane;
};

std::optional<Outline> outlineOf(const LoopInput& loop, std::span<const SUPoint3D> all) {
  auto points = pointsOf(loop, all);
  if (!points) return std::nullopt;
  const auto plane = planeOf(*points);
  if (!plane || !isPlanar(*points, *plane)) return std::nullopt;
  return Outline{std::move(*points), *plane};
}

// A loop on vertices; none when welding has left fewer than three of them.
std::optional<LoopSpec> specOf(const LoopInput& loop, std::span<Vertex* const> vertices) {
  LoopSpec spec;
  for (std::size_t i = 0; i < loop.indices.size(); ++i) {
    Vertex* vertex = vertices[loop.indices[i]];
    LoopSpec::EdgeFlags flags = i < loop.edges.size() ? loop.edges[i] : LoopSpec::EdgeFlags{};
    // Neighbours that have become one: the edge between them is gone.
    if (!spec.vertices.empty() && spec.vertices.back() == vertex) {
      spec.edges.back() = flags;
      continue;
    }
    spec.vertices.push_back(vertex);
    spec.edges.push_back(flags);
  }
  if (spec.vertices.size() > 1 && spec.vertices.front() == spec.vertices.back()) {
    spec.vertices.pop_back();
    spec.edges.pop_back();
  }
  if (spec.vertices.size() < 3) return std::nullopt;
  return spec;
}

void reverse(LoopSpec& spec) {
  std::reverse(spec.vertices.begin(), spec.vertices.end());
  std::reverse(spec.edges.begin(), spec.edges.end());
  std::rotate(spec.edges.begin(), spec.edges.begin() + 1, spec.edges.end());
}

void paintSide(Face& face, bool front, const SUMaterialInput& input,
               std::span<const SUPoint3D> points) {
  Material* material = find(input.material);
  SUPoint3D at[4];
  for (std::size_t i = 0; i < input.num_uv_coords; ++i) at[i] = points[input.vertex_indices[i]];
  face.paint(front, material,
             UvMapping::through({at, input.num_uv_coords}, {input.uv_coords, input.num_uv_coords},
                                face.sideNormal(front), tileOf(material)));
}

bool usable(const std::optional<SUMaterialInput>& input, std::size_t points) {
  if (!input) return true;
  if (input->num_uv_coords > 4) return false;
  if (input->material.ptr != nullptr && find(input->material) == nullptr) return false;
  return std::all_of(input->vertex_indices, input->vertex_indices + input->num_uv_coords,
                     [&](std::size_t index) { return index < points; });
}

bool usable(const GeometryInput& input, std::vector<SUPlane3D>& planes) {
  const std::span<const SUPoint3D> points(input.points);
  for (const auto& edge : input.edges) {
    if (edge.start >= points.size() || edge.end >= points.size() || edge.start == edge.end ||
        !isFinite(points[edge.start]) || !isFinite(points[edge.end])) {
      return false;
    }
  }
  planes.reserve(input.faces.size());
  for (const auto& face : input.faces) {
    const auto outline = outlineOf(*face.outer, points);
    if (!outline || !usable(face.front, points.size()) || !usable(face.back, points.size())) {
      return false;
    }
    for (const auto& inner : face.inner) {
      if (!pointsOf(*inner, points)) return false;
    }
    planes.push_back(outline->plane);
  }
  return true;
}

void buildFace(Entities& entities, const GeometryInput::FaceInput& input, SUPlane3D plane,
               std::span<Vertex* const> vertices, std::span<const SUPoint3D> points) {
  std::vector<LoopSpec> loops;
  auto outer = specOf(*input.outer, vertices);
  if (!outer) return;
  if (input.reversed) {
    reverse(*outer);
    plane = {-plane.a, -plane.b, -plane.c, -plane.d};
  }
  loops.push_back(std::move(*outer));
  for (const auto& inner : input.inner) {
    if (auto spec = specOf(*inner, vertices)) loops.push_back(std::move(*spec));
  }
  Face& face = entities.addFace(std::move(loops), plane);
  face.hidden = input.hidden;
  face.layer = input.layer;
  if (input.front) paintSide(face, true, *input.front, points);
  if (input.back) paintSide(face, false, *input.back, points);
}

}  // namespace

LoopSpec::EdgeFlags* LoopInput::edge(std::size_t index) {
  if (index >= indices.size()) return nullptr;
  if (edges.size() < indices.size()) edges.resize(indices.size());
  return &edges[index];
}

TileSize tileOf(const Material* material) {
  return material != nullptr && material->texture ? material->texture->tile : TileSize{};
}

SUResult fill(Entities& entities, const GeometryInput& input, bool weld) {
  std::vector<SUPlane3D> planes;
  if (!usable(input, planes)) return SU_ERROR_INVALID_INPUT;
  std::vector<Vertex*> vertices(input.points.size(), nullptr);
  const auto need = [&](std::size_t index) {
    if (vertices[index] != nullptr) return;
    vertices[index] = weld ? &entities.weldedVertex(input.points[index])
                           : &entities.newVertex(input.points[index]);
  };
  for (std::size_t i = 0; i < input.faces.size(); ++i) {
    const auto& face = input.faces[i];
    for (const std::size_t index : face.outer->indices) need(index);
    for (const auto& inner : face.inner) {
      for (const std::size_t index : inner->indices) need(index);
    }
    buildFace(entities, face, planes[i], vertices, input.points);
  }
  for (const auto& edgeInput : input.edges) {
    need(edgeInput.start);
    need(edgeInput.end);
    Vertex& start = *vertices[edgeInput.start];
    Vertex& end = *vertices[edgeInput.end];
    if (&start == &end) continue;
    Edge& edge = entities.edgeBetween(start, end);
    willChange(edge);
    edge.hidden = edgeInput.flags.hidden;
    edge.soft = edgeInput.flags.soft;
    edge.smooth = edgeInput.flags.smooth;
    if (edgeInput.flags.material.get() != nullptr) edge.material = edgeInput.flags.material;
    if (edgeInput.flags.layer.get() != nullptr) edge.layer = edgeInput.flags.layer;
  }
  return SU_ERROR_NONE;
}

std::unique_ptr<Face> buildLoneFace(std::span<const SUPoint3D> points, const LoopInput& outer) {
  const auto outline = outlineOf(outer, points);
  if (!outline) return nullptr;
  auto face = std::make_unique<Face>();
  face->scratch = std::make_unique<Entities>(nullptr);
  face->plane = outline->plane;
  return addHole(*face, points, outer) == SU_ERROR_NONE ? std::move(face) : nullptr;
}

SUResult addHole(Face& face, std::span<const SUPoint3D> points, const LoopInput& loop) {
  Entities& entities = face.scratch ? *face.scratch : *face.parent;
  const auto outline = pointsOf(loop, points);
  if (!outline) return SU_ERROR_INVALID_INPUT;
  // A hole lies in the plane of its face, as far off it at most as the face's own points may.
  auto all = face.loops.empty() ? *outline : face.loops.front()->points();
  const double tolerance = planarTolerance(all);
  for (const SUPoint3D& p : *outline) {
    if (std::abs(dot(p, face.normal()) + face.plane.d) > tolerance) return SU_ERROR_INVALID_INPUT;
  }
  if (!planeOf(*outline)) return SU_ERROR_INVALID_INPUT;
  std::vector<Vertex*> vertices;
  LoopInput local;
  local.edges = loop.edges;
  for (std::size_t i = 0; i < outline->size(); ++i) {
    vertices.push_back(&entities.weldedVertex((*outline)[i]));
    local.indices.push_back(i);
  }
  auto spec = specOf(local, vertices);
  if (!spec) return SU_ERROR_INVALID_INPUT;
  entities.addLoop(face, std::move(*spec));
  return SU_ERROR_NONE;
}

}  // namespace modelhost
