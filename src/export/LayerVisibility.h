#pragma once

#include <SketchUpAPI/sketchup.h>

namespace quellix {

// True when the layer and every folder above it are shown. A layer that cannot be read is hidden; a
// folder that cannot be read hides nothing.
bool IsLayerVisible(SULayerRef su_layer);

}  // namespace quellix
