#include "app/MessageReader.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace kvapp {

namespace {

constexpr std::size_t kMostProblems = 16;
constexpr std::uint32_t kExponent = 0x7f800000u;

}  // namespace

void MessageReader::Problem(std::string text) {
  if (problems_.size() < kMostProblems) problems_.push_back(std::move(text));
}

void MessageReader::Wrong(const char* field, std::uint64_t sent, std::uint64_t wanted) {
  Problem(std::string(field) + " is " + std::to_string(sent) + ", wanted " +
          std::to_string(wanted));
}

bool MessageReader::Flag(const char* field, std::uint32_t value) {
  if (value > 1) Problem(std::string(field) + " is " + std::to_string(value) + ", wanted 0 or 1");
  return value != 0;
}

void MessageReader::Finite(const char* field, std::span<const float> values) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if ((std::bit_cast<std::uint32_t>(values[i]) & kExponent) == kExponent) {
      Problem(std::string(field) + "[" + std::to_string(i) + "] is " + std::to_string(values[i]) +
              ", wanted a finite number");
      return;
    }
  }
}

bool MessageReader::Placed(const char* field, std::uint64_t offset) {
  if (!inOrder_) return false;
  if (offset == position_) return true;
  Wrong((std::string(field) + " offset").c_str(), offset, position_);
  inOrder_ = false;
  return false;
}

std::string MessageReader::Text(const char* field, std::uint32_t offset) {
  if (!Placed(field, offset)) return {};
  const std::size_t start = static_cast<std::size_t>(position_);
  const auto rest = segment_.subspan(std::min(start, segment_.size()));
  const void* end = rest.empty() ? nullptr : std::memchr(rest.data(), 0, rest.size());
  if (end == nullptr) {
    Problem(std::string(field) + " at " + std::to_string(offset) +
            " has no NUL before the end of the segment");
    inOrder_ = false;
    return {};
  }
  const auto length = static_cast<std::size_t>(static_cast<const std::byte*>(end) - rest.data());
  std::string text(reinterpret_cast<const char*>(rest.data()), length);
  position_ += length + 1;
  if (!IsUtf8(text)) {
    Problem(std::string(field) + " at " + std::to_string(offset) + " is not valid UTF-8");
    return {};
  }
  return text;
}

std::span<const std::byte> MessageReader::Block(const char* field, std::uint64_t offset,
                                                std::uint64_t size) {
  if (!Placed(field, offset)) return {};
  if (position_ > segment_.size() || size > segment_.size() - position_) {
    Problem(std::string(field) + " has " + std::to_string(size) + " bytes from " +
            std::to_string(offset) + ", wanted its end inside the segment of " +
            std::to_string(segment_.size()));
    inOrder_ = false;
    return {};
  }
  const auto block =
      segment_.subspan(static_cast<std::size_t>(position_), static_cast<std::size_t>(size));
  position_ += size;
  return block;
}

bool IsUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    if (lead < 0x80) {
      ++i;
      continue;
    }
    const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4 || text.size() - i < length) return false;
    for (std::size_t k = 1; k < length; ++k) {
      if ((static_cast<unsigned char>(text[i + k]) & 0xc0) != 0x80) return false;
    }
    const auto second = static_cast<unsigned char>(text[i + 1]);
    if ((lead == 0xe0 && second < 0xa0) || (lead == 0xed && second > 0x9f) ||
        (lead == 0xf0 && second < 0x90) || (lead == 0xf4 && second > 0x8f)) {
      return false;
    }
    i += length;
  }
  return true;
}

bool AllFinite(const float* values, std::size_t count) {
  std::uint32_t found = 0;
  for (std::size_t i = 0; i < count; ++i) {
    found |= (std::bit_cast<std::uint32_t>(values[i]) & kExponent) == kExponent ? 1u : 0u;
  }
  return found == 0;
}

}  // namespace kvapp
