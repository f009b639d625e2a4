#pragma once

#include <cstdint>

#include <SketchUpAPI/sketchup.h>

namespace quellix {

// The texture writer's ids of a face's two sides; 0 for no texture.
struct FaceTextures {
  std::int32_t front = 0;
  std::int32_t back = 0;
};

// Load what an element or a face shows into the export's texture writer, through its gate; 0 when
// that fails. Any thread of an export.
std::int32_t LoadEntityTexture(SUTextureWriterRef su_writer, SUEntityRef su_entity);
FaceTextures LoadFaceTextures(SUTextureWriterRef su_writer, SUFaceRef su_face);

}  // namespace quellix
