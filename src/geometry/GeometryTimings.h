#pragma once

#include <atomic>
#include <cstdint>

#include "support/TimingLog.h"

// Where the time of the faces goes. Kept only while the timing log is on; any thread.

namespace quellix {

struct TimingCounter {
  std::atomic<std::int64_t> microseconds{0};
  std::atomic<std::int64_t> count{0};
};

struct GeometryTimings {
  TimingCounter collectFace;       // one whole face
  TimingCounter meshHelperCreate;  // one creation of a mesh helper, or one whole run on a worker
  TimingCounter uvHelper;          // one creation of UV helpers, or one block of UV queries
};

GeometryTimings& Timings();
void ResetGeometryTimings();
// Writes the line of the three sums into the timing log.
void DumpGeometryTimings();

// Adds the time of its life to a counter.
class ScopedTiming {
 public:
  explicit ScopedTiming(TimingCounter& timedCounter)
      : counter(PerfLogEnabled() ? &timedCounter : nullptr), start(counter ? NowMs() : 0.0) {}
  ScopedTiming(const ScopedTiming&) = delete;
  ScopedTiming& operator=(const ScopedTiming&) = delete;
  ~ScopedTiming() {
    if (counter == nullptr) return;
    counter->microseconds.fetch_add(MicrosecondsSince(start), std::memory_order_relaxed);
    counter->count.fetch_add(1, std::memory_order_relaxed);
  }

 private:
  TimingCounter* counter;
  double start;
};

}  // namespace quellix
