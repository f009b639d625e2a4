#pragma once

#include <cstdint>
#include <map>

#include <SketchUpAPI/sketchup.h>

#include "export/InheritanceManager.h"
#include "export/SceneIndex.h"
#include "geometry/MeshBuffer.h"

namespace quellix {

// Appends every visible image of the collection to the mesh, as one textured quad of the size that
// the host reports, placed by the manager's transform and the image's own. Images without a
// renderer index, without size or with a degenerate transform add nothing. `atRoot` says that the
// collection is the model's own. Geometry worker's thread.
void ExportImages(SUEntitiesRef su_entities, bool atRoot, const SceneIndex& scene,
                  InheritanceManager& manager, MeshBuffer& mesh);

}  // namespace quellix
