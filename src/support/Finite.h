#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

// Models may hold coordinates and attributes that are no numbers, or none that fit into single
// precision; the renderer is sent neither.

namespace quellix {

// Whether every value is finite. Without their signs, floats are ordered as their bits are, and
// what is not finite comes last: the largest tells.
inline bool AllFinite(const float* values, std::size_t count) {
  constexpr std::uint32_t kNoSign = 0x7fffffff;
  constexpr std::uint32_t kInfinity = 0x7f800000;
  std::uint32_t largest = 0;
  for (std::size_t i = 0; i < count; ++i) {
    largest = std::max(largest, std::bit_cast<std::uint32_t>(values[i]) & kNoSign);
  }
  return largest < kInfinity;
}

// The value in single precision, or the fallback when it has none.
inline float FiniteFloat(double value, float fallback) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  return std::abs(value) <= kLargest ? static_cast<float>(value) : fallback;
}

}  // namespace quellix
