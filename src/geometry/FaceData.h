#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include <SketchUpAPI/sketchup.h>
#include <glm/glm.hpp>

namespace quellix {

using Point = glm::dvec3;

// One loop as read from the host, index-aligned: edge i leaves vertex i.
struct LoopData {
  std::vector<Point> positions;
  std::vector<SUVertexRef> vertices;
  std::vector<SUEdgeRef> edges;
};

// Reads a loop; false when it has fewer than 3 vertices or a list cannot be read whole. The caller
// holds the face-data gate.
bool ReadLoop(SULoopRef su_loop, LoopData& loop);

// What is kept of one face. The corners of all its loops stand one after the other, the outer
// loop's first, in one block of the collector's memory: this is most of what an export remembers
// per face, so nothing is kept twice and edges are kept as indexes of the collector.
class FaceData {
 public:
  // Corners of one loop: [begin, end) in the lists below.
  struct LoopRange {
    std::size_t begin;
    std::size_t end;
    std::size_t Previous(std::size_t corner) const {
      return corner == begin ? end - 1 : corner - 1;
    }
    std::size_t Next(std::size_t corner) const { return corner + 1 == end ? begin : corner + 1; }
  };

  SUFaceRef Handle() const { return su_face; }
  bool IsRead() const { return state.load(std::memory_order_acquire) == State::Read; }
  // Only a valid face has loops and a normal. For a face that is read.
  bool Valid() const { return valid; }

  // Unit length.
  const Point& Normal() const { return normal; }

  std::size_t LoopCount() const { return loopCount; }
  LoopRange Loop(std::size_t loop) const;
  // The loop that a corner is in.
  LoopRange LoopOf(std::size_t corner) const {
    return loopCount == 1 ? LoopRange{0, cornerCount} : LoopOfMany(corner);
  }

  std::size_t CornerCount() const { return cornerCount; }
  // Whether a vertex occurs at more than one corner.
  bool HasRepeatedVertices() const { return repeated; }
  // In the host's units.
  std::span<const Point> Positions() const { return {positions, cornerCount}; }
  std::span<const SUVertexRef> Vertices() const {
    return {reinterpret_cast<const SUVertexRef*>(positions + cornerCount), cornerCount};
  }
  // The angle between the two loop edges at a corner: radians, 0 to pi, 0 beside an edge without
  // length. Worked out on every call, since few corners are asked and all would be kept.
  double AngleAt(std::size_t corner) const;
  // Index, in the collector, of the edge that leaves each corner.
  std::span<const std::uint32_t> Edges() const {
    return {reinterpret_cast<const std::uint32_t*>(Vertices().data() + cornerCount), cornerCount};
  }

  // Holes cut by what is glued to the face, 3 points or more each.
  const std::vector<std::vector<Point>>& Openings() const;

  // Calls `visit(corner)` for every corner at `su_vertex`, in loop order. A vertex can occur more
  // than once.
  template <class Visit>
  void ForEachCornerAt(SUVertexRef su_vertex, Visit&& visit) const;

 private:
  friend class FaceCollector;

  // Faces with more corners carry a list of their corners ordered by vertex, so that finding a
  // vertex does not take longer the larger the outline is.
  static constexpr std::size_t kSearchedCorners = 32;

  // A face is read at most once in an export, whether that succeeds or not, by whoever finds it
  // unread first. What it has is there for every thread that has seen it read.
  enum class State : std::uint8_t { Unread, Reading, Read };

  // The bytes that corners of so many loops take.
  static std::size_t BlockBytes(std::size_t corners, std::size_t loops);
  // Takes the corners over into a block of that size; `edges` are the collector's indexes.
  void Pack(std::span<const LoopData> loops, std::span<const std::uint32_t> edges,
            std::byte* block);
  bool FindRepeats() const;
  static bool HasOrder(std::size_t corners) { return corners > kSearchedCorners; }
  const std::uint32_t* LoopEnds() const { return Edges().data() + cornerCount; }
  std::span<const std::uint32_t> CornersByVertex() const;
  LoopRange LoopOfMany(std::size_t corner) const;

  SUFaceRef su_face = SU_INVALID;
  Point normal{0.0};
  // The block: positions, vertices, edges, then the loops' ends, then, in a large face, the corners
  // by vertex.
  Point* positions = nullptr;
  std::unique_ptr<std::vector<std::vector<Point>>> openings;
  std::uint32_t cornerCount = 0;
  std::uint32_t loopCount : 30 = 0;
  std::uint32_t repeated : 1 = 0;
  std::uint32_t valid : 1 = 0;
  std::atomic<State> state{State::Unread};
  bool visited = false;     // the collecting thread's
  std::uint32_t scope = 0;  // of the collector, which the face is found in
};

template <class Visit>
void FaceData::ForEachCornerAt(SUVertexRef su_vertex, Visit&& visit) const {
  const std::span<const SUVertexRef> su_vertices = Vertices();
  if (!HasOrder(cornerCount)) {
    for (std::size_t i = 0; i < su_vertices.size(); ++i) {
      if (!SUAreEqual(su_vertices[i], su_vertex)) continue;
      visit(i);
      if (!repeated) return;
    }
    return;
  }
  const std::span<const std::uint32_t> order = CornersByVertex();
  const auto before = [&](std::uint32_t corner, void* vertex) {
    return std::less<const void*>{}(su_vertices[corner].ptr, vertex);
  };
  auto it = std::lower_bound(order.begin(), order.end(), su_vertex.ptr, before);
  for (; it != order.end() && SUAreEqual(su_vertices[*it], su_vertex); ++it) visit(*it);
}

}  // namespace quellix
