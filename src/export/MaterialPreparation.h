#pragma once

#include <cstdint>

#include <SketchUpAPI/sketchup.h>

#include "export/MaterialEntry.h"
#include "export/MaterialSendJob.h"

// Filling of material records from the host and from the parameters that the plug-in keeps on
// materials. A host call that fails leaves its field at its default. Material worker's thread.

namespace quellix {

// The two kinds of material. `materialId`: the low half of the persistent id, as the caller has
// read it to find out whether the record must be sent. A texture that the scan has fetched is taken
// out of the entry. Always true.
bool PrepareClassicMaterial(const MaterialEntry& entry, std::uint32_t materialId,
                            MaterialSendJob& job);
bool PreparePbrMaterial(const MaterialEntry& entry, std::uint32_t materialId, MaterialSendJob& job);

// The material of an image entity; false when its pixels cannot be read, and there is nothing to
// send then.
bool PrepareImageMaterial(const MaterialEntry& entry, MaterialSendJob& job);

// True when the host shades the material by metalness and roughness.
bool IsPbrMaterial(SUMaterialRef su_material);

// The emission that a material's parameters give; 0 without any.
float ReadLightPower(SUAttributeDictionaryRef su_dictionary);

}  // namespace quellix
