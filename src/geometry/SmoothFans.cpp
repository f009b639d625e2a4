#include "geometry/SmoothFans.h"

#include <algorithm>
#include <tuple>

#include <boost/unordered/unordered_flat_set.hpp>

#include "geometry/FaceCollector.h"
#include "geometry/FanWalk.h"

namespace quellix {

void SmoothFans::Clear() {
  const std::lock_guard lock(mutex);
  fans.clear();
}

glm::dvec3 SmoothFans::WeightedSum(FaceCollector& collector, std::uint32_t face,
                                   SUVertexRef su_vertex) {
  const glm::dvec3 own = collector.Face(face).Normal();
  glm::dvec3 sum(0.0);
  for (const Term& term : FanOf(collector, face, su_vertex).terms) {
    sum += glm::dot(term.normal, own) < 0.0 ? -term.weighted : term.weighted;
  }
  return sum;
}

// A fan stays at its place once it is built, so it can be read after the lock has gone.
const SmoothFans::Fan& SmoothFans::FanOf(FaceCollector& collector, std::uint32_t face,
                                         SUVertexRef su_vertex) {
  const std::lock_guard lock(mutex);
  std::vector<std::unique_ptr<Fan>>& atVertex = fans[HandleKey(su_vertex)];
  for (const std::unique_ptr<Fan>& fan : atVertex) {
    if (std::binary_search(fan->faces.begin(), fan->faces.end(), face)) return *fan;
  }
  return *atVertex.emplace_back(Build(collector, face, su_vertex));
}

std::unique_ptr<SmoothFans::Fan> SmoothFans::Build(FaceCollector& collector, std::uint32_t face,
                                                   SUVertexRef su_vertex) {
  auto fan = std::make_unique<Fan>();
  boost::unordered_flat_set<std::uint32_t> met;
  WalkFan(
      collector, face, su_vertex,
      [&](std::uint32_t next) {
        const bool isNew = met.insert(next).second;
        if (isNew) fan->faces.push_back(next);
        return isNew;
      },
      [&](const FanFace& fanFace) {
        const glm::dvec3 normal = fanFace.data->Normal();
        fan->terms.push_back({normal * fanFace.Weight(), normal});
        return true;
      });
  std::sort(fan->faces.begin(), fan->faces.end());
  const auto key = [](const Term& term) {
    return std::tie(term.weighted.x, term.weighted.y, term.weighted.z, term.normal.x, term.normal.y,
                    term.normal.z);
  };
  std::sort(fan->terms.begin(), fan->terms.end(),
            [&](const Term& a, const Term& b) { return key(a) < key(b); });
  return fan;
}

}  // namespace quellix
