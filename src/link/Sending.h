#pragma once

#include "link/IpcInterface.h"

namespace quellix {

// Holds the link's send lock while it lives. In a callback it takes the lock only when nothing is
// in flight; otherwise it owns nothing, and what was to be sent must be held. One that may not wait
// owns nothing either while another thread has the lock.
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

}  // namespace quellix
