#pragma once

#include <cstdint>
#include <memory>

namespace quellix {

// Bytes for converted pixels, not initialised. A buffer that is let go stays with its thread for
// the next one of about its size: a fresh block of tens of megabytes costs more to fault in than
// pixels cost to convert. What a thread keeps is freed when it ends.
class PixelBuffer {
 public:
  PixelBuffer() = default;
  explicit PixelBuffer(std::uint64_t size);
  ~PixelBuffer();
  PixelBuffer(PixelBuffer&& other) noexcept;
  PixelBuffer& operator=(PixelBuffer&& other) noexcept;

  std::uint8_t* Data() const { return block.get(); }

 private:
  void Return();

  std::unique_ptr<std::uint8_t[]> block;
  std::uint64_t capacity = 0;
};

}  // namespace quellix
