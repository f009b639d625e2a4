#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <boost/interprocess/managed_shared_memory.hpp>

#include "link/SharedObjects.h"
#include "link/WireRecords.h"

namespace quellix {

// A manual-reset event that two processes share by name: once set it stays set, and lets every
// waiter through, until somebody resets it. Any thread of either process may call Set, Reset and
// Wait.
//
// A process may be killed at any instant, also while it holds the event's mutex. So no call here
// blocks on that mutex for good: each asks the peer-alive predicate while it cannot have the lock,
// and gives up once the peer is gone.
class ManualEvent {
 public:
  using PeerAlive = std::function<bool()>;

  static constexpr std::uint32_t kInfinite = 0xFFFFFFFF;

  // Creator's role: replaces a leftover of that name; the event starts unsignaled. Throws
  // boost::interprocess::interprocess_exception when the segment cannot be made.
  static std::unique_ptr<ManualEvent> Create(const std::string& name, PeerAlive peerAlive);

  // Opener's role. Throws interprocess_exception while there is no such segment, and
  // std::runtime_error while the creator has not finished it; a creator that died half-way is not
  // waited for.
  static std::unique_ptr<ManualEvent> Open(const std::string& name, PeerAlive peerAlive);

  // Removes the name of an event's segment; what is mapped stays usable. No error when it is not
  // there.
  static void Remove(const std::string& name) noexcept;

  // False when the name now stands for another object, or for none.
  bool StillNamed() const;

  ManualEvent(const ManualEvent&) = delete;
  ManualEvent& operator=(const ManualEvent&) = delete;

  // False when the peer died with the event's lock and nothing could be done.
  bool Set();
  bool Reset();

  // True when the event is, or within the time becomes, signaled; it is not reset. A time of 0 is a
  // test.
  bool Wait(std::uint32_t timeoutMs);

  // The same, and resets the event it has seen, for the only one who waits for it.
  bool Take(std::uint32_t timeoutMs);

 private:
  ManualEvent(std::string eventName, boost::interprocess::managed_shared_memory eventSegment,
              wire::EventState* eventState, PeerAlive alive);

  using Clock = std::chrono::steady_clock;
  static constexpr Clock::rep kNotWaiting = 0;

  enum class After { Keep, Reset };

  bool LockBounded();
  bool LooksSignaled() const;
  bool ConfirmSignaled(After after);
  bool Await(std::uint32_t timeoutMs, After after);
  bool WatchUntil(Clock::time_point start, Clock::time_point end) const;
  bool SleepUntil(Clock::time_point since, Clock::time_point deadline, After after);

  std::string name;
  boost::interprocess::managed_shared_memory segment;
  wire::EventState* state;
  PeerAlive peerAlive;
  // When the waits began that the event, since its last reset, has not answered while they watched.
  std::atomic<Clock::rep> waitingSince{kNotWaiting};
  std::optional<ObjectIdentity> identity;
};

}  // namespace quellix
