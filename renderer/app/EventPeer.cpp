#include "app/EventPeer.h"

#include <atomic>
#include <thread>
#include <utility>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/interprocess/sync/scoped_lock.hpp>

namespace kvapp {

namespace bip = boost::interprocess;
namespace wire = quellix::wire;

namespace {

using Lock = bip::scoped_lock<bip::interprocess_mutex>;

boost::posix_time::ptime DeadlineIn(std::chrono::milliseconds span) {
  return boost::posix_time::microsec_clock::universal_time() +
         boost::posix_time::milliseconds(span.count());
}

// A stream of small commands comes faster than a sleeper wakes, so a waiter first watches this
// long, the later part of it only while nothing else wants the processor. 0 where a processor is
// all there is.
std::chrono::microseconds WatchTime() {
  static const bool several = std::thread::hardware_concurrency() > 1;
  return std::chrono::microseconds(several ? 50 : 0);
}

constexpr std::chrono::microseconds kSelfishWatch{2};
// Looks at a flag before the first look at a clock, which costs more.
constexpr int kClocklessLooks = 80;

// Leaves the core's other hardware thread, on which the host may run, what looking would use up.
void Pause() {
#if defined(__x86_64__)
  _mm_pause();
#endif
}

// Not owning when the mutex could not be had in time, or when its owner died and took it along.
Lock TryLock(bip::interprocess_mutex& mutex) {
  try {
    Lock lock(mutex, bip::try_to_lock);
    if (lock.owns()) return lock;
    return Lock(mutex, DeadlineIn(EventPeer::kLockLimit));
  } catch (const bip::lock_exception&) {
    return Lock(mutex, bip::defer_lock);
  }
}

}  // namespace

EventPeer::EventPeer(std::string segmentName, Segment segment, wire::EventState* state,
                     ObjectIdentity identity)
    : segmentName_(std::move(segmentName)),
      segment_(std::move(segment)),
      state_(state),
      identity_(identity) {}

EventPeer EventPeer::Create(const std::string& name) {
  const std::string segmentName = name + wire::kEventSegmentSuffix;
  bip::shared_memory_object::remove(segmentName.c_str());
  Segment segment(bip::create_only, segmentName.c_str(), wire::kEventSegmentBytes);
  auto* state = segment.construct<wire::EventState>(wire::kEventStateObject)();
  state->signaled = 0;
  const ObjectIdentity identity = IdentityOfSharedObject(segmentName).value_or(ObjectIdentity{});
  return EventPeer(segmentName, std::move(segment), state, identity);
}

std::optional<EventPeer> EventPeer::Open(const std::string& name) {
  const std::string segmentName = name + wire::kEventSegmentSuffix;
  try {
    // A name that changes hands while it is opened is tried again by the caller.
    const auto before = IdentityOfSharedObject(segmentName);
    if (!before) return std::nullopt;
    Segment segment(bip::open_only, segmentName.c_str());
    auto* state = segment.find<wire::EventState>(wire::kEventStateObject).first;
    if (state == nullptr || IdentityOfSharedObject(segmentName) != before) return std::nullopt;
    return EventPeer(segmentName, std::move(segment), state, *before);
  } catch (const bip::interprocess_exception&) {
    return std::nullopt;
  }
}

bool EventPeer::Set() {
  const Lock lock = TryLock(state_->mutex);
  if (!lock.owns()) return false;
  std::atomic_ref(state_->signaled).store(1, std::memory_order_release);
  state_->condition.notify_all();
  return true;
}

bool EventPeer::Reset() {
  const Lock lock = TryLock(state_->mutex);
  if (!lock.owns()) return false;
  std::atomic_ref(state_->signaled).store(0, std::memory_order_release);
  return true;
}

bool EventPeer::LooksSignaled() const {
  return std::atomic_ref(state_->signaled).load(std::memory_order_acquire) != 0;
}

void EventPeer::Watch() const {
  using Clock = std::chrono::steady_clock;
  for (int i = 0; i < kClocklessLooks; ++i) {
    if (LooksSignaled()) return;
    Pause();
  }
  const Clock::time_point start = Clock::now();
  while (!LooksSignaled()) {
    const auto watched = Clock::now() - start;
    if (watched >= WatchTime()) return;
    if (watched > kSelfishWatch) {
      std::this_thread::yield();
    } else {
      Pause();
    }
  }
}

EventPeer::Outcome EventPeer::Wait(std::chrono::milliseconds timeout) {
  if (timeout.count() > 0) Watch();
  Lock lock = TryLock(state_->mutex);
  if (!lock.owns()) return Outcome::Locked;
  if (state_->signaled != 0) return Outcome::Signaled;
  const auto deadline = DeadlineIn(timeout);
  // A wait whose mutex was lost with its owner says true at once, for ever; so the deadline is
  // looked at here as well.
  while (state_->signaled == 0) {
    if (!state_->condition.timed_wait(lock, deadline) || DeadlineIn({}) >= deadline) {
      return state_->signaled != 0 ? Outcome::Signaled : Outcome::TimedOut;
    }
  }
  return Outcome::Signaled;
}

bool EventPeer::TakeMutex() {
  Lock lock = TryLock(state_->mutex);
  const bool taken = lock.owns();
  lock.release();
  return taken;
}

void EventPeer::ReleaseMutex() {
  state_->mutex.unlock();
}

bool EventPeer::StillNamed() const {
  return IdentityOfSharedObject(segmentName_) == identity_;
}

void EventPeer::RemoveName() const {
  if (StillNamed()) bip::shared_memory_object::remove(segmentName_.c_str());
}

}  // namespace kvapp
