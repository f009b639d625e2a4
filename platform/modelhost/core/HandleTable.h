// Turns handles into objects, and tells handles that are not (or no longer) any.
//
// A handle is a number, never an address: a marker bit that no user-space address has, the kind,
// a generation and the index of a slot. A slot that is used again gets the next generation, so a
// released handle, one of another kind and any garbage are recognised without touching memory that
// is not the table's own. Handles stay below 2^62, which makes them plain integers in Ruby.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include "core/Object.h"

namespace modelhost {

class HandleTable {
 public:
  static HandleTable& instance();

  void* add(Object& object, Kind kind);
  void remove(void* handle);
  // A handle that is not shown stands for nothing; its slot stays its own.
  void setShown(void* handle, bool shown);

  // The object, when `handle` is live and of one of `kinds` (bits as of bitOf). No lock: may run
  // on any number of threads, while others add and remove.
  Object* find(const void* handle, std::uint32_t kinds) const noexcept {
    const auto bits = reinterpret_cast<std::uintptr_t>(handle);
    const std::uint64_t tag = bits >> kIndexBits;
    if ((tag >> (kGenerationBits + kKindBits)) != 1) return nullptr;
    if (((kinds >> ((tag >> kGenerationBits) & 31)) & 1) == 0) return nullptr;
    const std::size_t index = bits & kIndexMask;
    const Slot* page = pages_[index >> kPageBits].load(std::memory_order_acquire);
    if (page == nullptr) return nullptr;
    const Slot& slot = page[index & kPageMask];
    return slot.tag.load(std::memory_order_acquire) == tag ? slot.object : nullptr;
  }

  std::size_t liveCount(Kind kind) const {
    return live_[static_cast<std::size_t>(kind)].load(std::memory_order_relaxed);
  }

 private:
  static_assert(sizeof(void*) == 8);
  static constexpr unsigned kIndexBits = 28;
  static constexpr unsigned kGenerationBits = 28;
  static constexpr unsigned kKindBits = 5;
  static constexpr std::uint64_t kIndexMask = (1ull << kIndexBits) - 1;
  static constexpr std::uint64_t kGenerationMask = (1ull << kGenerationBits) - 1;
  static constexpr unsigned kPageBits = 13;
  static constexpr std::size_t kPageMask = (1u << kPageBits) - 1;
  static_assert(static_cast<unsigned>(Kind::Count) <= (1u << kKindBits));

  // A free slot's tag is its last generation alone (no marker bit, so it equals no handle's tag).
  struct Slot {
    std::atomic<std::uint64_t> tag{0};
    Object* object = nullptr;
  };

  std::size_t takeSlot();

  std::array<std::atomic<Slot*>, std::size_t{1} << (kIndexBits - kPageBits)> pages_{};
  std::array<std::atomic<std::size_t>, static_cast<std::size_t>(Kind::Count)> live_{};
  std::mutex mutex_;
  std::size_t used_ = 0;
  std::size_t firstFree_ = kNone;
  static constexpr std::size_t kNone = ~std::size_t{0};
};

}  // namespace modelhost
