#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "app/Commands.h"

namespace kvapp {

struct DecodeOptions {
  // Checks the record and the bounds of its items, copies and checks no content.
  bool headersOnly = false;
};

struct Decoded {
  std::uint32_t id = 0;
  std::uint32_t recordBytes = 0;   // 0 for an id that has no record
  std::uint64_t messageBytes = 0;  // record and variable items; 0 when they could not be told
  Command command;                 // holds what could be read, also when there are problems
  // What is wrong, one sentence each: what was sent and what was wanted. A command with problems
  // must not be used.
  std::vector<std::string> problems;
};

// Reads the command at the start of a segment. The bytes are not trusted: whatever they are,
// nothing outside of the segment is read, and content is copied before it is checked. Pure; any
// thread.
Decoded Decode(std::span<const std::byte> segment, const DecodeOptions& options = {});

// The name of a command in reports and scripts, for good; "?" outside the catalogue.
const char* ShortCommandName(std::uint32_t id);

}  // namespace kvapp
