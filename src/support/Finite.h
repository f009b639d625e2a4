#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

// Models may hold coordinates and attributes that are no numbers, or none that fit into single
// precision; the renderer is sent neither.

namespace quellix {

// Whether every value is finite. One added to the exponent of what is not reaches the sign's bit,
// which is taken away before; two values go into a word, since neither overflows.
inline bool AllFinite(const float* values, std::size_t count) {
  constexpr std::uint64_t kNoSigns = 0x7fffffff7fffffff;
  constexpr std::uint64_t kOnes = 0x0080000000800000;
  std::uint64_t reached = 0;
  const auto add = [&reached](std::uint64_t pair) { reached |= (pair & kNoSigns) + kOnes; };
  std::size_t i = 0;
  for (; i + 1 < count; i += 2) {
    std::uint64_t pair;
    std::memcpy(&pair, values + i, sizeof pair);
    add(pair);
  }
  if (i < count) add(std::bit_cast<std::uint32_t>(values[i]));
  return (reached & ~kNoSigns) == 0;
}

// The value in single precision, or the fallback when it has none.
inline float FiniteFloat(double value, float fallback) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  return std::abs(value) <= kLargest ? static_cast<float>(value) : fallback;
}

}  // namespace quellix
