#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <glm/glm.hpp>

#include "geometry/MeshBuffer.h"

// The one place where a triangulated face becomes mesh vertices and triangles, so that every way of
// making a mesh gives the same bits.

namespace quellix {

// A face's 4x4 transform with the matrix for its normals, in single precision.
class FaceTransform {
 public:
  FaceTransform() = default;
  explicit FaceTransform(const glm::mat4& transform) { Set(transform); }

  // Neighbouring faces mostly have the same transform: what comes again costs a comparison.
  void Set(const glm::mat4& transform);

  glm::vec3 Position(const glm::dvec3& position) const;
  // Unit length; a normal that comes out shorter than 1e-5 is left as it is, one that overflows
  // becomes 0.
  glm::vec3 Normal(const glm::dvec3& normal) const;

 private:
  glm::mat4 matrix{1.0f};
  // The inverse transpose of the upper 3x3, which keeps normals perpendicular under any scale; the
  // 3x3 itself where it cannot be inverted.
  glm::mat3 normalMatrix{1.0f};
};

// Texture coordinates per vertex; vertices beyond the end, or whose coordinates are not finite,
// have (0, 0).
using UvList = std::vector<glm::vec2>;

// What one face adds to a mesh, in the face's own coordinates.
struct FaceMesh {
  std::span<const glm::dvec3> positions;
  std::span<const glm::dvec3> normals;     // one per position
  std::span<const std::uint32_t> indexes;  // three per triangle, each below their number
  std::span<const glm::vec2> frontUv;
  std::span<const glm::vec2> backUv;
  std::uint32_t frontIndex = 0;
  std::uint32_t backIndex = 0;
};

// Appends all vertices, and the triangles whose transformed area is at least 1e-10; vertices of the
// others stay. Nothing is appended for a face with a position that is not finite. Indexes are
// offset by the vertices that the buffer held before.
void AppendFace(const FaceMesh& face, const FaceTransform& transform, MeshBuffer& buffer);

}  // namespace quellix
