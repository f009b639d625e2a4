// Polygons of simple solids, all with their fronts outside.
#pragma once

#include <cstddef>
#include <vector>

#include "import/PolygonMesh.h"

namespace modelhost {

void addBox(PolygonMesh& mesh, const SUPoint3D& low, const SUPoint3D& high);
// The outline, any holes, and walls from them to their copies moved by `by`.
void addExtrusion(PolygonMesh& mesh, const std::vector<std::vector<SUPoint3D>>& outlines,
                  const SUVector3D& by);
// Upright; `top` is the radius at the top, 0 for a cone.
void addCylinder(PolygonMesh& mesh, const SUPoint3D& foot, double radius, double top, double height,
                 std::size_t sides);
void addSphere(PolygonMesh& mesh, const SUPoint3D& center, double radius, std::size_t sides);

}  // namespace modelhost
