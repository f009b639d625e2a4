#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>
#include <SketchUpAPI/sketchup.h>

#include "geometry/BlockList.h"
#include "geometry/FaceData.h"
#include "geometry/HandleIndex.h"
#include "geometry/SharedArena.h"
#include "geometry/SmoothFans.h"

namespace quellix {

// Everything that one export has read of faces and edges, so that each is read from the host once
// however often it is met. Faces and edges have indexes here; an index is good until Clear.
//
// Handles are looked up among those of one scope: an entities collection, whose faces and edges no
// other collection has. So a look-up touches what the faces before have touched, however large the
// model is.
//
// Any number of threads may collect and read at once, where the host bears that, except in Clear,
// CollectSmoothingGroup and CollectFans; one of them, which walks the model, enters scopes. Whoever
// meets a face or an edge first reads it, without a lock; others that need it wait until that is
// done. What was read stays as it is and where it is.
class FaceCollector {
 public:
  static constexpr std::uint32_t kNone = 0xffffffffu;

  FaceCollector() { Clear(); }
  FaceCollector(const FaceCollector&) = delete;
  FaceCollector& operator=(const FaceCollector&) = delete;

  void Clear();

  // From here on, faces that are given without a scope belong to the collection, which has so many.
  // Gives its scope, the same each time. At first there is a scope of no collection, 0.
  std::uint32_t EnterScope(SUEntitiesRef su_entities, std::size_t faceCount);
  std::uint32_t Scope() const { return scope; }

  // Reads a face, its loops, openings and the smooth flags of its edges, unless that was done. The
  // result stays at its place until Clear; it may be not valid: a plane without direction or an
  // outer loop that cannot be read.
  const FaceData& CollectFaceData(SUFaceRef su_face);

  // Reads a face, unless that was done or another thread is about it; gives its index. Once
  // ReadFace has found it valid it can be tessellated: faces around its vertices are read where
  // they are needed.
  std::uint32_t CollectFace(SUFaceRef su_face, std::uint32_t faceScope = 0);

  // Reads what the normals of these faces, which are read, need of their neighbours: afterwards
  // they can be tessellated without host calls. One thread at a time, while others tessellate.
  void CollectFans(std::span<const std::uint32_t> collected);

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
    const FaceData& data = faces[face];
    if (!data.IsRead() && !Collect(face)) Await(data);
    return data;
  }

  // Of an edge of a face that is read; another thread may still be reading the edge itself, and is
  // waited for. Only the smooth flag counts, not the soft one.
  bool IsSmoothEdge(std::uint32_t edge) const { return (StateOf(edges[edge]) & kSmooth) != 0; }
  // The faces at such an edge in the host's order, when it is smooth; none otherwise.
  std::span<const std::uint32_t> FacesAt(std::uint32_t edge) const {
    const EdgeData& data = edges[edge];
    const std::size_t count = StateOf(data) >> kCountShift;
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

  // The faces and edges of one collection.
  struct Tables {
    HandleIndex faces;
    HandleIndex edges;
  };

  std::uint32_t FaceIndex(SUFaceRef su_face, std::uint32_t faceScope);
  bool Collect(std::uint32_t face);
  static void Await(const FaceData& face);
  void CollectUnread(std::uint32_t face);
  void ReadFan(std::uint32_t face, SUVertexRef su_vertex);
  static std::uint32_t StateOf(const EdgeData& edge) {
    const std::uint32_t state = edge.state.load(std::memory_order_acquire);
    return state != kReading ? state : StateOfAwaited(edge);
  }
  static std::uint32_t StateOfAwaited(const EdgeData& edge);
  void ListEdges(HandleIndex& index, Scratch& scratch);
  void ReadEdges(std::uint32_t face, Scratch& scratch);
  void ClaimEdges(const HandleIndex& faceIndex, Scratch& scratch);
  void ReadEdge(SUEdgeRef su_edge, const HandleIndex& faceIndex, Scratch& scratch);
  void ListFaces(std::uint32_t face, Scratch& scratch);

  BlockList<Tables> scopes;
  boost::unordered_flat_map<std::uint64_t, std::uint32_t, HandleHash> scopeOf;
  std::uint32_t scope = 0;
  BlockList<FaceData> faces;
  BlockList<EdgeData> edges;
  SharedArena memory;

  SmoothFans fans;
  std::vector<std::uint32_t> walkScratch;
  // Of CollectFans: the faces all of whose fans it is about to read, and the edges of very many
  // faces that it has been to.
  std::vector<std::uint32_t> fanFaces;
  boost::unordered_flat_set<std::uint32_t> largeEdges;
};

}  // namespace quellix
