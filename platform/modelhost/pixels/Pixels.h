// Pictures in memory.
#pragma once

#include <SketchUpAPI/color.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace modelhost {

// Rows from the bottom up, packed. 8 bits: grey. 24: blue, green, red. 32: those and alpha.
struct Pixels {
  std::size_t width = 0;
  std::size_t height = 0;
  std::size_t bitsPerPixel = 32;
  std::vector<std::uint8_t> bytes;

  std::size_t bytesPerPixel() const { return bitsPerPixel / 8; }
  const std::uint8_t* at(std::size_t x, std::size_t y) const {
    return bytes.data() + (y * width + x) * bytesPerPixel();
  }
  SUColor color(std::size_t x, std::size_t y) const;
};

// No picture may be larger: sizes are then safe to multiply.
constexpr std::size_t kMaxSide = 32768;

Pixels blankPixels(std::size_t width, std::size_t height, std::size_t bitsPerPixel);
Pixels to32Bits(const Pixels& source);
// By the nearest pixel.
Pixels resized(const Pixels& source, std::size_t width, std::size_t height);
SUColor meanColor(const Pixels& pixels);
// Between the four nearest pixels, the picture repeated without end; (0, 0) is its lower left
// corner and (1, 1) the upper right one.
SUColor sampleRepeated(const Pixels& pixels, double u, double v);

// PNG, JPEG, BMP, TGA and GIF. None when the file cannot be read as a picture.
std::optional<Pixels> readPicture(const std::string& path);
std::optional<Pixels> decodePicture(std::span<const std::uint8_t> file);
bool writePng(const Pixels& pixels, const std::string& path);

}  // namespace modelhost
