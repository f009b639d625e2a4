#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

// Models may hold coordinates and attributes that are no numbers, or none that fit into single
// precision; the renderer is sent neither.

namespace quellix {

// Whether every value is finite; tests the exponent bits, so that the loop vectorises.
inline bool AllFinite(const float* values, std::size_t count) {
  constexpr std::uint32_t kExponent = 0x7f800000;
  std::uint32_t found = 0;
  for (std::size_t i = 0; i < count; ++i) {
    found |= (std::bit_cast<std::uint32_t>(values[i]) & kExponent) == kExponent ? 1u : 0u;
  }
  return found == 0;
}

// The value in single precision, or the fallback when it has none.
inline float FiniteFloat(double value, float fallback) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  return std::abs(value) <= kLargest ? static_cast<float>(value) : fallback;
}

}  // namespace quellix
