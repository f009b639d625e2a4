#pragma once

#include <cstdint>

#include "export/PixelBuffer.h"
#include "export/RawTextureData.h"

// Conversion of pixels into what a material command carries: 4 bytes a pixel, rows packed. No host
// call; any thread.

namespace quellix {

// The longer side of a texture that is sent, in pixels, unless downscaling is switched off.
inline constexpr std::uint64_t kMaxTextureSide = 4096;

struct ConvertedTexture {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  std::uint64_t stride = 0;  // bytes of a row: 4 x width
  std::uint64_t size = 0;    // bytes: 4 x width x height
  // The pixels: the block's own where nothing was to be changed, so the block must outlive this.
  // Null when there are none.
  const std::uint8_t* bytes = nullptr;
  PixelBuffer storage;
};

// A block that is not valid gives an empty texture. `exchangeRedAndBlue` swaps bytes 0 and 2 of
// every pixel.
ConvertedTexture ConvertTexturePixels(const RawTextureData& block, bool exchangeRedAndBlue);

// Shrinks a texture whose longer side exceeds kMaxTextureSide to it, by bilinear interpolation of
// all four channels; leaves every other as it is.
void DownscaleTexture(ConvertedTexture& texture);

// A normal map of the same size from the slopes of the base texture's brightness, which wraps
// around at its right and lower edge; the bump depth scales the slopes. Empty without pixels.
PixelBuffer MakeNormalMapFromBase(const ConvertedTexture& base, float bumpDepth);

}  // namespace quellix
