#pragma once

#include <utility>

#include "link/IpcInterface.h"

namespace quellix {

// Holds the link's send lock while it lives, or owns nothing, and what was to be sent must be held:
// on a thread that is inside the lock already, and in a callback or signal handler that interrupted
// another command. One that may not wait owns nothing either while another thread has the lock.
class IpcInterface::SendScope {
 public:
  explicit SendScope(IpcInterface& owner, bool mayWait = true);
  ~SendScope();
  SendScope(const SendScope&) = delete;
  SendScope& operator=(const SendScope&) = delete;

  bool Owns() const { return owns; }

 private:
  IpcInterface& link;
  bool owns = false;
};

// Says while it lives that Ruby code runs inside the link, and how what it sends is to leave.
class IpcInterface::NestedRuby {
 public:
  NestedRuby(IpcInterface& owner, Sends nested)
      : link(owner), former(std::exchange(owner.sends, nested)) {}
  ~NestedRuby() { link.sends = former; }
  NestedRuby(const NestedRuby&) = delete;
  NestedRuby& operator=(const NestedRuby&) = delete;

 private:
  IpcInterface& link;
  Sends former;
};

}  // namespace quellix
