#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "link/WireRecords.h"

namespace quellix {

// Where the next variable item of a message goes. The message starts at the segment's start, so the
// offsets handed out are those that the record carries.
class WriteCursor {
 public:
  WriteCursor(std::byte* messageStart, std::uint64_t recordSize)
      : base(messageStart), position(recordSize) {}

  // Copies a text with its NUL, a missing one as a single NUL; returns where it starts.
  std::uint64_t AppendString(const char* text);

  // Copies a block, nothing of a missing one; returns where it starts, or would.
  std::uint64_t AppendBlob(std::uint64_t size, const void* bytes);

 private:
  std::byte* base;
  std::uint64_t position;
};

// The bytes that a text takes in a message: its length and the NUL.
std::uint64_t StringSpace(const char* text);

// A command before it is written: its fixed record and its variable items in order. It refers to
// the record and to the items' bytes, which must live until the message was written.
class CommandMessage {
 public:
  template <class Record>
  explicit CommandMessage(Record& fixedRecord)
      : record(reinterpret_cast<std::byte*>(&fixedRecord)), recordSize(sizeof(Record)) {
    static_assert(std::is_trivially_copyable_v<Record> && std::is_standard_layout_v<Record>);
  }

  // Adds a text, null for none; its offset goes into that field of the record.
  CommandMessage& Text(std::uint32_t& offsetField, const char* text);

  // Adds a block, null for none; its offset goes into that field of the record.
  CommandMessage& Blob(std::uint64_t& offsetField, std::uint64_t size, const void* bytes);
  CommandMessage& Blob(std::uint32_t& offsetField, std::uint64_t size, const void* bytes);

  std::uint32_t Id() const;
  std::uint64_t Size() const { return size; }

  // Writes the variable items behind the record's place, and then the record, to the segment's
  // start. There must be room for Size() bytes.
  void WriteTo(std::byte* segment) const;

  const std::byte* Record() const { return record; }

 private:
  struct Item {
    const void* bytes;
    std::uint64_t size;
    void* offsetField;
    bool isText;
    bool wideOffset;
  };

  void Add(Item item, std::uint64_t space);

  std::byte* record;
  std::uint64_t recordSize;
  std::uint64_t size = recordSize;
  std::size_t itemCount = 0;
  std::array<Item, 6> items;  // those below itemCount
};

}  // namespace quellix
