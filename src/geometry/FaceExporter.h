#pragma once

#include <SketchUpAPI/sketchup.h>

#include "geometry/FaceCollector.h"
#include "geometry/FaceContext.h"
#include "geometry/MeshBuffer.h"

namespace quellix {

// Makes the mesh of one face and appends it to `buffer`, everything on the calling thread: the own
// tessellation when it is on and succeeds, the host's mesh helper otherwise. A face that neither
// can triangulate adds nothing. While a diagnostic dump is on, the dumps are fed from here.
void ExportFaceSerial(FaceCollector& collector, SUFaceRef su_face, const FaceContext& context,
                      MeshBuffer& buffer);

}  // namespace quellix
