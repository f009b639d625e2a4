#pragma once

#include <cstdint>
#include <memory>

#include <SketchUpAPI/sketchup.h>

#include "export/RawTextureData.h"

namespace quellix {

// One thing that becomes a renderer material: a material seen with one texture id, or an image.
struct MaterialEntry {
  bool isImage = false;
  SUMaterialRef material = SU_INVALID;
  SUImageRef image = SU_INVALID;
  std::uint32_t imageKey = 0;
  std::int32_t textureId = 0;
  std::uint32_t index = 0;
  // A distorted texture's pixels, fetched by the scan; empty otherwise.
  std::shared_ptr<RawTextureData> prefetched;
  std::uint64_t picture = 0;  // tells those pixels from others; 0 without them
};

}  // namespace quellix
