#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kvapp {

// Reads one message from the start of a segment and collects what is wrong with it. Variable items
// follow the record in a fixed order without gaps, so the place of each is known before its offset
// is read; after an item at a wrong place the places of those after it are unknown, and they are
// not read.
class MessageReader {
 public:
  MessageReader(std::span<const std::byte> segment, std::vector<std::string>& problems)
      : segment_(segment), problems_(problems) {}

  // Copies the fixed record and moves to the variable items.
  template <class Record>
  bool ReadRecord(Record& record) {
    if (segment_.size() < sizeof(Record)) {
      Problem("the segment has " + std::to_string(segment_.size()) + " bytes, wanted a record of " +
              std::to_string(sizeof(Record)));
      return false;
    }
    std::memcpy(&record, segment_.data(), sizeof(Record));
    position_ = sizeof(Record);
    recordBytes_ = sizeof(Record);
    inOrder_ = true;
    return true;
  }

  // The next text, without its NUL.
  std::string Text(const char* field, std::uint32_t offset);
  // The next block of bytes; empty when its place or size is wrong.
  std::span<const std::byte> Block(const char* field, std::uint64_t offset, std::uint64_t size);

  // One sentence about a field's value.
  void Problem(std::string text);
  void Wrong(const char* field, std::uint64_t sent, std::uint64_t wanted);
  bool Flag(const char* field, std::uint32_t value);
  void Finite(const char* field, std::span<const float> values);

  // The end of the last item; 0 when an item was at a wrong place.
  std::uint64_t MessageBytes() const { return inOrder_ ? position_ : 0; }
  bool InOrder() const { return inOrder_; }
  std::uint32_t RecordBytes() const { return recordBytes_; }

 private:
  bool Placed(const char* field, std::uint64_t offset);

  std::span<const std::byte> segment_;
  std::vector<std::string>& problems_;
  std::uint64_t position_ = 0;
  std::uint32_t recordBytes_ = 0;
  bool inOrder_ = false;
};

// Whether a text is valid UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool IsUtf8(std::string_view text);

// Whether every value is finite; tests the exponent bits, so that the loop vectorises.
bool AllFinite(const float* values, std::size_t count);

}  // namespace kvapp
