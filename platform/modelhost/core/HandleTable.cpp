#include "core/HandleTable.h"

#include <new>

namespace modelhost {

HandleTable& HandleTable::instance() {
  // Never destroyed: models that outlive static destruction must still find it.
  static HandleTable& table = *new HandleTable;
  return table;
}

std::size_t HandleTable::takeSlot() {
  if (firstFree_ != kNone) {
    const std::size_t index = firstFree_;
    Slot& slot = pages_[index >> kPageBits].load(std::memory_order_relaxed)[index & kPageMask];
    // A free slot's object field holds the index of the next free one.
    firstFree_ = reinterpret_cast<std::uintptr_t>(slot.object);
    return index;
  }
  if (used_ > kIndexMask) throw std::bad_alloc();
  if ((used_ & kPageMask) == 0) {
    pages_[used_ >> kPageBits].store(new Slot[kPageMask + 1], std::memory_order_release);
  }
  return used_++;
}

void* HandleTable::add(Object& object, Kind kind) {
  const std::lock_guard lock(mutex_);
  const std::size_t index = takeSlot();
  Slot& slot = pages_[index >> kPageBits].load(std::memory_order_relaxed)[index & kPageMask];
  const std::uint64_t generation = (slot.tag.load(std::memory_order_relaxed) + 1) & kGenerationMask;
  const std::uint64_t tag = (1ull << (kGenerationBits + kKindBits)) |
                            (static_cast<std::uint64_t>(kind) << kGenerationBits) | generation;
  slot.object = &object;
  slot.tag.store(tag, std::memory_order_release);
  live_[static_cast<std::size_t>(kind)].fetch_add(1, std::memory_order_relaxed);
  return reinterpret_cast<void*>((tag << kIndexBits) | index);
}

void HandleTable::remove(void* handle) {
  const auto bits = reinterpret_cast<std::uintptr_t>(handle);
  const std::size_t index = bits & kIndexMask;
  const std::uint64_t tag = bits >> kIndexBits;
  const std::lock_guard lock(mutex_);
  Slot& slot = pages_[index >> kPageBits].load(std::memory_order_relaxed)[index & kPageMask];
  slot.tag.store(tag & kGenerationMask, std::memory_order_release);
  slot.object = reinterpret_cast<Object*>(firstFree_);
  firstFree_ = index;
  live_[(tag >> kGenerationBits) & 31].fetch_sub(1, std::memory_order_relaxed);
}

void HandleTable::setShown(void* handle, bool shown) {
  const auto bits = reinterpret_cast<std::uintptr_t>(handle);
  const std::size_t index = bits & kIndexMask;
  const std::uint64_t tag = bits >> kIndexBits;
  Slot& slot = pages_[index >> kPageBits].load(std::memory_order_relaxed)[index & kPageMask];
  slot.tag.store(shown ? tag : tag & kGenerationMask, std::memory_order_release);
}

void Object::setShown(bool shown) const {
  HandleTable::instance().setShown(handle_, shown);
}

Object::Object(Kind kind) : handle_(HandleTable::instance().add(*this, kind)), kind_(kind) {}

Object::~Object() {
  HandleTable::instance().remove(handle_);
}

}  // namespace modelhost
