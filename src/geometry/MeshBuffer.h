#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <glm/glm.hpp>

namespace quellix {

// One vertex as the renderer takes it: ten floats without gaps.
struct MeshVertex {
  glm::vec3 position;
  glm::vec3 normal;  // unit length unless the transform flattens it
  glm::vec2 frontUv;
  glm::vec2 backUv;
};
static_assert(sizeof(MeshVertex) == 40);
static_assert(offsetof(MeshVertex, normal) == 12 && offsetof(MeshVertex, frontUv) == 24 &&
              offsetof(MeshVertex, backUv) == 32);

// Words per triangle: three vertex indexes, front and back material index.
inline constexpr std::size_t kTriangleWords = 5;

// Faces of one mesh, one after the other. Indexes count from the start of `vertices`.
struct MeshBuffer {
  std::vector<MeshVertex> vertices;
  std::vector<std::uint32_t> triangles;
};

}  // namespace quellix
