#include "app/GlbMeshes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <utility>
#include <vector>

#include "app/VectorMath.h"

namespace kvapp {

namespace wire = quellix::wire;
using nlohmann::json;

namespace {

constexpr int kFloat = 5126;
constexpr int kUnsigned = 5125;
constexpr int kTriangles = 4;

// The triangles of a mesh that have the same two materials, with the vertices they use. A primitive
// gets arrays of its own: readers load whole arrays, and meshes with many materials share few
// vertices among them.
struct Sides {
  const Material* front;
  const Material* back;
  std::vector<std::array<std::uint32_t, 3>> triangles;  // of numbers of `vertices`
  std::vector<std::uint32_t> vertices;                  // of the mesh
};

std::vector<Sides> GroupBySides(const Mesh& mesh) {
  std::vector<Sides> groups;
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::size_t> groupOfSlots;
  for (const wire::TriangleRecord& triangle : mesh.geometry.Triangles()) {
    const auto [found, added] =
        groupOfSlots.try_emplace({triangle.frontMaterial, triangle.backMaterial}, groups.size());
    if (added) {
      groups.push_back({mesh.slots[triangle.frontMaterial].material.get(),
                        mesh.slots[triangle.backMaterial].material.get(),
                        {},
                        {}});
    }
    groups[found->second].triangles.push_back(
        {triangle.vertex[0], triangle.vertex[1], triangle.vertex[2]});
  }
  struct Use {
    std::size_t group;
    std::uint32_t number;
  };
  std::vector<Use> uses(mesh.geometry.vertexCount, Use{groups.size(), 0});
  for (std::size_t g = 0; g < groups.size(); ++g) {
    for (auto& triangle : groups[g].triangles) {
      for (std::uint32_t& corner : triangle) {
        Use& use = uses[corner];
        if (use.group != g) {
          use = {g, static_cast<std::uint32_t>(groups[g].vertices.size())};
          groups[g].vertices.push_back(corner);
        }
        corner = use.number;
      }
    }
  }
  return groups;
}

bool SameOnBothSides(const Mesh& mesh, const Sides& sides) {
  if (sides.front != sides.back) return false;
  if (!GlbMaterials::IsTextured(sides.front)) return true;
  const auto vertices = mesh.geometry.Vertices();
  return std::all_of(sides.vertices.begin(), sides.vertices.end(), [&](std::uint32_t number) {
    const wire::MeshVertex& vertex = vertices[number];
    return vertex.frontUv[0] == vertex.backUv[0] && vertex.frontUv[1] == vertex.backUv[1];
  });
}

// Vertices as glTF wants them, for one side or the other: unit normals, texture coordinates from
// the top of the picture.
class VertexViews {
 public:
  VertexViews(GlbDocument& document, const Mesh& mesh, const Sides& sides, const Matrix* transform)
      : document_(document),
        vertices_(mesh.geometry.Vertices()),
        used_(sides.vertices),
        transform_(transform) {}

  // Attributes of a primitive.
  json Attributes(bool back, bool textured) {
    json attributes = {{"POSITION", Positions()}, {"NORMAL", Normals(back)}};
    if (textured) attributes["TEXCOORD_0"] = TextureCoordinates(back);
    return attributes;
  }

 private:
  std::size_t Positions() {
    if (positions_) return *positions_;
    std::vector<float> values;
    values.reserve(used_.size() * 3);
    Bounds bounds;
    for (const std::uint32_t number : used_) {
      const wire::MeshVertex& vertex = vertices_[number];
      Vector3 point = {vertex.position[0], vertex.position[1], vertex.position[2]};
      if (transform_ != nullptr) point = TransformPoint(*transform_, point);
      bounds.Add(point);
      values.insert(values.end(), point.begin(), point.end());
    }
    positions_ = AddAccessor(values, "VEC3", {{"min", bounds.low}, {"max", bounds.high}});
    return *positions_;
  }

  std::size_t Normals(bool back) {
    std::optional<std::size_t>& accessor = back ? backNormals_ : frontNormals_;
    if (accessor) return *accessor;
    std::vector<float> values;
    values.reserve(used_.size() * 3);
    for (const std::uint32_t number : used_) {
      const wire::MeshVertex& vertex = vertices_[number];
      Vector3 normal = {vertex.normal[0], vertex.normal[1], vertex.normal[2]};
      if (transform_ != nullptr) normal = TransformNormal(*transform_, normal);
      normal = Normalized(normal, {0, 0, 1});
      for (const float value : normal) values.push_back(back ? -value : value);
    }
    accessor = AddAccessor(values, "VEC3", json::object());
    return *accessor;
  }

  std::size_t TextureCoordinates(bool back) {
    std::optional<std::size_t>& accessor = back ? backUvs_ : frontUvs_;
    if (accessor) return *accessor;
    std::vector<float> values;
    values.reserve(used_.size() * 2);
    for (const std::uint32_t number : used_) {
      const wire::MeshVertex& vertex = vertices_[number];
      const float* uv = back ? vertex.backUv : vertex.frontUv;
      values.push_back(uv[0]);
      values.push_back(1 - uv[1]);
    }
    accessor = AddAccessor(values, "VEC2", json::object());
    return *accessor;
  }

  std::size_t AddAccessor(const std::vector<float>& values, const char* type, json accessor) {
    const std::size_t components = type[3] == '3' ? 3 : 2;
    accessor["bufferView"] =
        document_.AddView(std::as_bytes(std::span(values)), GlbDocument::Target::Vertices);
    accessor["componentType"] = kFloat;
    accessor["count"] = values.size() / components;
    accessor["type"] = type;
    return document_.Add("accessors", std::move(accessor));
  }

  GlbDocument& document_;
  std::span<const wire::MeshVertex> vertices_;
  const std::vector<std::uint32_t>& used_;
  const Matrix* transform_;
  std::optional<std::size_t> positions_;
  std::optional<std::size_t> frontNormals_;
  std::optional<std::size_t> backNormals_;
  std::optional<std::size_t> frontUvs_;
  std::optional<std::size_t> backUvs_;
};

std::size_t AddIndices(GlbDocument& document,
                       const std::vector<std::array<std::uint32_t, 3>>& triangles, bool turned) {
  std::vector<std::uint32_t> indices;
  indices.reserve(triangles.size() * 3);
  for (const auto& triangle : triangles) {
    indices.push_back(triangle[0]);
    indices.push_back(triangle[turned ? 2 : 1]);
    indices.push_back(triangle[turned ? 1 : 2]);
  }
  const std::size_t view =
      document.AddView(std::as_bytes(std::span(indices)), GlbDocument::Target::Indices);
  return document.Add("accessors", {{"bufferView", view},
                                    {"componentType", kUnsigned},
                                    {"count", indices.size()},
                                    {"type", "SCALAR"}});
}

}  // namespace

std::optional<std::size_t> GlbMeshes::Index(const Mesh& mesh) {
  const auto [found, added] = meshes_.try_emplace(&mesh);
  if (added) found->second = Build(mesh, nullptr);
  return found->second;
}

std::optional<std::size_t> GlbMeshes::Baked(const Mesh& mesh, const Matrix& transform) {
  return Build(mesh, &transform);
}

std::optional<std::size_t> GlbMeshes::Build(const Mesh& mesh, const Matrix* transform) {
  // A mirroring transform turns triangles round; a node does that by itself, baked vertices do not.
  const bool mirrored = transform != nullptr && Determinant(*transform) < 0;
  json primitives = json::array();
  for (const Sides& sides : GroupBySides(mesh)) {
    const bool both = SameOnBothSides(mesh, sides);
    VertexViews views(document_, mesh, sides, transform);
    for (const bool back : {false, true}) {
      if (back && both) continue;
      const Material* material = back ? sides.back : sides.front;
      if (GlbMaterials::IsInvisible(material)) continue;
      primitives.push_back(
          {{"attributes", views.Attributes(back, GlbMaterials::IsTextured(material))},
           {"indices", AddIndices(document_, sides.triangles, back != mirrored)},
           {"material", materials_.Index(material, both)},
           {"mode", kTriangles}});
    }
  }
  if (primitives.empty()) return std::nullopt;
  return document_.Add("meshes", {{"primitives", std::move(primitives)},
                                  {"extras", {{"id", mesh.id}, {"pass", mesh.pass}}}});
}

}  // namespace kvapp
