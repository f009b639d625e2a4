#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

#include "geometry/GeometryTimings.h"
#include "geometry/HandleKey.h"

namespace quellix {

// Finds the index of a handle in a list of handled things that only grows. It keeps indexes, not
// handles: `keyAt(index)` gives the handle of a listed thing back.
//
// Any number of threads may look up and insert at once; a lock is taken only to make room. What a
// found index leads to can be read: it was listed before it could be found. A Find may miss what is
// being inserted at that moment; FindOrInsert does not.
class HandleIndex {
 public:
  static constexpr std::uint32_t kNone = 0xffffffffu;

  HandleIndex() = default;
  HandleIndex(const HandleIndex&) = delete;
  HandleIndex& operator=(const HandleIndex&) = delete;
  ~HandleIndex() { Clear(); }

  // While nobody else is here.
  void Clear() {
    delete current.exchange(nullptr);
    expected = 0;
  }

  // Brings the place of a handle nearer, for a Find soon after.
  void Prefetch([[maybe_unused]] std::uint64_t key) const {
#if defined(__GNUC__)
    const Table* table = current.load(std::memory_order_acquire);
    if (table != nullptr) __builtin_prefetch(&table->slots[table->Place(TagOf(key))]);
#endif
  }

  // The same for the thing that the handle probably stands for; `addressOf(index)` tells where it
  // is.
  template <class AddressOf>
  void PrefetchEntry([[maybe_unused]] std::uint64_t key,
                     [[maybe_unused]] AddressOf&& addressOf) const {
#if defined(__GNUC__)
    const Table* table = current.load(std::memory_order_acquire);
    if (table == nullptr) return;
    const std::uint32_t tag = TagOf(key);
    const Slot slot = table->slots[table->Place(tag)].load(std::memory_order_acquire);
    if (IsTaken(slot) && TagIn(slot) == tag) __builtin_prefetch(addressOf(IndexIn(slot)), 1);
#endif
  }

  // Before handles are inserted: makes room for so many more. Any thread, each for its own.
  void Expect(std::size_t handles) {
    MakeRoom(expected.fetch_add(handles, std::memory_order_relaxed) + handles);
  }
  // Makes room for so many in all, which saves growing by and by.
  void Reserve(std::size_t handles) {
    MakeRoom(handles);
  }

  // kNone for a handle that is not there.
  template <class KeyAt>
  std::uint32_t Find(std::uint64_t key, KeyAt&& keyAt) const {
    const Table* table = current.load(std::memory_order_acquire);
    if (table == nullptr) return kNone;
    const std::uint32_t tag = TagOf(key);
    for (std::size_t place = table->Place(tag);; place = table->After(place)) {
      const Slot slot = table->slots[place].load(std::memory_order_acquire);
      if (!IsTaken(slot)) return kNone;
      if (TagIn(slot) == tag && keyAt(IndexIn(slot)) == key) return IndexIn(slot);
    }
  }

  // The handle's index. For one that is not there, `list()` puts it into the list at `next`, an
  // index that no other thread uses; unless another thread inserts the same handle before, `next`
  // is the answer then. Room was made for it before.
  template <class KeyAt, class List>
  std::uint32_t FindOrInsert(std::uint64_t key, std::uint32_t next, KeyAt&& keyAt, List&& list) {
    const std::uint32_t tag = TagOf(key);
    bool listed = false;
    for (;;) {
      Table* const table = current.load(std::memory_order_acquire);
      for (std::size_t place = table->Place(tag);; place = table->After(place)) {
        Slot slot = table->slots[place].load(std::memory_order_acquire);
        if (slot == kFree) {
          if (!listed) list();
          listed = true;
          if (table->slots[place].compare_exchange_strong(slot, SlotFrom(tag, next),
                                                          std::memory_order_acq_rel)) {
            return next;
          }
        }
        if (slot == kClosed) {
          AwaitGrowth();
          break;
        }
        if (TagIn(slot) == tag && keyAt(IndexIn(slot)) == key) return IndexIn(slot);
      }
    }
  }

 private:
  // At most three quarters of the slots are used.
  static constexpr std::size_t kUsedParts = 3;
  static constexpr std::size_t kFullParts = 4;
  static constexpr std::size_t kFirstSize = 16;
  static constexpr unsigned kTagBits = 32;

  // A part of the handle's hash, and above it the index plus one. A place that was free when its
  // table was left for a larger one is closed.
  using Slot = std::uint64_t;
  static constexpr Slot kFree = 0;
  static constexpr Slot kClosed = 1;
  static bool IsTaken(Slot slot) {
    return slot > kClosed;
  }
  static Slot SlotFrom(std::uint32_t tag, std::uint32_t index) {
    return ((Slot{index} + 1) << kTagBits) | tag;
  }
  static std::uint32_t TagIn(Slot slot) {
    return static_cast<std::uint32_t>(slot);
  }
  static std::uint32_t IndexIn(Slot slot) {
    return static_cast<std::uint32_t>((slot >> kTagBits) - 1);
  }
  static std::uint32_t TagOf(std::uint64_t key) {
    return static_cast<std::uint32_t>(HandleHash{}(key) >> kTagBits);
  }

  struct Table {
    // All of it is written here: a page that is read before it is written interrupts every core
    // that runs the process when it is.
    explicit Table(std::size_t slotCount)
        : size(slotCount), slots(std::make_unique<std::atomic<Slot>[]>(slotCount)) {}

    // In the order of the tags, whatever the size, so that growing goes through memory in order.
    std::size_t Place(std::uint32_t tag) const { return (tag * std::uint64_t{size}) >> kTagBits; }
    std::size_t After(std::size_t place) const { return place + 1 == size ? 0 : place + 1; }

    const std::size_t size;
    const std::unique_ptr<std::atomic<Slot>[]> slots;
    // The smaller table that this one took the place of: somebody may still be looking there.
    std::unique_ptr<Table> former;
  };

  void MakeRoom(std::size_t handles) {
    const std::size_t wanted = handles * kFullParts / kUsedParts + 1;
    for (;;) {
      Table* const table = current.load(std::memory_order_acquire);
      if (table != nullptr && wanted <= table->size) return;
      Grow(table, std::max(table == nullptr ? kFirstSize : 2 * table->size, wanted));
    }
  }

  // Moves on to a larger table, unless another thread has done so since `full` was the current one.
  void Grow(Table* full, std::size_t size) {
    const auto lock = LockTimed<std::unique_lock<std::mutex>>(growing, Waits().collectorLock);
    if (current.load(std::memory_order_relaxed) != full) return;
    auto table = std::make_unique<Table>(size);
    for (std::size_t i = 0; full != nullptr && i < full->size; ++i) {
      Slot slot = kFree;
      full->slots[i].compare_exchange_strong(slot, kClosed, std::memory_order_acq_rel);
      if (slot == kFree) continue;
      std::size_t place = table->Place(TagIn(slot));
      while (table->slots[place].load(std::memory_order_relaxed) != kFree) {
        place = table->After(place);
      }
      table->slots[place].store(slot, std::memory_order_relaxed);
    }
    table->former.reset(full);
    current.store(table.release(), std::memory_order_release);
  }

  void AwaitGrowth() {
    const auto lock = LockTimed<std::unique_lock<std::mutex>>(growing, Waits().collectorLock);
  }

  std::atomic<Table*> current{nullptr};
  std::mutex growing;
  std::atomic<std::size_t> expected{0};  // handles inserted and announced
};

}  // namespace quellix
