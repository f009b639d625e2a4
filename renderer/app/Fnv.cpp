#include "app/Fnv.h"

#include <stdexcept>

namespace kvapp {

namespace {

constexpr char kDigits[] = "0123456789abcdef";

int DigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

}  // namespace

std::string DigestText(std::uint64_t digest) {
  std::string text(16, '0');
  for (int i = 15; i >= 0; --i, digest >>= 4)
    text[static_cast<std::size_t>(i)] = kDigits[digest & 15];
  return text;
}

std::string HexText(std::span<const std::byte> bytes) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::byte byte : bytes) {
    text += kDigits[static_cast<unsigned>(byte) >> 4];
    text += kDigits[static_cast<unsigned>(byte) & 15];
  }
  return text;
}

std::string BytesFromHex(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == ' ') {
      ++i;
      continue;
    }
    const int high = DigitValue(text[i]);
    const int low = i + 1 < text.size() ? DigitValue(text[i + 1]) : -1;
    if (high < 0 || low < 0) throw std::invalid_argument("\"" + text + "\" is not hexadecimal");
    bytes += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return bytes;
}

}  // namespace kvapp
