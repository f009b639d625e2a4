#pragma once

#include <SketchUpAPI/sketchup.h>

#include "geometry/Tessellation.h"

// A dump for developers of single faces as the host shows them: one JSON object a line, appended to
// the file that QUELLIX_TESS_PROBE names. A file that cannot be opened drops the line.

namespace quellix {

bool FaceProbeEnabled();

// Appends plane, loops and edges of the face, and the mesh that the host's helper gave. What cannot
// be read is written as zeros, "?" or an empty list.
void ProbeFace(SUFaceRef su_face, const TessMesh& host);

}  // namespace quellix
