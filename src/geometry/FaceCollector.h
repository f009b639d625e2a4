#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <span>
#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "geometry/BlockList.h"
#include "geometry/FaceData.h"
#include "geometry/HandleIndex.h"
#include "geometry/SmoothFans.h"
#include "support/SpinLock.h"

namespace quellix {

// Everything that one export has read of faces and edges, so that each is read from the host once
// however often it is met. Faces and edges have indexes here, in the order in which they are first
// met; an index is good until Clear.
//
// Any number of threads may collect and read at once, except in Clear, Reserve and
// CollectSmoothingGroup. Whoever meets a face or an edge first reads it, without a lock; others
// that need it wait until that is done. What was read stays as it is and where it is.
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

  // The same; gives the face's index, kNone when it is not valid. It can be tessellated: faces
  // around its vertices are read where they are needed.
  std::uint32_t CollectFace(SUFaceRef su_face);

  // Collects the face and all faces that chains of smooth edges lead to: afterwards it can be
  // tessellated without host calls. The result is the face's index, kNone when the face itself is
  // not valid. A region is walked once.
  std::uint32_t CollectSmoothingGroup(SUFaceRef su_face);

  // Positions of all loops, then those of the openings: the order of the own tessellation. False,
  // and no points, for a face that is not valid.
  bool GatherFacePoints(std::uint32_t face, std::vector<Point>& points) const;

  // Null for a face that was never collected. It may be not valid.
  const FaceData* FindFaceData(SUFaceRef su_face) const;
  // kNone for a face that was never met.
  std::uint32_t FindFace(SUFaceRef su_face) const;
  // For a face that is read.
  const FaceData& Face(std::uint32_t face) const { return faces[face]; }
  // The same for one that may have to be read first.
  const FaceData& ReadFace(std::uint32_t face) {
    Collect(face);
    return faces[face];
  }

  // False also for an edge that was not read. Only the smooth flag counts, not the soft one.
  bool IsSmoothEdge(std::uint32_t edge) const {
    return (edges[edge].state.load(std::memory_order_acquire) & kSmooth) != 0;
  }
  // The faces at a smooth edge in the host's order; none for another edge.
  std::span<const std::uint32_t> FacesAt(std::uint32_t edge) const {
    const EdgeData& data = edges[edge];
    const std::size_t count = data.state.load(std::memory_order_acquire) >> kCountShift;
    return {count > 2 ? data.manyFaces : data.faces, count};
  }

  SmoothFans& Fans() { return fans; }

 private:
  // An edge's state: unread, being read, or read with what the other bits and the number of faces
  // above them say.
  static constexpr std::uint32_t kUnread = 0;
  static constexpr std::uint32_t kReading = 1;
  static constexpr std::uint32_t kRead = 2;
  static constexpr std::uint32_t kSmooth = 4;
  static constexpr unsigned kCountShift = 3;

  // A smooth edge's faces stand here when there are one or two of them, else in the collector's
  // memory.
  struct EdgeData {
    std::uint64_t key = 0;
    std::atomic<std::uint32_t> state{kUnread};
    union {
      std::uint32_t faces[2] = {0, 0};
      const std::uint32_t* manyFaces;
    };
  };
  struct Scratch;

  std::uint32_t Meet(SUFaceRef su_face);
  std::uint32_t FaceIndex(SUFaceRef su_face);
  std::uint32_t EdgeIndex(SUEdgeRef su_edge);
  void Collect(std::uint32_t face);
  void CollectUnread(std::uint32_t face);
  void ListEdges(Scratch& scratch, std::byte*& block);
  void ReadEdges(std::uint32_t face, Scratch& scratch);
  void ReadEdge(SUEdgeRef su_edge, Scratch& scratch);
  void ListFaces(std::uint32_t face, Scratch& scratch);

  mutable SpinLock tables;  // guards the lists' growth, what looks handles up, and the memory
  HandleIndex faceIndexes;
  HandleIndex edgeIndexes;
  BlockList<FaceData> faces;
  BlockList<EdgeData> edges;
  std::pmr::monotonic_buffer_resource memory;

  SmoothFans fans;
  std::vector<std::uint32_t> walkScratch;
};

}  // namespace quellix
