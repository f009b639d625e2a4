#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace kvapp {

// 64-bit FNV-1a.
class Fnv {
 public:
  void Add(std::span<const std::byte> bytes) {
    std::uint64_t hash = hash_;
    for (const std::byte byte : bytes) {
      hash = (hash ^ static_cast<std::uint64_t>(byte)) * 0x100000001b3ULL;
    }
    hash_ = hash;
  }
  void Add(const void* data, std::size_t size) {
    Add(std::span(static_cast<const std::byte*>(data), size));
  }
  template <class Value>
  void AddValue(const Value& value) {
    Add(&value, sizeof value);
  }
  // The 64-bit length, then the bytes.
  void AddSized(std::span<const std::byte> bytes) {
    AddValue(static_cast<std::uint64_t>(bytes.size()));
    Add(bytes);
  }
  std::uint64_t Value() const { return hash_; }

 private:
  std::uint64_t hash_ = 0xcbf29ce484222325ULL;
};

// Sixteen lower-case digits.
std::string DigestText(std::uint64_t digest);
// Two lower-case digits a byte.
std::string HexText(std::span<const std::byte> bytes);
// Reads two digits a byte, blanks allowed between bytes; throws std::invalid_argument.
std::string BytesFromHex(const std::string& text);

}  // namespace kvapp
