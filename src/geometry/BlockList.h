#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace quellix {

// A list that only grows, in blocks: its elements stay at their places, and growing neither copies
// them nor needs twice their memory for a while.
template <class T>
class BlockList {
 public:
  std::size_t size() const { return count; }

  T& operator[](std::size_t i) { return blocks[i >> kShift][i & kMask]; }
  const T& operator[](std::size_t i) const { return blocks[i >> kShift][i & kMask]; }

  // A new element at the end, default-constructed.
  T& Append() {
    if (count == blocks.size() << kShift) blocks.push_back(std::make_unique<T[]>(kMask + 1));
    return (*this)[count++];
  }

  void Clear() {
    blocks.clear();
    count = 0;
  }

 private:
  static constexpr std::size_t kShift = 12;
  static constexpr std::size_t kMask = (std::size_t{1} << kShift) - 1;

  std::vector<std::unique_ptr<T[]>> blocks;
  std::size_t count = 0;
};

}  // namespace quellix
