#pragma once

#include <vector>

#include "export/MaterialEntry.h"
#include "export/SkpImporter.h"

namespace quellix {

// Prepares and sends every listed material and image that the renderer does not hold, then sends
// the references to those that it does. Preparation, which calls the host, stays on this thread, in
// the list's order; conversion and sending go to a pool unless the material pipeline is off. The
// body of the material worker. True when it returns; throws what a pool task threw.
bool ExportMaterials(SkpImporter& importer, const std::vector<MaterialEntry>& entries);

// The most material records that were alive at once since the last reset of the figure.
int PeakMaterialRecords();
void ResetPeakMaterialRecords();

}  // namespace quellix
