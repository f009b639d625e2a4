#pragma once

#include <cstdint>
#include <vector>

namespace quellix {

// How the pixels of a texture are read.
enum class TextureMode : std::uint32_t {
  Plain = 0,      // its own image
  Colorized = 1,  // its image as the material's colour shift shows it
  Channel = 2,    // its own image, always widened to 32 bits a pixel
};

// The pixels of one texture as the host gave them: rows packed, channels in the host's order.
struct RawTextureData {
  bool valid = false;
  TextureMode mode = TextureMode::Plain;
  bool useAlpha = false;
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  std::uint64_t bitsPerPixel = 0;  // 24 or 32
  std::vector<std::uint8_t> pixels;
  // Of a colorized image whose alpha counts: the plain image, whose alpha it is.
  std::vector<std::uint8_t> alphaSource;
};

}  // namespace quellix
