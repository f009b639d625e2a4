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
