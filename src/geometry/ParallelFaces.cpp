#include "geometry/ParallelFaces.h"

#include <deque>

#include "geometry/FaceExporter.h"

namespace quellix {

namespace {

// A deque, since tasks refer to the chunks.
using Chunks = std::deque<FaceChunk>;

// Everything that the host is asked about the faces.
Chunks Gather(FaceCollector& collector, const FaceSource& source) {
  Chunks chunks;
  std::vector<Point> points;
  source([&](SUFaceRef su_face, const FaceContext& context) {
    if (chunks.empty() || chunks.back().faces.size() == FaceChunk::kFaces) chunks.emplace_back();
    FaceChunk& chunk = chunks.back();
    FaceWork& work = chunk.Add(su_face, context);
    work.face = collector.CollectSmoothingGroup(su_face);
    if (!context.front.textured && !context.back.textured) return;
    if (!collector.GatherFacePoints(work.face, points)) return;
    EvaluateUv(UvHelpers(su_face, context), points, work, chunk);
  });
  return chunks;
}

void Triangulate(FaceCollector& collector, FaceChunk& chunk) {
  ReserveOwnMesh(collector, chunk);
  for (FaceWork& work : chunk.faces) BuildOwnMesh(collector, work, chunk);
}

// Tasks refer to the chunks, so an error here too must leave none running. The last chunk is done
// here: a collection of one costs no change of threads.
void TriangulateAll(FaceCollector& collector, WorkerPool& pool, Chunks& chunks) {
  try {
    for (FaceChunk& chunk : chunks) {
      if (&chunk == &chunks.back()) break;
      pool.Enqueue([&collector, &chunk] { Triangulate(collector, chunk); });
    }
    Triangulate(collector, chunks.back());
  } catch (...) {
    try {
      pool.WaitIdle();
    } catch (...) {  // the first error is the one that is told
    }
    throw;
  }
  if (chunks.size() > 1) pool.WaitIdle();
}

// Appends a chunk's mesh, with the faces that have none yet made in their places.
void Merge(FaceCollector& collector, const FaceChunk& chunk, MeshBuffer& buffer) {
  std::size_t vertex = 0;
  std::size_t word = 0;
  std::size_t vertices = 0;
  std::size_t words = 0;
  const auto flush = [&] {
    AppendPart(chunk.mesh, vertex, vertices, word, words, buffer);
    vertex += vertices;
    word += words;
    vertices = words = 0;
  };
  for (const FaceWork& work : chunk.faces) {
    if (work.done) {
      vertices += work.vertices;
      words += work.triangleWords;
      continue;
    }
    flush();
    ExportFaceSerial(collector, work.su_face, chunk.ContextOf(work), buffer);
  }
  flush();
}

}  // namespace

void ExportFacesParallel(FaceCollector& collector, WorkerPool& pool, const FaceSource& source,
                         MeshBuffer& buffer) {
  Chunks chunks = Gather(collector, source);
  if (chunks.empty()) return;
  TriangulateAll(collector, pool, chunks);
  while (!chunks.empty()) {
    Merge(collector, chunks.front(), buffer);
    chunks.pop_front();
  }
}

}  // namespace quellix
