// Figures about what is in a model. All are computed on each call and may run on several threads.
#pragma once

#include <vector>

#include "model/Components.h"
#include "model/Geometry.h"

namespace modelhost {

Box boxOf(const Entities& entities);
// In the coordinates of the entities that hold the element; of a definition, its own.
Box boxOf(const DrawingElement& element);
// Whether the faces close a solid at every level: each edge has exactly two of them.
bool isManifold(const Definition& definition);
// Outer outline less holes and openings.
double areaOf(const Face& face, const SUTransformation* transform);
// Outlines of a face: the loops, then the openings.
std::vector<std::vector<SUPoint3D>> outlinesOf(const Face& face);

}  // namespace modelhost
