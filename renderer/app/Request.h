#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include <nlohmann/json.hpp>

namespace kvapp {

// What became of a request.
struct RequestResult {
  bool acknowledged = false;          // false: the session ended before
  std::uint32_t code = 0;             // as the plug-in left it
  std::uint64_t required = 0;         // 0: nothing was written
  std::span<const std::byte> answer;  // from offset 24 on
};

// One question to the plug-in.
struct Request {
  std::uint32_t code = 0;
  std::optional<std::uint64_t> capacity;  // of the segment when not given
  std::string data;                       // bytes from offset 24
  std::optional<std::uint8_t> fill;       // for the bytes after the data; 0 when not given
  // Called once when it was acknowledged or never will be, on the sender's thread. It must not
  // post.
  std::function<void(const RequestResult&)> answered;
};

// Reads the object that describes a request: a code, and its data raw or by fields. Throws
// std::runtime_error or a JSON error.
Request ParseRequest(const nlohmann::ordered_json& value);

}  // namespace kvapp
