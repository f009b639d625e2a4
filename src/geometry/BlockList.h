#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <memory>
#include <mutex>

namespace quellix {

// A list that only grows, in blocks, each twice as large as the one before: its elements stay at
// their places, and growing neither copies them nor touches memory that no element needs yet. Any
// number of threads may append at once, and read every element that they have learnt of since it
// was appended. T's default constructor may not throw.
template <class T>
class BlockList {
 public:
  BlockList() = default;
  BlockList(const BlockList&) = delete;
  BlockList& operator=(const BlockList&) = delete;
  ~BlockList() { Clear(); }

  T& operator[](std::size_t i) { return *At(i); }
  const T& operator[](std::size_t i) const { return *At(i); }

  // New elements, default-constructed, one after the other; the first one's index. Throws
  // std::bad_alloc, with nothing appended.
  std::size_t Append(std::size_t elements = 1) {
    std::size_t first = count.load(std::memory_order_relaxed);
    do {
      Provide(first, elements);
    } while (!count.compare_exchange_weak(first, first + elements, std::memory_order_relaxed));
    for (std::size_t i = first; i < first + elements; ++i) std::construct_at(At(i));
    return first;
  }

  // While nobody else is here.
  void Clear() {
    const std::size_t elements = count.exchange(0);
    for (std::size_t i = 0; i < elements; ++i) std::destroy_at(At(i));
    for (std::size_t block = 0; block < kBlocks; ++block) {
      if (T* const start = blocks[block].exchange(nullptr)) {
        Allocator().deallocate(start, kFirst << block);
      }
    }
  }

 private:
  using Allocator = std::allocator<T>;
  static constexpr std::size_t kFirstBits = 12;
  static constexpr std::size_t kFirst = std::size_t{1} << kFirstBits;
  static constexpr std::size_t kBlocks = 40;

  static std::size_t BlockOf(std::size_t i) {
    return static_cast<std::size_t>(std::bit_width((i >> kFirstBits) + 1)) - 1;
  }
  T* At(std::size_t i) const {
    const std::size_t block = BlockOf(i);
    return blocks[block].load(std::memory_order_relaxed) + (i + kFirst - (kFirst << block));
  }

  // Makes sure that there are blocks for these elements.
  void Provide(std::size_t first, std::size_t elements) {
    for (std::size_t block = BlockOf(first); block <= BlockOf(first + elements); ++block) {
      if (blocks[block].load(std::memory_order_acquire) != nullptr) continue;
      const std::lock_guard lock(growing);
      if (blocks[block].load(std::memory_order_relaxed) != nullptr) continue;
      blocks[block].store(Allocator().allocate(kFirst << block), std::memory_order_release);
    }
  }

  std::array<std::atomic<T*>, kBlocks> blocks{};
  std::atomic<std::size_t> count{0};
  std::mutex growing;
};

}  // namespace quellix
