#pragma once

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <mutex>
#include <new>

namespace quellix {

// Memory that many threads take in small pieces and that is given back all at once. A piece costs
// an addition; only a new block takes a lock. Pieces are aligned for pointers and doubles, and hold
// whatever was there.
class SharedArena {
 public:
  SharedArena() = default;
  SharedArena(const SharedArena&) = delete;
  SharedArena& operator=(const SharedArena&) = delete;
  ~SharedArena() { Clear(); }

  // Any thread. Throws std::bad_alloc.
  void* Allocate(std::size_t bytes) {
    bytes = (bytes + kAlignment - 1) & ~(kAlignment - 1);
    for (;;) {
      Block* const block = current.load(std::memory_order_acquire);
      if (block != nullptr) {
        const std::size_t start = block->used.fetch_add(bytes, std::memory_order_relaxed);
        if (start + bytes <= block->size) return block->Bytes() + start;
      }
      AddBlock(block, bytes);
    }
  }

  // While nobody else is here: every piece is gone afterwards.
  void Clear() {
    Block* block = current.exchange(nullptr);
    while (block != nullptr) {
      Block* const former = block->former;
      block->~Block();
      std::free(block);
      block = former;
    }
  }

 private:
  static constexpr std::size_t kAlignment = 8;
  static constexpr std::size_t kFirstBytes = std::size_t{256} << 10;
  static constexpr std::size_t kLargestBytes = std::size_t{64} << 20;

  struct alignas(std::max_align_t) Block {
    Block* former;
    std::size_t size;
    std::atomic<std::size_t> used{0};
    std::byte* Bytes() { return reinterpret_cast<std::byte*>(this + 1); }
  };

  // Unless another thread was faster than the one that found `full` to be so.
  void AddBlock(Block* full, std::size_t bytes) {
    const std::lock_guard lock(mutex);
    if (current.load(std::memory_order_relaxed) != full) return;
    std::size_t size = full == nullptr ? kFirstBytes : full->size * 2;
    if (size > kLargestBytes) size = kLargestBytes;
    if (size < bytes) size = bytes;
    void* const memory = std::malloc(sizeof(Block) + size);
    if (memory == nullptr) throw std::bad_alloc();
    current.store(new (memory) Block{full, size}, std::memory_order_release);
  }

  std::atomic<Block*> current{nullptr};
  std::mutex mutex;
};

}  // namespace quellix
