#pragma once

#include <cstdint>

// Counts of what went over the link, kept while the timing log is on and written into it at the end
// of an export. Counters may be added to from any thread.

namespace quellix {

void StatsReset();
void StatsDump();
void StatsAddWait(std::uint32_t command, std::int64_t microseconds);
void StatsAddCount(std::uint32_t command);
void StatsAddBytes(std::uint32_t command, std::uint64_t bytes);

}  // namespace quellix
