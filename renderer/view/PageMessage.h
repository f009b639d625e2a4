#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "app/Request.h"

namespace kvapp::view {

// What a page may send, once every field of it has been checked.

struct PageAck {
  std::uint64_t sequence = 0;
};
struct PageRequest {
  std::uint64_t id = 0;
  Request request;
};
// A message that is none of these.
struct PageFault {
  std::optional<std::uint64_t> id;  // where one could be read
  std::string text;                 // one sentence
};

using PageMessage = std::variant<PageAck, PageRequest, PageFault>;

inline constexpr std::size_t kMostMessageBytes = 192 << 10;

// Reads one text frame of a page, whatever it holds. Pure; any thread.
PageMessage ParsePageMessage(std::string_view text);

// The message with which a request is answered, from what the plug-in left.
std::string AnswerText(std::uint64_t id, std::uint32_t code, const RequestResult& result);
// The same for a request that got none.
std::string RefusalText(std::uint64_t id, std::uint32_t code, const std::string& why);
std::string FaultText(const PageFault& fault);

}  // namespace kvapp::view
