#include "app/CommandLog.h"

#include <algorithm>

#include "app/Fnv.h"
#include "app/MessageDigest.h"

namespace kvapp {

using nlohmann::json;

CommandLog::CommandLog(const std::filesystem::path& folder, std::size_t bytesLogged)
    : bytesLogged_(bytesLogged) {
  if (!folder.empty()) file_.open(folder / "commands.jsonl", std::ios::trunc);
}

std::uint64_t CommandLog::Add(std::uint64_t number, const Decoded& decoded,
                              std::span<const std::byte> segment) {
  const std::uint64_t bytes = std::max<std::uint64_t>(decoded.messageBytes, decoded.recordBytes);
  Count& count = counts_[decoded.id < counts_.size() ? decoded.id : 0];
  ++count.commands;
  count.bytes += bytes;
  ++commands_;
  bytes_ += bytes;
  if (file_.is_open()) Write(number, decoded, bytes, segment);
  return count.commands;
}

void CommandLog::Write(std::uint64_t number, const Decoded& decoded, std::uint64_t bytes,
                       std::span<const std::byte> segment) {
  json line = {{"n", number},
               {"id", decoded.id},
               {"name", ShortCommandName(decoded.id)},
               {"record", decoded.recordBytes},
               {"message", bytes},
               {"fields", KeyFields(decoded.command)}};
  if (decoded.problems.empty()) {
    const MessageDigest digest = DigestOf(decoded, segment);
    line["digest"] = DigestText(digest.value);
    if (!digest.slot.empty()) {
      digests_[digest.slot].count += digest.count;
      digests_[digest.slot].value ^= digest.value;
    }
  } else {
    line["problems"] = decoded.problems;
  }
  if (bytesLogged_ > 0) {
    const std::uint64_t shown =
        std::min<std::uint64_t>({bytesLogged_, std::max<std::uint64_t>(bytes, 4), segment.size()});
    line["bytes"] = HexText(segment.first(static_cast<std::size_t>(shown)));
  }
  file_ << line.dump(-1, ' ', false, json::error_handler_t::replace) << std::endl;
}

std::map<std::string, CommandLog::Count> CommandLog::Counts() const {
  std::map<std::string, Count> named;
  for (std::uint32_t id = 0; id < counts_.size(); ++id) {
    if (counts_[id].commands > 0) named[ShortCommandName(id)] = counts_[id];
  }
  return named;
}

}  // namespace kvapp
