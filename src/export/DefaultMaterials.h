#pragma once

#include "export/SkpImporter.h"

namespace quellix {

// Makes sure that the renderer has the two materials of faces without any, front first: referenced
// when it holds them, sent with the host's face colours when not. Host thread, before the workers.
void EnsureDefaultMaterials(SkpImporter& importer);

}  // namespace quellix
