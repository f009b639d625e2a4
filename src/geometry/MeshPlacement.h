#pragma once

#include <cstdint>

#include <glm/glm.hpp>

namespace quellix {

// Where one mesh goes and under what names the renderer keeps it.
struct MeshPlacement {
  std::uint64_t meshId = 0;
  glm::mat4 transform{1.0f};
  std::uint64_t cacheKey = 0;
  bool manifold = false;
};

}  // namespace quellix
