#pragma once

#include <cstdint>
#include <map>

#include <SketchUpAPI/sketchup.h>

#include "cw/Handle.h"

namespace quellix {

// Faces under an entities collection, those of each definition once per placement.
using FaceCounts = std::map<SUEntitiesRef, std::uint32_t, CW::HandleLess>;

// The faces of `su_entities` and of everything placed in it, faces on hidden layers included. Every
// collection that is met is counted once and remembered in `counts`. Counts stop at 2^32 - 1. A
// definition that contains itself counts as empty there.
std::uint32_t CountPolygons(SUEntitiesRef su_entities, FaceCounts& counts);

}  // namespace quellix
