#include "link/CommandMessage.h"

#include <cassert>

namespace quellix {

std::uint64_t StringSpace(const char* text) {
  return text == nullptr ? 1 : static_cast<std::uint64_t>(std::strlen(text)) + 1;
}

std::uint64_t WriteCursor::AppendString(const char* text) {
  const char* source = text == nullptr ? "" : text;
  return AppendBlob(StringSpace(source), source);
}

std::uint64_t WriteCursor::AppendBlob(std::uint64_t size, const void* bytes) {
  const std::uint64_t start = position;
  if (bytes != nullptr) {
    std::memcpy(base + position, bytes, size);
    position += size;
  }
  return start;
}

void CommandMessage::Add(Item item, std::uint64_t space) {
  assert(itemCount < items.size());
  items[itemCount++] = item;
  size += space;
}

CommandMessage& CommandMessage::Text(std::uint32_t& offsetField, const char* text) {
  Add({text, 0, &offsetField, true, false}, StringSpace(text));
  return *this;
}

CommandMessage& CommandMessage::Blob(std::uint64_t& offsetField, std::uint64_t blobSize,
                                     const void* bytes) {
  Add({bytes, blobSize, &offsetField, false, true}, blobSize);
  return *this;
}

CommandMessage& CommandMessage::Blob(std::uint32_t& offsetField, std::uint64_t blobSize,
                                     const void* bytes) {
  Add({bytes, blobSize, &offsetField, false, false}, blobSize);
  return *this;
}

std::uint32_t CommandMessage::Id() const {
  std::uint32_t id = 0;
  std::memcpy(&id, record, sizeof id);
  return id;
}

void CommandMessage::WriteTo(std::byte* segment) const {
  WriteCursor cursor(segment, recordSize);
  for (std::size_t i = 0; i < itemCount; ++i) {
    const Item& item = items[i];
    const std::uint64_t offset = item.isText
                                     ? cursor.AppendString(static_cast<const char*>(item.bytes))
                                     : cursor.AppendBlob(item.size, item.bytes);
    if (item.wideOffset) {
      std::memcpy(item.offsetField, &offset, sizeof offset);
    } else {
      const auto narrow = static_cast<std::uint32_t>(offset);
      std::memcpy(item.offsetField, &narrow, sizeof narrow);
    }
  }
  std::memcpy(segment, record, recordSize);
}

}  // namespace quellix
