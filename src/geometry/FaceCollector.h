#pragma once

#include <cstdint>
#include <memory_resource>
#include <span>
#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "geometry/BlockList.h"
#include "geometry/FaceData.h"
#include "geometry/HandleIndex.h"
#include "geometry/SmoothFans.h"

namespace quellix {

// Everything that one export has read of faces and edges, so that each is read from the host once
// however often it is met. Faces and edges have indexes here, in the order in which they are first
// met; an index is good until Clear.
//
// No locks except in the fan cache: whoever collects excludes everyone else who collects or looks
// handles up. What was collected stays as it is, so a thread that learnt of a collected smoothing
// group may read its faces and edges also while others are collected; all other const operations
// may go on in several threads while nobody collects.
class FaceCollector {
 public:
  static constexpr std::uint32_t kNone = 0xffffffffu;

  FaceCollector() = default;
  FaceCollector(const FaceCollector&) = delete;
  FaceCollector& operator=(const FaceCollector&) = delete;

  void Clear();

  // Makes room for looking up so many faces and the edges that a building's faces have.
  void Reserve(std::uint64_t faceCount);

  // Reads a face, its loops, openings and the smooth flags of its edges, unless that was done. The
  // result stays at its place until Clear; it may be not valid: a plane without direction or an
  // outer loop that cannot be read.
  const FaceData& CollectFaceData(SUFaceRef su_face);

  // Collects the face and all faces that chains of smooth edges lead to: afterwards it can be
  // tessellated. The result is the face's index, kNone when the face itself is not valid. A region
  // is walked once.
  std::uint32_t CollectSmoothingGroup(SUFaceRef su_face);

  // Positions of all loops, then those of the openings: the order of the own tessellation. False,
  // and no points, for a face that is not valid.
  bool GatherFacePoints(std::uint32_t face, std::vector<Point>& points) const;

  // Null for a face that was never collected. It may be not valid.
  const FaceData* FindFaceData(SUFaceRef su_face) const;
  // kNone for a face that was never met.
  std::uint32_t FindFace(SUFaceRef su_face) const;
  const FaceData& Face(std::uint32_t face) const { return faces[face]; }

  // False also for an edge that was not read. Only the smooth flag counts, not the soft one.
  bool IsSmoothEdge(std::uint32_t edge) const { return edges[edge].smooth; }
  // The faces at a smooth edge in the host's order; none for another edge.
  std::span<const std::uint32_t> FacesAt(std::uint32_t edge) const {
    const EdgeData& data = edges[edge];
    return {data.faceCount > 2 ? data.manyFaces : data.faces, data.faceCount};
  }

  SmoothFans& Fans() const { return fans; }

 private:
  // A smooth edge's faces stand here when there are one or two of them, else in the collector's
  // memory.
  struct EdgeData {
    std::uint64_t key = 0;
    std::uint32_t faceCount : 30 = 0;
    std::uint32_t read : 1 = 0;
    std::uint32_t smooth : 1 = 0;
    union {
      std::uint32_t faces[2] = {0, 0};
      const std::uint32_t* manyFaces;
    };
  };

  std::uint32_t FaceIndex(SUFaceRef su_face);
  std::uint32_t EdgeIndex(SUEdgeRef su_edge);
  void Collect(std::uint32_t face);
  bool ReadFace(FaceData& data);
  bool ReadLoops(SUFaceRef su_face);
  void ReadOpenings(FaceData& data);
  void ReadEdges(std::uint32_t face);
  void ReadEdge(EdgeData& edge, SUEdgeRef su_edge, std::uint32_t face);

  HandleIndex faceIndexes;
  HandleIndex edgeIndexes;
  BlockList<FaceData> faces;
  BlockList<EdgeData> edges;
  std::pmr::monotonic_buffer_resource memory;
  mutable SmoothFans fans;

  // Reused from face to face.
  std::vector<LoopData> loopScratch;
  std::size_t loopsRead = 0;
  std::vector<std::uint32_t> edgeScratch;
  std::vector<SUFaceRef> su_faceScratch;
  std::vector<std::uint32_t> walkScratch;
};

}  // namespace quellix
