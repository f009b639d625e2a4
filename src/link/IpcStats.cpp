#include "link/IpcStats.h"

#include <array>
#include <atomic>

#include "link/WireRecords.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

constexpr std::uint32_t kEntries = 64;

struct CommandStats {
  std::atomic<std::uint64_t> wait{0};
  std::atomic<std::uint64_t> count{0};
  std::atomic<std::uint64_t> bytes{0};
};

std::array<CommandStats, kEntries>& Table() {
  static std::array<CommandStats, kEntries> table;
  return table;
}

}  // namespace

void StatsReset() {
  for (CommandStats& entry : Table()) {
    entry.wait = 0;
    entry.count = 0;
    entry.bytes = 0;
  }
}

void StatsDump() {
  if (!PerfLogEnabled()) return;
  for (std::uint32_t id = 0; id < kEntries; ++id) {
    const CommandStats& entry = Table()[id];
    if (entry.count == 0) continue;
    LogLine("  ipc %-24s n=%-6lld wait=%9.1fms bytes=%.2fMB", wire::CommandName(id),
            static_cast<long long>(entry.count), static_cast<double>(entry.wait) / 1000.0,
            static_cast<double>(entry.bytes) / 1048576.0);
  }
}

void StatsAddWait(std::uint32_t command, std::int64_t microseconds) {
  if (command < kEntries) Table()[command].wait += static_cast<std::uint64_t>(microseconds);
}

void StatsAddCount(std::uint32_t command) {
  if (command < kEntries) Table()[command].count += 1;
}

void StatsAddBytes(std::uint32_t command, std::uint64_t bytes) {
  if (command < kEntries) Table()[command].bytes += bytes;
}

}  // namespace quellix
