#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>
#include <SketchUpAPI/sketchup.h>
#include <glm/glm.hpp>

#include "geometry/HandleKey.h"

namespace quellix {

class FaceCollector;

// The faces around a vertex with very many of them, kept once per vertex. Each of those faces asks
// for its normal there; walking all of them for every one would take time quadratic in their
// number. Any thread, for faces of a smoothing group that it knows to be collected.
class SmoothFans {
 public:
  // The angle-weighted sum, at `su_vertex`, of the normals of all faces that chains of smooth
  // edges at the vertex lead to from `face`, each turned to the side of that face's own normal.
  // Terms are added in an order that depends on their values alone, so that the sum does not
  // depend on which face asks first.
  glm::dvec3 WeightedSum(FaceCollector& collector, std::uint32_t face, SUVertexRef su_vertex);

  void Clear();

 private:
  struct Term {
    glm::dvec3 weighted;
    glm::dvec3 normal;
  };
  struct Fan {
    std::vector<std::uint32_t> faces;  // ascending
    std::vector<Term> terms;
  };

  const Fan& FanOf(FaceCollector& collector, std::uint32_t face, SUVertexRef su_vertex);
  static std::unique_ptr<Fan> Build(FaceCollector& collector, std::uint32_t face,
                                    SUVertexRef su_vertex);

  std::mutex mutex;
  boost::unordered_flat_map<std::uint64_t, std::vector<std::unique_ptr<Fan>>, HandleHash> fans;
};

}  // namespace quellix
