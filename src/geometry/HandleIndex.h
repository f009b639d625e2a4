#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "geometry/HandleKey.h"

namespace quellix {

// Finds the index of a handle in a list of handled things that only grows. It keeps indexes, not
// handles: `keyAt(index)` gives the handle of a listed thing back. Reading in several threads is
// fine while nobody inserts.
class HandleIndex {
 public:
  static constexpr std::uint32_t kNone = 0xffffffffu;

  void Clear() {
    std::vector<Slot>().swap(slots);
    count = 0;
    bits = kFirstBits;
    hint = nullptr;
    hintBits = kFirstBits;
  }

  // Brings the place of a handle nearer, for a Find or Insert soon after. Also while another thread
  // inserts: then it may be the wrong place, which does no harm.
  void Prefetch([[maybe_unused]] std::uint64_t key) const {
#if defined(__GNUC__)
    const Slot* first = hint.load(std::memory_order_relaxed);
    const unsigned shift = kTagBits - hintBits.load(std::memory_order_relaxed);
    if (first != nullptr) __builtin_prefetch(first + (TagOf(key) >> shift));
#endif
  }

  // The same for the thing that the handle probably stands for; `addressOf(index)` tells where it
  // is.
  template <class AddressOf>
  void PrefetchEntry(std::uint64_t key, AddressOf&& addressOf) const {
#if defined(__GNUC__)
    if (slots.empty()) return;
    const std::uint32_t tag = TagOf(key);
    const Slot& slot = slots[Place(tag)];
    if (slot.tag == tag && slot.index != kNone) __builtin_prefetch(addressOf(slot.index), 1);
#endif
  }

  // Makes room for so many handles.
  void Reserve(std::uint64_t handles) {
    unsigned wanted = bits;
    while (wanted < kTagBits - 1 && (std::uint64_t{kUsedParts} << wanted) < handles * kFullParts) {
      ++wanted;
    }
    if (wanted > bits || slots.empty()) Resize(wanted);
  }

  // kNone for a handle that is not there.
  template <class KeyAt>
  std::uint32_t Find(std::uint64_t key, KeyAt&& keyAt) const {
    return slots.empty() ? kNone : slots[SlotOf(TagOf(key), key, keyAt)].index;
  }

  // The handle's index. One that is not there gets `next`, and the caller then lists it there.
  template <class KeyAt>
  std::uint32_t FindOrInsert(std::uint64_t key, std::uint32_t next, KeyAt&& keyAt) {
    if (count * kFullParts >= slots.size() * kUsedParts) {
      Resize(slots.empty() ? kFirstBits : bits + 1);
    }
    const std::uint32_t tag = TagOf(key);
    Slot& slot = slots[SlotOf(tag, key, keyAt)];
    if (slot.index != kNone) return slot.index;
    slot = {tag, next};
    ++count;
    return next;
  }

 private:
  // At most three quarters of the slots are used.
  static constexpr std::size_t kUsedParts = 3;
  static constexpr std::size_t kFullParts = 4;
  static constexpr unsigned kFirstBits = 8;
  static constexpr unsigned kTagBits = 32;

  struct Slot {
    std::uint32_t tag = 0;
    std::uint32_t index = kNone;
  };

  static std::uint32_t TagOf(std::uint64_t key) {
    return static_cast<std::uint32_t>(HandleHash{}(key) >> kTagBits);
  }
  // The upper bits, so that doubling the slots keeps their order.
  std::size_t Place(std::uint32_t tag) const {
    return tag >> (kTagBits - bits);
  }

  // The slot that has the handle, or the free one where it belongs.
  template <class KeyAt>
  std::size_t SlotOf(std::uint32_t tag, std::uint64_t key, KeyAt&& keyAt) const {
    const std::size_t mask = slots.size() - 1;
    std::size_t place = Place(tag);
    for (;; place = (place + 1) & mask) {
      const Slot& slot = slots[place];
      if (slot.index == kNone || (slot.tag == tag && keyAt(slot.index) == key)) return place;
    }
  }

  void Resize(unsigned newBits) {
    bits = newBits;
    std::vector<Slot> old(std::size_t{1} << bits);
    old.swap(slots);
    hint = slots.data();
    hintBits = bits;
    const std::size_t mask = slots.size() - 1;
    for (const Slot& slot : old) {
      if (slot.index == kNone) continue;
      std::size_t place = Place(slot.tag);
      while (slots[place].index != kNone) place = (place + 1) & mask;
      slots[place] = slot;
    }
  }

  std::vector<Slot> slots;
  std::size_t count = 0;
  unsigned bits = kFirstBits;
  std::atomic<const Slot*> hint{nullptr};  // the slots' start and their bits, for Prefetch
  std::atomic<unsigned> hintBits{kFirstBits};
};

}  // namespace quellix
