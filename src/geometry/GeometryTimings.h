#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

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

// What the pipeline's threads wait for.
struct GeometryWaits {
  TimingCounter collectorLock;  // any thread: another reads or writes what faces are known
  TimingCounter chunkBound;     // the walk: the pool is as far behind as it may be
  TimingCounter queueBound;     // the walk: the sender is
  TimingCounter senderIdle;     // the sender: nothing is queued
  TimingCounter senderForMesh;  // the sender: the next mesh is not finished
};

GeometryTimings& Timings();
GeometryWaits& Waits();
// Both.
void ResetGeometryTimings();
// Writes the line of the three sums into the timing log.
void DumpGeometryTimings();

// Adds the time of its life to a counter.
class ScopedTiming {
 public:
  // With `wanted` false it does nothing.
  explicit ScopedTiming(TimingCounter& timedCounter, bool wanted = true)
      : counter(wanted && PerfLogEnabled() ? &timedCounter : nullptr),
        start(counter ? NowMs() : 0.0) {}
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

// Takes a lock; the time is counted when it is not to be had at once.
template <class Lock>
Lock LockTimed(typename Lock::mutex_type& mutex, TimingCounter& counter) {
  Lock lock(mutex, std::try_to_lock);
  if (lock.owns_lock()) return lock;
  const ScopedTiming timing(counter);
  lock.lock();
  return lock;
}

}  // namespace quellix
