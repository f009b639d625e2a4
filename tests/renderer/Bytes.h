#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

namespace kvapp::test {

// Spells a message byte by byte. Positions are written as numbers, never taken from the records'
// declarations, so that a record that moved is noticed.
class Bytes {
 public:
  Bytes() = default;
  explicit Bytes(std::size_t size) : data_(size) {}

  Bytes& U8(std::size_t at, unsigned value) { return Put(at, static_cast<std::uint8_t>(value)); }
  Bytes& U32(std::size_t at, std::uint32_t value) { return Put(at, value); }
  Bytes& U64(std::size_t at, std::uint64_t value) { return Put(at, value); }
  Bytes& F32(std::size_t at, std::initializer_list<float> values) {
    for (const float value : values) {
      Put(at, value);
      at += 4;
    }
    return *this;
  }
  // The text and its NUL.
  Bytes& Text(std::size_t at, const std::string& text) {
    Reserve(at + text.size() + 1);
    std::memcpy(data_.data() + at, text.c_str(), text.size() + 1);
    return *this;
  }
  Bytes& Fill(std::size_t at, std::size_t count, unsigned value) {
    Reserve(at + count);
    std::memset(data_.data() + at, static_cast<int>(value), count);
    return *this;
  }
  Bytes& Identity(std::size_t at) {
    return F32(at, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
  }
  Bytes& Resize(std::size_t size) {
    data_.resize(size);
    return *this;
  }

  std::size_t Size() const { return data_.size(); }
  operator std::span<const std::byte>() const { return data_; }

 private:
  template <class Value>
  Bytes& Put(std::size_t at, Value value) {
    Reserve(at + sizeof value);
    std::memcpy(data_.data() + at, &value, sizeof value);
    return *this;
  }
  void Reserve(std::size_t size) {
    if (data_.size() < size) data_.resize(size);
  }

  std::vector<std::byte> data_;
};

// Sound commands, to be used whole or to be broken at one place.
Bytes BareCommand(std::uint32_t id);
Bytes TextCommand(std::uint32_t id, const std::string& text);
Bytes ProgressCommand(float progress);
// 144 bytes, "t", "Brick", "Default" from 144, 2 x 1 pixels from 160.
Bytes ClassicMaterial(std::uint32_t index, std::uint64_t key);
// Without texture, of one colour.
Bytes PlainMaterial(std::uint32_t index, std::uint64_t key, const std::string& name,
                    std::initializer_list<float> color, float opacity = 1);
// 256 bytes, "Steel", "Metallic" from 256, then 1 x 1 pixels for each of the four textures.
Bytes PbrMaterial(std::uint32_t index, std::uint64_t key);
// One triangle, 252 bytes.
Bytes TriangleMesh(std::uint64_t meshId, std::uint64_t cacheKey, std::uint32_t front,
                   std::uint32_t back, float size = 1);
Bytes Instance(std::uint64_t meshId, std::uint64_t cacheKey, float x = 0);
Bytes OwnerBatch(const std::vector<std::uint64_t>& owners);
struct Reference {
  std::uint32_t index;
  float lightPower;
  std::uint64_t key;
};
Bytes CachedMaterials(const std::vector<Reference>& references);
Bytes MoveOwner(std::uint64_t owner, float x);
Bytes OmniLight(float red, float x);
Bytes SpotLight();
Bytes Camera(float eyeX);
Bytes Background(float red);

}  // namespace kvapp::test
