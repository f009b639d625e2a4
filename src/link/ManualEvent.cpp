#include "link/ManualEvent.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <utility>

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/interprocess/shared_memory_object.hpp>

#include "support/CpuPause.h"

namespace quellix {

namespace {

namespace bi = boost::interprocess;

// How long a lock attempt lasts before the peer's life is looked at again.
constexpr int kLockSliceMs = 20;

// A waiter watches the flag this long before it sleeps: an answer to a small command comes within a
// few microseconds, a sleep and its wake-up cost tens of them. Soon it offers its processor to
// others with every look, so that where processors are few it takes nothing from whoever could use
// one, the peer above all. On a single processor there is nothing to watch for.
constexpr int kClocklessLooks = 80;  // about as long as the selfish watch
constexpr std::chrono::microseconds kSelfishWatch{2};

std::chrono::microseconds WatchTime() {
  static const bool several = std::thread::hardware_concurrency() > 1;
  return std::chrono::microseconds(several ? 50 : 0);
}

std::string SegmentName(const std::string& name) {
  return name + wire::kEventSegmentSuffix;
}

}  // namespace

ManualEvent::ManualEvent(std::string eventName, bi::managed_shared_memory eventSegment,
                         wire::EventState* eventState, PeerAlive alive)
    : name(std::move(eventName)),
      segment(std::move(eventSegment)),
      state(eventState),
      peerAlive(std::move(alive)),
      identity(IdentityOfObject(SegmentName(name))) {}

std::unique_ptr<ManualEvent> ManualEvent::Create(const std::string& name, PeerAlive peerAlive) {
  Remove(name);
  bi::managed_shared_memory segment(bi::create_only, SegmentName(name).c_str(),
                                    wire::kEventSegmentBytes);
  auto* state = segment.construct<wire::EventState>(wire::kEventStateObject)();
  state->signaled = 0;
  return std::unique_ptr<ManualEvent>(
      new ManualEvent(name, std::move(segment), state, std::move(peerAlive)));
}

std::unique_ptr<ManualEvent> ManualEvent::Open(const std::string& name, PeerAlive peerAlive) {
  if (!IsManagedSegmentReady(SegmentName(name), wire::kEventSegmentBytes)) {
    throw std::runtime_error("ManualEvent: state not found (creator not ready)");
  }
  bi::managed_shared_memory segment(bi::open_only, SegmentName(name).c_str());
  auto* state = segment.find<wire::EventState>(wire::kEventStateObject).first;
  if (state == nullptr) {
    throw std::runtime_error("ManualEvent: state not found (creator not ready)");
  }
  return std::unique_ptr<ManualEvent>(
      new ManualEvent(name, std::move(segment), state, std::move(peerAlive)));
}

void ManualEvent::Remove(const std::string& name) noexcept {
  bi::shared_memory_object::remove(SegmentName(name).c_str());
}

bool ManualEvent::StillNamed() const {
  return IdentityOfObject(SegmentName(name)) == identity;
}

bool ManualEvent::LockBounded() {
  try {
    // Nearly always free; a deadline would cost more than the lock.
    if (state->mutex.try_lock()) return true;
    for (;;) {
      const auto deadline = boost::posix_time::microsec_clock::universal_time() +
                            boost::posix_time::milliseconds(kLockSliceMs);
      if (state->mutex.timed_lock(deadline)) return true;
      if (!peerAlive()) return false;
    }
  } catch (const bi::interprocess_exception&) {
    // Where the system tells: whoever held the lock has died, and nobody will have it again.
    return false;
  }
}

bool ManualEvent::Set() {
  if (!LockBounded()) return false;
  std::atomic_ref<std::uint32_t>(state->signaled).store(1, std::memory_order_release);
  state->condition.notify_all();
  state->mutex.unlock();
  return true;
}

bool ManualEvent::Reset() {
  if (!LockBounded()) return false;
  std::atomic_ref<std::uint32_t>(state->signaled).store(0, std::memory_order_release);
  state->mutex.unlock();
  waitingSince.store(kNotWaiting, std::memory_order_relaxed);
  return true;
}

bool ManualEvent::LooksSignaled() const {
  return std::atomic_ref<std::uint32_t>(state->signaled).load(std::memory_order_acquire) != 0;
}

// What the setter wrote before it took the lock is visible for certain once the lock was ours.
bool ManualEvent::ConfirmSignaled(After after) {
  if (!LockBounded()) return false;
  std::atomic_ref<std::uint32_t> flag(state->signaled);
  const bool signaled = flag.load(std::memory_order_relaxed) != 0;
  if (signaled && after == After::Reset) flag.store(0, std::memory_order_release);
  state->mutex.unlock();
  if (signaled && after == After::Reset) waitingSince.store(kNotWaiting, std::memory_order_relaxed);
  return signaled;
}

bool ManualEvent::Wait(std::uint32_t timeoutMs) {
  return Await(timeoutMs, After::Keep);
}

bool ManualEvent::Take(std::uint32_t timeoutMs) {
  return Await(timeoutMs, After::Reset);
}

// The waiter watches the flag and sleeps in between instead of sleeping on the condition: a thread
// that wakes from the condition must take the mutex again, without a time limit, and where mutexes
// are not robust it would hang for ever behind a peer that was killed with it. Sleeps grow with the
// time already waited, also in waits before that ended without the event, so that a long wait costs
// little and a short one is seen early. Whoever waits on the other side may use the condition: Set
// notifies it.
bool ManualEvent::Await(std::uint32_t timeoutMs, After after) {
  if (timeoutMs == 0) return LooksSignaled() && ConfirmSignaled(after);
  // The first looks come without a clock, which costs more than they do.
  for (int i = 0; i < kClocklessLooks; ++i) {
    if (LooksSignaled() && ConfirmSignaled(after)) return true;
    CpuPause();
  }

  const Clock::time_point start = Clock::now();
  const Clock::time_point deadline = timeoutMs == kInfinite
                                         ? Clock::time_point::max()
                                         : start + std::chrono::milliseconds(timeoutMs);
  const Clock::rep before = waitingSince.load(std::memory_order_relaxed);
  if (before != kNotWaiting) {
    return SleepUntil(Clock::time_point(Clock::duration(before)), deadline, after);
  }
  const Clock::time_point watchEnd = std::min<Clock::time_point>(deadline, start + WatchTime());
  if (WatchUntil(start, watchEnd) && ConfirmSignaled(after)) return true;
  waitingSince.store(start.time_since_epoch().count(), std::memory_order_relaxed);
  return SleepUntil(start, deadline, after);
}

bool ManualEvent::WatchUntil(Clock::time_point start, Clock::time_point end) const {
  while (!LooksSignaled()) {
    const Clock::time_point now = Clock::now();
    if (now >= end) return false;
    if (now - start > kSelfishWatch) {
      std::this_thread::yield();
    } else {
      CpuPause();
    }
  }
  return true;
}

bool ManualEvent::SleepUntil(Clock::time_point since, Clock::time_point deadline, After after) {
  constexpr std::chrono::nanoseconds kShortestNap = std::chrono::microseconds(10);
  constexpr std::chrono::nanoseconds kLongNap = std::chrono::milliseconds(3);
  for (;;) {
    if (LooksSignaled() && ConfirmSignaled(after)) return true;
    const Clock::time_point now = Clock::now();
    if (now >= deadline) return false;
    const std::chrono::nanoseconds waited = now - since;
    // Seen at most a quarter late at first, 3 ms later on, and in the end a percent.
    const std::chrono::nanoseconds longest = std::max(kLongNap, waited / 100);
    const std::chrono::nanoseconds nap = std::clamp(waited / 4, kShortestNap, longest);
    std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(nap, deadline - now));
  }
}

}  // namespace quellix
