#include "geometry/MeshBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "support/Finite.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

constexpr float kNoVolume = 1e-12f;
constexpr float kNoLength = 1e-5f;
constexpr float kNoArea = 1e-10f;

glm::mat3 NormalMatrix(const glm::mat3& m) {
  const glm::mat3 cofactors(glm::cross(m[1], m[2]), glm::cross(m[2], m[0]), glm::cross(m[0], m[1]));
  const float determinant = glm::dot(m[0], cofactors[0]);
  if (!(std::abs(determinant) > kNoVolume)) return m;
  return glm::mat3(cofactors[0] / determinant, cofactors[1] / determinant,
                   cofactors[2] / determinant);
}

glm::vec2 UvAt(std::span<const glm::vec2> uv, std::size_t vertex) {
  return vertex < uv.size() && AllFinite(&uv[vertex].x, 2) ? uv[vertex] : glm::vec2(0.0f);
}

float Area(const glm::vec3& a, const glm::vec3& b, const glm::vec3& c) {
  return 0.5f * glm::length(glm::cross(b - a, c - a));
}

}  // namespace

// Compared bit by bit: a zero's sign shows in what is made of it.
void FaceTransform::Set(const glm::mat4& transform) {
  if (std::memcmp(&matrix, &transform, sizeof matrix) == 0) return;
  matrix = transform;
  normalMatrix = NormalMatrix(glm::mat3(transform));
}

glm::vec3 FaceTransform::Position(const glm::dvec3& position) const {
  return glm::vec3(matrix * glm::vec4(glm::vec3(position), 1.0f));
}

glm::vec3 FaceTransform::Normal(const glm::dvec3& normal) const {
  const glm::vec3 turned = normalMatrix * glm::vec3(normal);
  const float length = glm::length(turned);
  const glm::vec3 unit = length > kNoLength ? turned / length : turned;
  return AllFinite(&unit.x, 3) ? unit : glm::vec3(0.0f);
}

void AppendFace(const FaceMesh& face, const FaceTransform& transform, MeshBuffer& buffer) {
  const std::size_t first = buffer.vertices.size();
  buffer.vertices.resize(first + face.positions.size());
  MeshVertex* const own = buffer.vertices.data() + first;
  for (std::size_t i = 0; i < face.positions.size(); ++i) {
    // Most corners of a flat face share its normal.
    const bool again = i > 0 && face.normals[i] == face.normals[i - 1];
    own[i] = {transform.Position(face.positions[i]),
              again ? own[i - 1].normal : transform.Normal(face.normals[i]), UvAt(face.frontUv, i),
              UvAt(face.backUv, i)};
  }

  // One face whose positions are not finite must not take the whole mesh along.
  constexpr std::size_t kFloats = sizeof(MeshVertex) / sizeof(float);
  if (!AllFinite(reinterpret_cast<const float*>(own), face.positions.size() * kFloats)) {
    buffer.vertices.resize(first);
    LogLine("left out: a face whose coordinates are no numbers");
    return;
  }

  const std::size_t firstWord = buffer.triangles.size();
  buffer.triangles.resize(firstWord + face.indexes.size() / 3 * kTriangleWords);
  std::uint32_t* word = buffer.triangles.data() + firstWord;
  const auto base = static_cast<std::uint32_t>(first);
  for (std::size_t t = 0; t + 2 < face.indexes.size(); t += 3) {
    const std::uint32_t a = face.indexes[t];
    const std::uint32_t b = face.indexes[t + 1];
    const std::uint32_t c = face.indexes[t + 2];
    if (Area(own[a].position, own[b].position, own[c].position) < kNoArea) continue;
    const std::uint32_t triangle[kTriangleWords] = {base + a, base + b, base + c, face.frontIndex,
                                                    face.backIndex};
    word = std::copy_n(triangle, kTriangleWords, word);
  }
  buffer.triangles.resize(static_cast<std::size_t>(word - buffer.triangles.data()));
}

}  // namespace quellix
