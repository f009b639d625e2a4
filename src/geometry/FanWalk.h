#pragma once

#include <cstddef>
#include <cstdint>

#include <boost/container/small_vector.hpp>

#include "geometry/FaceCollector.h"

namespace quellix {

// A face of a fan with its first corner at the fan's vertex; a vertex that the face has at more
// corners counts with the angle of the first.
struct FanFace {
  static constexpr std::size_t kNoCorner = static_cast<std::size_t>(-1);
  const FaceData* data;
  std::size_t corner;

  // The face's angle at the vertex as the weight of its normal: rounded to 2^-32, far below what a
  // normal shows. Libraries differ in an angle's last bits, and where normals cancel each other
  // nothing but those would be left: one model is to give one mesh on every system.
  double Weight() const {
    constexpr double kRounder = 0x1.8p20;
    return corner == kNoCorner ? 0.0 : (data->AngleAt(corner) + kRounder) - kRounder;
  }
};

// The same faces as WalkFan gives, without a list of those met, where each has one corner at the
// vertex and each smooth edge there has two of them, or only the one it is met from: nearly
// everywhere. The first face has its
// corner at the vertex. They come as they lie around the vertex: from the first one over the edge
// that leaves its corner, then over the other one. `visit(fanFace)` returns false to stop. False
// when the walk was stopped or the faces do not lie like that; some were visited then.
template <class Visit>
bool TurnAround(FaceCollector& collector, std::uint32_t face, std::size_t corner, Visit&& visit) {
  const FaceData& first = collector.Face(face);
  if (first.HasRepeatedVertices() || !visit(FanFace{&first, corner})) return false;
  const SUVertexRef su_vertex = first.Vertices()[corner];
  const std::uint32_t ways[] = {first.Edges()[corner],
                                first.Edges()[first.LoopOf(corner).Previous(corner)]};
  for (const std::uint32_t way : ways) {
    std::uint32_t at = face;
    for (std::uint32_t edge = way;;) {
      const std::span<const std::uint32_t> beside = collector.FacesAt(edge);
      if (beside.empty() || (beside.size() == 1 && beside[0] == at)) break;
      if (beside.size() != 2 || (beside[0] == at) == (beside[1] == at)) return false;
      const std::uint32_t next = beside[0] == at ? beside[1] : beside[0];
      // The first face may also be at an edge that none of its loops has, as that of an inner loop
      // which could not be read: it has not been turned around then.
      if (next == face) return edge == (way == ways[0] ? ways[1] : ways[0]);
      const FaceData& data = collector.ReadFace(next);
      if (!data.Valid()) break;
      if (data.HasRepeatedVertices()) return false;
      FanFace fanFace{&data, FanFace::kNoCorner};
      data.ForEachCornerAt(su_vertex, [&](std::size_t found) { fanFace.corner = found; });
      if (fanFace.corner == FanFace::kNoCorner || !visit(fanFace)) return false;
      const std::uint32_t before =
          data.Edges()[data.LoopOf(fanFace.corner).Previous(fanFace.corner)];
      const std::uint32_t after = data.Edges()[fanFace.corner];
      if (before != edge && after != edge) return false;
      edge = before == edge ? after : before;
      at = next;
    }
  }
  return true;
}

// Walks the faces around a vertex that smooth edges at the vertex chain together, from `face` on.
// `isNew(face)` tells a face not met before and remembers it; `visit(fanFace)` gets each valid face
// and returns false to stop the walk. False when the walk was stopped.
template <class IsNew, class Visit>
bool WalkFan(FaceCollector& collector, std::uint32_t face, SUVertexRef su_vertex, IsNew&& isNew,
             Visit&& visit) {
  boost::container::small_vector<std::uint32_t, 64> stack;
  isNew(face);
  stack.push_back(face);
  while (!stack.empty()) {
    const FaceData& data = collector.ReadFace(stack.back());
    stack.pop_back();
    if (!data.Valid()) continue;
    const auto follow = [&](std::uint32_t edge) {
      for (const std::uint32_t neighbour : collector.FacesAt(edge)) {
        if (isNew(neighbour)) stack.push_back(neighbour);
      }
    };
    const std::span<const std::uint32_t> edges = data.Edges();
    FanFace fanFace{&data, FanFace::kNoCorner};
    data.ForEachCornerAt(su_vertex, [&](std::size_t corner) {
      if (fanFace.corner == FanFace::kNoCorner) fanFace.corner = corner;
      follow(edges[data.LoopOf(corner).Previous(corner)]);
      follow(edges[corner]);
    });
    if (!visit(fanFace)) return false;
  }
  return true;
}

}  // namespace quellix
