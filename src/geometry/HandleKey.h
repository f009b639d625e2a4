#pragma once

#include <cstddef>
#include <cstdint>

namespace quellix {

template <class Ref>
std::uint64_t HandleKey(Ref su_ref) {
  return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(su_ref.ptr));
}

// For flat hash tables keyed by handles. Handles are multiples of some allocation step, so their
// bits are mixed before the table takes the low ones.
struct HandleHash {
  using is_avalanching = void;
  std::size_t operator()(std::uint64_t key) const noexcept {
    key ^= key >> 32;
    key *= 0x9e3779b97f4a7c15u;
    key ^= key >> 29;
    key *= 0xbf58476d1ce4e5b9u;
    key ^= key >> 32;
    return static_cast<std::size_t>(key);
  }
};

}  // namespace quellix
