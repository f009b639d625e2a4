#pragma once

#include <cstdint>

#include <SketchUpAPI/sketchup.h>

#include "geometry/Tessellation.h"

// A dump for developers that compares the own tessellation with the host's mesh helper, face by
// face. On when QUELLIX_TESS_VALIDATE names a file, to which lines are appended; a file that cannot
// be opened is skipped. For the thread that walks the model alone.

namespace quellix {

struct ValidationCounters {
  std::int64_t faces = 0;
  std::int64_t triMismatch = 0;
  std::int64_t vertMismatch = 0;
  std::int64_t areaMismatch = 0;
  double maxRel = 0.0;  // largest relative difference of areas
  std::int64_t normalUnmatched = 0;
  double maxNormalDeg = 0.0;
};

bool TessValidationEnabled();

// Counts since the last reset.
const ValidationCounters& ValidationTotals();
void ResetValidation();

// Compares both meshes of a face, in the face's own coordinates, and appends a line when counts,
// areas or normals differ.
void ValidateTessellation(SUFaceRef su_face, const TessMesh& own, const TessMesh& host);

// Appends the summary of the export.
void WriteValidationSummary(bool reload);

}  // namespace quellix
