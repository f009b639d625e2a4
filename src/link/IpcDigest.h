#pragma once

#include <cstddef>
#include <cstdint>

// A fingerprint of the scene that an export sent, per command and in total, independent of the
// order in which commands left: equal digests mean that the renderer was sent the same scene. On
// while QUELLIX_IPC_DIGEST names a file. Adding happens under the link's send lock; reset and dump
// on the host thread while nothing is sent.

namespace quellix {

// 64-bit FNV-1a.
class Fnv1a {
 public:
  void Add(const void* bytes, std::size_t count);

  // A value of fixed width, as its little-endian bytes.
  template <class Value>
  void AddValue(const Value& value) {
    Add(&value, sizeof value);
  }

  // A length as 64 bits, then that many bytes.
  void AddSized(const void* bytes, std::uint64_t count);

  // A text without its NUL; a missing one counts as empty.
  void AddText(const char* text);

  std::uint64_t Value() const { return hash; }

 private:
  std::uint64_t hash = 0xcbf29ce484222325ull;
};

bool DigestEnabled();
void DigestReset();
void DigestAdd(std::uint32_t command, std::uint64_t hash);
void DigestDump(bool reload);

}  // namespace quellix
