#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// What a fuzz target gives to whoever runs it: libFuzzer, or the driver beside this file, which
// needs no compiler of its own.

namespace fuzz {

using Bytes = std::vector<std::uint8_t>;

// Hands one input to the code under test. What is wrong ends the process.
void Run(const std::uint8_t* data, std::size_t size);

// Inputs to start from.
std::vector<Bytes> Seeds();

// Ends the process with a sentence when a promise does not hold.
void Require(bool holds, const char* promise);

// Pages that end right before a page nobody may touch, so that reading or writing behind an input
// ends the process on every build.
class GuardedPages {
 public:
  explicit GuardedPages(std::size_t bytes);
  // The input's copy, its last byte being the last one that may be touched. `size` up to the bytes
  // asked for.
  std::uint8_t* Place(const std::uint8_t* data, std::size_t size);

 private:
  std::uint8_t* base_;
  std::size_t room_;
};

}  // namespace fuzz
