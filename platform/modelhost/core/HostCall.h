// The head of every API function. Normally it costs one relaxed read of a flag; when a test has
// switched a mode on, it counts the call, looks for overlapping calls, makes the call slower or
// makes it fail.
#pragma once

#include <SketchUpAPI/common.h>

#include <atomic>
#include <cstdint>

namespace modelhost {

// One API function; constant-initialised, so it needs no guard.
struct CallSite {
  const char* name;
  std::atomic<std::uint64_t> calls{0};
  std::atomic<bool> listed{false};
  CallSite* next = nullptr;
  // Set when the site is listed, before `listed` is.
  int category = -1;
  std::atomic<std::int64_t> busyNanoseconds{0};
  // The call that fails counts down to 0 from here; 0 is never.
  std::atomic<std::int64_t> failAt{0};
  std::atomic<bool> failOn{false};
  std::atomic<int> failWith{0};

  constexpr explicit CallSite(const char* functionName) : name(functionName) {}
};

class HostCall {
 public:
  explicit HostCall(CallSite& site) {
    if (modes_.load(std::memory_order_relaxed) != 0) [[unlikely]] {
      enter(site);
    }
  }
  ~HostCall() {
    if (entered_ != nullptr) [[unlikely]] {
      leave();
    }
  }
  HostCall(const HostCall&) = delete;
  HostCall& operator=(const HostCall&) = delete;

  bool failed() const { return result_ != SU_ERROR_NONE; }
  SUResult result() const { return result_; }

 private:
  friend class CallModes;
  void enter(CallSite& site);
  void leave();

  static std::atomic<unsigned> modes_;
  CallSite* entered_ = nullptr;
  bool inCategory_ = false;
  SUResult result_ = SU_ERROR_NONE;
};

}  // namespace modelhost

// For functions that answer with a result code.
#define MODELHOST_CALL(name)                               \
  static constinit ::modelhost::CallSite callSite_{#name}; \
  const ::modelhost::HostCall hostCall_{callSite_};        \
  if (hostCall_.failed()) [[unlikely]]                     \
  return hostCall_.result()

// For the others, which cannot fail.
#define MODELHOST_CALL_INFALLIBLE(name)                    \
  static constinit ::modelhost::CallSite callSite_{#name}; \
  const ::modelhost::HostCall hostCall_ {                  \
    callSite_                                              \
  }
