#include "export/PixelBuffer.h"

#include <utility>
#include <vector>

#include "support/PerThread.h"

namespace quellix {

namespace {

// The textures of one material are converted together, and there are at most four.
constexpr std::size_t kKept = 4;
// A smaller one is not worth keeping.
constexpr std::uint64_t kWorthKeeping = 1 << 16;

struct Spare {
  std::unique_ptr<std::uint8_t[]> block;
  std::uint64_t capacity;
};

std::vector<Spare>& Spares() {
  static PerThread<std::vector<Spare>> spares;
  return spares.Get();
}

}  // namespace

PixelBuffer::PixelBuffer(std::uint64_t size) {
  std::vector<Spare>& spares = Spares();
  for (Spare& spare : spares) {
    if (spare.capacity < size || spare.capacity / 2 > size) continue;
    block = std::move(spare.block);
    capacity = spare.capacity;
    spare = std::move(spares.back());
    spares.pop_back();
    return;
  }
  block.reset(new std::uint8_t[size]);
  capacity = size;
}

PixelBuffer::~PixelBuffer() {
  Return();
}

PixelBuffer::PixelBuffer(PixelBuffer&& other) noexcept
    : block(std::move(other.block)), capacity(std::exchange(other.capacity, 0)) {}

PixelBuffer& PixelBuffer::operator=(PixelBuffer&& other) noexcept {
  std::swap(block, other.block);
  std::swap(capacity, other.capacity);
  return *this;
}

void PixelBuffer::Return() {
  if (!block || capacity < kWorthKeeping) return;
  std::vector<Spare>& spares = Spares();
  if (spares.size() == kKept) spares.erase(spares.begin());
  spares.push_back({std::move(block), capacity});
}

}  // namespace quellix
