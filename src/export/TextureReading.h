#pragma once

#include <SketchUpAPI/sketchup.h>

#include "export/RawTextureData.h"

// Fetching of pixels from the host. Each reader resets the block, holds the image gate while it
// runs and returns whether the block is valid. Material worker's or host thread.

namespace quellix {

// The texture's image. Plain and channel reads are valid even when the host has no pixels for them;
// a colorized read is not.
bool ReadTexturePixels(SUTextureRef su_texture, TextureMode mode, RawTextureData& block);

// The picture of an image entity.
bool ReadImagePixels(SUImageRef su_image, RawTextureData& block);

// A distorted texture as it is seen on its face: the texture writer bakes it into a temporary file,
// which exists during this call only. `su_texture` tells whether alpha counts; it may be null.
bool ReadTextureViaWriter(SUTextureWriterRef su_writer, long textureId, SUTextureRef su_texture,
                          RawTextureData& block);

}  // namespace quellix
