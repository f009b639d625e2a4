#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <memory>

namespace quellix {

// A list that only grows, in blocks, each twice as large as the one before: its elements stay at
// their places, and growing neither copies them nor touches memory that no element needs yet.
// Elements may be read in several threads while another appends, as long as the reader learnt of
// the element after it was appended.
template <class T>
class BlockList {
 public:
  BlockList() = default;
  BlockList(const BlockList&) = delete;
  BlockList& operator=(const BlockList&) = delete;
  ~BlockList() { Clear(); }

  std::size_t size() const { return count; }

  T& operator[](std::size_t i) { return *At(i); }
  const T& operator[](std::size_t i) const { return *At(i); }

  // A new element at the end, default-constructed.
  T& Append() {
    const std::size_t block = BlockOf(count);
    if (blocks[block] == nullptr) blocks[block] = Allocator().allocate(kFirst << block);
    T* const element = std::construct_at(At(count));
    ++count;
    return *element;
  }

  void Clear() {
    for (std::size_t i = 0; i < count; ++i) std::destroy_at(At(i));
    count = 0;
    for (std::size_t block = 0; block < kBlocks && blocks[block] != nullptr; ++block) {
      Allocator().deallocate(blocks[block], kFirst << block);
      blocks[block] = nullptr;
    }
  }

 private:
  using Allocator = std::allocator<T>;
  static constexpr std::size_t kFirstBits = 12;
  static constexpr std::size_t kFirst = std::size_t{1} << kFirstBits;
  static constexpr std::size_t kBlocks = 40;

  static std::size_t BlockOf(std::size_t i) {
    return static_cast<std::size_t>(std::bit_width(i + kFirst)) - 1 - kFirstBits;
  }
  T* At(std::size_t i) const {
    const std::size_t block = BlockOf(i);
    return blocks[block] + (i + kFirst - (kFirst << block));
  }

  std::array<T*, kBlocks> blocks{};
  std::size_t count = 0;
};

}  // namespace quellix
