#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kvapp {

// An 8-bit RGBA picture as a PNG file, the top row first; written without alpha when every pixel is
// opaque. Throws std::runtime_error.
std::vector<std::uint8_t> EncodePng(std::uint32_t width, std::uint32_t height,
                                    std::span<const std::uint8_t> rgba);

}  // namespace kvapp
