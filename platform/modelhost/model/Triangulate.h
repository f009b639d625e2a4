// Cuts flat faces into triangles.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "model/Geometry.h"

namespace modelhost {

struct Triangulation {
  // The points of all outlines in order, then points where outlines cross.
  std::vector<SUPoint3D> points;
  // Counter-clockwise about the normal.
  std::vector<std::array<std::size_t, 3>> triangles;
};

// Fills what an odd number of outlines enclose; so the direction of holes does not matter.
Triangulation triangulate(std::span<const std::vector<SUPoint3D>> outlines,
                          const SUVector3D& normal);

}  // namespace modelhost
