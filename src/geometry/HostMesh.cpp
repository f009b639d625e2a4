#include "geometry/HostMesh.h"

#include <algorithm>
#include <utility>

#include "support/Gates.h"

namespace quellix {

namespace {

template <class GetUvq>
void EvaluateSide(SUUVHelperRef su_helper, GetUvq get, std::span<const Point> points, UvList& uv) {
  uv.clear();
  if (SUIsInvalid(su_helper)) return;
  uv.reserve(points.size());
  for (const Point& point : points) {
    const SUPoint3D su_point = {point.x, point.y, point.z};
    SUUVQ su_uvq = {};
    if (get(su_helper, &su_point, &su_uvq) != SU_ERROR_NONE) su_uvq = {};
    uv.emplace_back(static_cast<float>(su_uvq.u), static_cast<float>(su_uvq.v));
  }
}

// Indexes are checked here: what comes after relies on them.
void ReadIndexes(SUMeshHelperRef su_helper, std::size_t vertexCount,
                 std::vector<std::uint32_t>& indexes) {
  std::size_t triangles = 0;
  if (SUMeshHelperGetNumTriangles(su_helper, &triangles) != SU_ERROR_NONE || triangles == 0) return;
  std::vector<std::size_t> su_indexes(triangles * 3);
  std::size_t got = 0;
  if (SUMeshHelperGetVertexIndices(su_helper, su_indexes.size(), su_indexes.data(), &got) !=
      SU_ERROR_NONE) {
    return;
  }
  indexes.reserve(su_indexes.size());
  for (std::size_t i = 0; i + 2 < su_indexes.size(); i += 3) {
    const auto triangle = std::span(su_indexes).subspan(i, 3);
    if (*std::max_element(triangle.begin(), triangle.end()) >= vertexCount) continue;
    for (const std::size_t index : triangle) indexes.push_back(static_cast<std::uint32_t>(index));
  }
}

void CreateSide(SUFaceRef su_face, const FaceContext& context, bool front,
                SUUVHelperRef& su_helper) {
  const FaceSide& side = front ? context.front : context.back;
  if (!side.textured) return;
  if (SUFaceGetUVHelperWithTextureHandle(su_face, front, !front, context.textureWriter,
                                         side.textureId, &su_helper) != SU_ERROR_NONE) {
    SUSetInvalid(su_helper);
  }
}

}  // namespace

void MeshHelper::Create(SUFaceRef su_face) {
  const GateGuard gate = GateAcquire(Gate::MeshHelper);
  if (SUMeshHelperCreate(&su_helper, su_face) != SU_ERROR_NONE) SUSetInvalid(su_helper);
}

MeshHelper::~MeshHelper() {
  if (SUIsInvalid(su_helper)) return;
  const GateGuard gate = GateAcquire(Gate::MeshHelper);
  Release();
}

void MeshHelper::Release() {
  if (SUIsValid(su_helper)) SUMeshHelperRelease(&su_helper);
  SUSetInvalid(su_helper);
}

void MeshHelper::Read(TessMesh& mesh) const {
  mesh.Clear();
  if (SUIsInvalid(su_helper)) return;
  const GateGuard gate = GateAcquire(Gate::MeshHelper);
  std::size_t count = 0;
  if (SUMeshHelperGetNumVertices(su_helper, &count) != SU_ERROR_NONE || count == 0) return;
  std::vector<SUPoint3D> su_points(count);
  std::vector<SUVector3D> su_normals(count);
  std::size_t got = 0;
  SUMeshHelperGetVertices(su_helper, count, su_points.data(), &got);
  SUMeshHelperGetNormals(su_helper, count, su_normals.data(), &got);
  for (std::size_t i = 0; i < count; ++i) {
    mesh.positions.emplace_back(su_points[i].x, su_points[i].y, su_points[i].z);
    mesh.normals.emplace_back(su_normals[i].x, su_normals[i].y, su_normals[i].z);
  }
  ReadIndexes(su_helper, count, mesh.indexes);
}

UvHelpers::UvHelpers(SUFaceRef su_face, const FaceContext& context) {
  if (!context.front.textured && !context.back.textured) return;
  const GateGuard gate = GateAcquire(Gate::UvHelper);
  CreateSide(su_face, context, true, su_front);
  CreateSide(su_face, context, false, su_back);
}

UvHelpers::UvHelpers(UvHelpers&& other) noexcept {
  *this = std::move(other);
}

UvHelpers& UvHelpers::operator=(UvHelpers&& other) noexcept {
  std::swap(su_front, other.su_front);
  std::swap(su_back, other.su_back);
  return *this;
}

UvHelpers::~UvHelpers() {
  if (!HasAny()) return;
  const GateGuard gate = GateAcquire(Gate::UvHelper);
  Release();
}

void UvHelpers::Evaluate(std::span<const Point> points, UvList& front, UvList& back) const {
  front.clear();
  back.clear();
  if (!HasAny()) return;
  const GateGuard gate = GateAcquire(Gate::UvHelper);
  EvaluateSide(su_front, SUUVHelperGetFrontUVQ, points, front);
  EvaluateSide(su_back, SUUVHelperGetBackUVQ, points, back);
}

void UvHelpers::Release() {
  for (SUUVHelperRef* su_helper : {&su_front, &su_back}) {
    if (SUIsValid(*su_helper)) SUUVHelperRelease(su_helper);
    SUSetInvalid(*su_helper);
  }
}

}  // namespace quellix
