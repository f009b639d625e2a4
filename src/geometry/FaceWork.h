#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "geometry/FaceCollector.h"
#include "geometry/FaceContext.h"
#include "geometry/HostMesh.h"
#include "geometry/MeshBuffer.h"
#include "geometry/Tessellation.h"

// Faces as work for a pool: a walk writes down what each face needs, in chunks; whoever takes a
// chunk makes one piece of mesh of it.

namespace quellix {

// Takes one face with what it inherits. The context is the callee's only during the call.
using FaceSink = std::function<void(SUFaceRef su_face, const FaceContext& context)>;
// Calls the sink for every face of one entities collection that is to be exported, in order.
using FaceSource = std::function<void(const FaceSink& sink)>;

// One face.
struct FaceWork {
  static constexpr std::uint32_t kNone = 0xffffffffu;

  SUFaceRef su_face = SU_INVALID;
  // Index in the chunk's contexts.
  std::uint32_t context = 0;
  // Its index in the collector once it is collected; kNone also for a face that is not valid.
  std::uint32_t face = FaceCollector::kNone;

  // Helpers for its texture coordinates, while they can still be asked.
  UvHelpers uvHelpers;
  // Where the coordinates of each textured side start in the chunk's list: one for each of the
  // face's points.
  std::uint32_t frontUv = kNone;
  std::uint32_t backUv = kNone;

  // What it has added to the chunk's mesh. Not done: nothing, since its triangulation failed.
  bool done = false;
  std::uint32_t vertices = 0;
  std::uint32_t triangleWords = 0;
};

// Consecutive faces of one collection, and the mesh made of them: the faces that are done, one
// after the other. Indexes count from the chunk's first vertex.
struct FaceChunk {
  static constexpr std::size_t kFaces = 64;

  // Adds a face; a context equal to that of the face before is kept once.
  FaceWork& Add(SUFaceRef su_face, const FaceContext& context);
  // Gives back all but the mesh.
  void DropFaces();
  const FaceContext& ContextOf(const FaceWork& work) const { return contexts[work.context]; }

  std::uint32_t scope = 0;  // the collector's, of all these faces
  std::vector<FaceWork> faces;
  std::vector<FaceContext> contexts;
  UvList uv;
  MeshBuffer mesh;
};

// Makes room in the chunk's mesh for the own triangulation of all its faces, which are collected.
// Reads the collector.
void ReserveOwnMesh(const FaceCollector& collector, FaceChunk& chunk);

// Asks UV helpers for the coordinates of a collected face's points and keeps them in the chunk.
void EvaluateUv(const UvHelpers& uvHelpers, std::span<const Point> points, FaceWork& work,
                FaceChunk& chunk);

// Adds the own triangulation of a collected face to its chunk's mesh; leaves it not done when there
// is none. No host calls where the face's smoothing group is collected.
void BuildOwnMesh(FaceCollector& collector, FaceWork& work, FaceChunk& chunk);

// The same with the triangulation of the host's mesh helper, and texture coordinates at its points.
void BuildHelperMesh(FaceWork& work, FaceChunk& chunk);

// Appends a part of one mesh to another: `vertices` and `words` of triangles from the given places
// on, whose indexes count from the part's mesh's start.
void AppendPart(const MeshBuffer& part, std::size_t firstVertex, std::size_t vertices,
                std::size_t firstWord, std::size_t words, MeshBuffer& mesh);

}  // namespace quellix
