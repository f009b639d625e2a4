#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include <boost/interprocess/managed_shared_memory.hpp>

#include "app/Platform.h"
#include "link/WireRecords.h"

namespace kvapp {

// One manual-reset event shared with the plug-in's process. A set event stays set, and wakes every
// waiter, until somebody resets it.
//
// The peer may be killed while it holds the event's mutex, which then stays locked for ever, or is
// lost at once where the system notices. So every operation gives up after kLockLimit, maybe
// sooner, and says so; callers look at the peer's liveness next.
class EventPeer {
 public:
  enum class Outcome { Signaled, TimedOut, Locked };

  static constexpr std::chrono::milliseconds kLockLimit{200};

  // Makes the event, unsignaled, in place of any leftover of that name.
  static EventPeer Create(const std::string& name);
  // Empty while the other side has not made it.
  static std::optional<EventPeer> Open(const std::string& name);

  // False when the mutex could not be had.
  bool Set();
  bool Reset();
  // Does not reset the event.
  Outcome Wait(std::chrono::milliseconds timeout);

  // Takes the mutex and keeps it: what a peer does that is stopped inside an operation.
  bool TakeMutex();
  void ReleaseMutex();

  const ObjectIdentity& Identity() const { return identity_; }
  // False when the name now stands for another object, or for none.
  bool StillNamed() const;
  // Removes the name if it is still ours.
  void RemoveName() const;

 private:
  using Segment = boost::interprocess::managed_shared_memory;

  EventPeer(std::string segmentName, Segment segment, quellix::wire::EventState* state,
            ObjectIdentity identity);

  bool LooksSignaled() const;
  void Watch() const;

  std::string segmentName_;
  Segment segment_;
  quellix::wire::EventState* state_;
  ObjectIdentity identity_;
};

}  // namespace kvapp
