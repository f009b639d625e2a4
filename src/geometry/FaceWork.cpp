#include "geometry/FaceWork.h"

#include <span>

#include "geometry/GeometryTimings.h"
#include "geometry/MeshBuilder.h"
#include "support/PerThread.h"

namespace quellix {

namespace {

// Buffers that would otherwise be allocated for every face.
struct Scratch {
  TessMesh mesh;
  UvList frontUv;
  UvList backUv;
  FaceTransform transform;
};

Scratch& ThreadScratch() {
  static PerThread<Scratch> scratch;
  return scratch.Get();
}

bool SameSide(const FaceSide& a, const FaceSide& b) {
  return SUAreEqual(a.material, b.material) && a.textureId == b.textureId &&
         a.textured == b.textured && a.index == b.index;
}

bool SameContext(const FaceContext& a, const FaceContext& b) {
  return SameSide(a.front, b.front) && SameSide(a.back, b.back) &&
         SUAreEqual(a.textureWriter, b.textureWriter) && a.transform == b.transform;
}

std::span<const glm::vec2> UvFrom(const FaceChunk& chunk, std::uint32_t start, std::size_t count) {
  if (start == FaceWork::kNone) return {};
  return std::span(chunk.uv).subspan(start, count);
}

// Where a list of coordinates goes in the chunk's; nowhere when there are none.
std::uint32_t Keep(const UvList& uv, UvList& all) {
  if (uv.empty()) return FaceWork::kNone;
  const auto start = static_cast<std::uint32_t>(all.size());
  all.insert(all.end(), uv.begin(), uv.end());
  return start;
}

// `mesh` and the coordinates may be the scratch's own.
void AddMesh(Scratch& scratch, const TessMesh& mesh, std::span<const glm::vec2> frontUv,
             std::span<const glm::vec2> backUv, FaceWork& work, FaceChunk& chunk) {
  const FaceContext& context = chunk.ContextOf(work);
  const std::size_t vertices = chunk.mesh.vertices.size();
  const std::size_t words = chunk.mesh.triangles.size();
  scratch.transform.Set(context.transform);
  AppendFace({mesh.positions, mesh.normals, mesh.indexes, frontUv, backUv, context.front.index,
              context.back.index},
             scratch.transform, chunk.mesh);
  // None where the face is left out because a coordinate is not finite.
  work.vertices = static_cast<std::uint32_t>(chunk.mesh.vertices.size() - vertices);
  work.triangleWords = static_cast<std::uint32_t>(chunk.mesh.triangles.size() - words);
  work.done = true;
}

}  // namespace

FaceWork& FaceChunk::Add(SUFaceRef su_face, const FaceContext& context) {
  if (faces.capacity() == 0) faces.reserve(kFaces);
  if (contexts.empty() || !SameContext(contexts.back(), context)) contexts.push_back(context);
  FaceWork& work = faces.emplace_back();
  work.su_face = su_face;
  work.context = static_cast<std::uint32_t>(contexts.size() - 1);
  return work;
}

void FaceChunk::DropFaces() {
  std::vector<FaceWork>().swap(faces);
  std::vector<FaceContext>().swap(contexts);
  UvList().swap(uv);
}

void ReserveOwnMesh(const FaceCollector& collector, FaceChunk& chunk) {
  std::size_t vertices = 0;
  std::size_t triangles = 0;
  for (const FaceWork& work : chunk.faces) {
    if (work.face == FaceCollector::kNone) continue;
    const FaceData& data = collector.Face(work.face);
    std::size_t points = data.CornerCount();
    std::size_t rings = data.LoopCount();
    for (const std::vector<Point>& opening : data.Openings()) {
      points += opening.size();
      ++rings;
    }
    vertices += points;
    triangles += points + 2 * rings - 4;
  }
  chunk.mesh.vertices.reserve(vertices);
  chunk.mesh.triangles.reserve(triangles * kTriangleWords);
}

void EvaluateUv(const UvHelpers& uvHelpers, std::span<const Point> points, FaceWork& work,
                FaceChunk& chunk) {
  Scratch& scratch = ThreadScratch();
  const ScopedTiming timing(Timings().uvHelper);
  uvHelpers.Evaluate(points, scratch.frontUv, scratch.backUv);
  work.frontUv = Keep(scratch.frontUv, chunk.uv);
  work.backUv = Keep(scratch.backUv, chunk.uv);
}

void BuildOwnMesh(FaceCollector& collector, FaceWork& work, FaceChunk& chunk) {
  if (work.face == FaceCollector::kNone) return;
  Scratch& scratch = ThreadScratch();
  TessMesh& mesh = scratch.mesh;
  if (!TessellateFace(collector, work.face, mesh)) return;
  const std::size_t points = mesh.positions.size();
  AddMesh(scratch, mesh, UvFrom(chunk, work.frontUv, points), UvFrom(chunk, work.backUv, points),
          work, chunk);
}

void BuildHelperMesh(FaceWork& work, FaceChunk& chunk) {
  Scratch& scratch = ThreadScratch();
  {
    const ScopedTiming timing(Timings().meshHelperCreate);
    MeshHelper helper;
    helper.Create(work.su_face);
    helper.Read(scratch.mesh);
  }
  if (scratch.mesh.positions.empty()) return;
  const FaceContext& context = chunk.ContextOf(work);
  scratch.frontUv.clear();
  scratch.backUv.clear();
  if (context.front.textured || context.back.textured) {
    const ScopedTiming timing(Timings().uvHelper);
    if (!work.uvHelpers.HasAny()) work.uvHelpers = UvHelpers(work.su_face, context);
    work.uvHelpers.Evaluate(scratch.mesh.positions, scratch.frontUv, scratch.backUv);
  }
  AddMesh(scratch, scratch.mesh, scratch.frontUv, scratch.backUv, work, chunk);
}

void AppendPart(const MeshBuffer& part, std::size_t firstVertex, std::size_t vertices,
                std::size_t firstWord, std::size_t words, MeshBuffer& mesh) {
  // Modulo 2^32, so that a part from the middle of its mesh may also move down.
  const auto shift = static_cast<std::uint32_t>(mesh.vertices.size() - firstVertex);
  const auto from = part.vertices.begin() + static_cast<std::ptrdiff_t>(firstVertex);
  mesh.vertices.insert(mesh.vertices.end(), from, from + static_cast<std::ptrdiff_t>(vertices));
  const std::size_t start = mesh.triangles.size();
  mesh.triangles.resize(start + words);
  const std::uint32_t* source = part.triangles.data() + firstWord;
  std::uint32_t* target = mesh.triangles.data() + start;
  for (std::size_t i = 0; i < words; i += kTriangleWords) {
    target[i] = source[i] + shift;
    target[i + 1] = source[i + 1] + shift;
    target[i + 2] = source[i + 2] + shift;
    target[i + 3] = source[i + 3];
    target[i + 4] = source[i + 4];
  }
}

}  // namespace quellix
