#include "geometry/FaceData.h"

#include <cmath>
#include <new>
#include <numeric>

namespace quellix {

namespace {

// Below this a length counts as none.
constexpr double kNoLength = 1e-30;

// Constructs `count` values at `place` and moves it behind them.
template <class T>
T* Carve(std::byte*& place, std::size_t count) {
  T* values = reinterpret_cast<T*>(place);
  std::uninitialized_default_construct_n(values, count);
  place += count * sizeof(T);
  return std::launder(values);
}

}  // namespace

bool ReadLoop(SULoopRef su_loop, LoopData& loop) {
  std::size_t count = 0;
  if (SULoopGetNumVertices(su_loop, &count) != SU_ERROR_NONE || count < 3) return false;
  loop.vertices.assign(count, SUVertexRef SU_INVALID);
  loop.edges.assign(count, SUEdgeRef SU_INVALID);
  std::size_t got = 0;
  if (SULoopGetVertices(su_loop, count, loop.vertices.data(), &got) != SU_ERROR_NONE ||
      got != count) {
    return false;
  }
  if (SULoopGetEdges(su_loop, count, loop.edges.data(), &got) != SU_ERROR_NONE || got != count) {
    return false;
  }
  loop.positions.clear();
  for (const SUVertexRef su_vertex : loop.vertices) {
    SUPoint3D su_point = {};
    SUVertexGetPosition(su_vertex, &su_point);
    loop.positions.emplace_back(su_point.x, su_point.y, su_point.z);
  }
  return true;
}

std::size_t FaceData::BlockBytes(std::size_t corners, std::size_t loops) {
  const std::size_t perCorner =
      sizeof(Point) + sizeof(SUVertexRef) + sizeof(std::uint32_t) * (HasOrder(corners) ? 2 : 1);
  return corners * perCorner + loops * sizeof(std::uint32_t);
}

void FaceData::Pack(std::span<const LoopData> loops, std::span<const std::uint32_t> edges,
                    std::byte* block) {
  loopCount = static_cast<std::uint32_t>(loops.size()) & 0x3fffffffu;
  cornerCount = static_cast<std::uint32_t>(edges.size());
  const std::size_t n = cornerCount;
  std::byte* place = block;
  positions = Carve<Point>(place, n);
  SUVertexRef* su_vertices = Carve<SUVertexRef>(place, n);
  std::uint32_t* edgeIndexes = Carve<std::uint32_t>(place, n);
  std::uint32_t* ends = Carve<std::uint32_t>(place, loops.size());

  Point* nextPosition = positions;
  std::uint32_t end = 0;
  for (const LoopData& loop : loops) {
    nextPosition = std::copy(loop.positions.begin(), loop.positions.end(), nextPosition);
    su_vertices = std::copy(loop.vertices.begin(), loop.vertices.end(), su_vertices);
    end += static_cast<std::uint32_t>(loop.positions.size());
    *ends++ = end;
  }
  std::copy(edges.begin(), edges.end(), edgeIndexes);

  if (HasOrder(n)) {
    std::uint32_t* order = Carve<std::uint32_t>(place, n);
    std::iota(order, order + n, 0u);
    const std::span<const SUVertexRef> su_all = Vertices();
    std::stable_sort(order, order + n, [&](std::uint32_t a, std::uint32_t b) {
      return std::less<const void*>{}(su_all[a].ptr, su_all[b].ptr);
    });
  }
  repeated = FindRepeats();
}

bool FaceData::FindRepeats() const {
  const std::span<const SUVertexRef> su_vertices = Vertices();
  const auto same = [](SUVertexRef a, SUVertexRef b) { return SUAreEqual(a, b); };
  if (HasOrder(cornerCount)) {
    const std::span<const std::uint32_t> order = CornersByVertex();
    return std::adjacent_find(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
             return same(su_vertices[a], su_vertices[b]);
           }) != order.end();
  }
  for (std::size_t i = 1; i < su_vertices.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (same(su_vertices[i], su_vertices[j])) return true;
    }
  }
  return false;
}

double FaceData::AngleAt(std::size_t corner) const {
  const LoopRange loop = LoopOf(corner);
  const Point a = positions[loop.Previous(corner)] - positions[corner];
  const Point b = positions[loop.Next(corner)] - positions[corner];
  const double lengthA = glm::length(a);
  const double lengthB = glm::length(b);
  if (!(lengthA > kNoLength && lengthB > kNoLength)) return 0.0;
  return std::acos(std::clamp(glm::dot(a, b) / (lengthA * lengthB), -1.0, 1.0));
}

FaceData::LoopRange FaceData::Loop(std::size_t loop) const {
  const std::uint32_t* ends = LoopEnds();
  return {loop == 0 ? 0 : ends[loop - 1], ends[loop]};
}

FaceData::LoopRange FaceData::LoopOfMany(std::size_t corner) const {
  const std::uint32_t* ends = LoopEnds();
  const std::uint32_t* end = std::upper_bound(ends, ends + loopCount, corner);
  return {end == ends ? 0 : *(end - 1), *end};
}

std::span<const std::uint32_t> FaceData::CornersByVertex() const {
  return {LoopEnds() + loopCount, cornerCount};
}

const std::vector<std::vector<Point>>& FaceData::Openings() const {
  static const std::vector<std::vector<Point>> none;
  return openings ? *openings : none;
}

}  // namespace quellix
