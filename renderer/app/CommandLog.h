#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <span>
#include <string>

#include <nlohmann/json.hpp>

#include "app/Decoder.h"
#include "link/WireRecords.h"

namespace kvapp {

// Counts commands, and writes one line of JSON for each when there is a folder to write to. Lines
// are flushed one by one, so that those of a renderer that crashes are there.
class CommandLog {
 public:
  struct Count {
    std::uint64_t commands = 0;
    std::uint64_t bytes = 0;
  };
  struct Digest {
    std::uint64_t count = 0;
    std::uint64_t value = 0;
  };

  // An empty folder: counts only, no digests.
  CommandLog(const std::filesystem::path& folder, std::size_t bytesLogged);

  // Call while the segment still holds the command. Returns how many of its kind there were.
  std::uint64_t Add(std::uint64_t number, const Decoded& decoded,
                    std::span<const std::byte> segment);

  // By the commands' names; those that never came are left out.
  std::map<std::string, Count> Counts() const;
  // Exclusive or of the digests of the scene commands, by command.
  const std::map<std::string, Digest>& Digests() const { return digests_; }
  std::uint64_t Commands() const { return commands_; }
  std::uint64_t Bytes() const { return bytes_; }

 private:
  void Write(std::uint64_t number, const Decoded& decoded, std::uint64_t bytes,
             std::span<const std::byte> segment);

  std::ofstream file_;
  std::size_t bytesLogged_;
  // By id; all that the catalogue does not know share the first.
  std::array<Count, quellix::wire::kLastCommandId + 1> counts_{};
  std::map<std::string, Digest> digests_;
  std::uint64_t commands_ = 0;
  std::uint64_t bytes_ = 0;
};

// The values of a command that a reader of the log wants to see; large content is left out.
nlohmann::json KeyFields(const Command& command);

}  // namespace kvapp
