#include "support/Uuid.h"

#include <array>
#include <cstdint>
#include <random>

namespace quellix {

std::string MakeUuidText() {
  thread_local std::mt19937_64 generator{std::random_device{}()};
  std::array<std::uint8_t, 16> bytes;
  for (std::size_t half = 0; half < 2; ++half) {
    const std::uint64_t drawn = generator();
    for (std::size_t i = 0; i < 8; ++i) {
      bytes[half * 8 + i] = static_cast<std::uint8_t>(drawn >> (8 * i));
    }
  }
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);

  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(36);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0x0F];
  }
  return text;
}

}  // namespace quellix
