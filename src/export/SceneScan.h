#pragma once

#include <cstdint>
#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "export/MaterialEntry.h"
#include "export/SkpImporter.h"

namespace quellix {

// Walks the model once, before the workers start: which materials and images are used and by which
// owners, on which layers owners lie, which owners contain which definition. Gives every material
// and image its renderer index and lists them in `entries`; makes sure that the renderer has the
// two default face materials. Host thread. True when it returns.
bool CollectSceneInfo(SkpImporter& importer, std::vector<MaterialEntry>& entries);

// Builds the children map alone, without an export. Host thread.
void InitChildrenMap(SUModelRef su_model);

}  // namespace quellix
