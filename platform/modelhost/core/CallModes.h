// The test modes: watch, fault and cost, which HostCall serves, and models that place a definition
// inside itself. Thread-safe.
#pragma once

#include <SketchUpAPI/common.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "core/HostCall.h"

namespace modelhost {

// Calls that a caller may want to serialise together.
enum Category : int {
  kFaceData = 0,
  kMeshHelper,
  kUvHelper,
  kTextureWriter,
  kImageRep,
  kAttributes,
  kCategoryCount
};

class CallModes {
 public:
  static CallModes& instance();

  // Counts calls, and reports calls of one of `serialised` (names such as "meshhelper"; "all"
  // stands for every category) that run at the same time on two threads. Returns false for a name
  // that is none.
  bool watch(const std::vector<std::string>& serialised);
  // The `nth` call from now (1 is the next) of `function` answers `result` without doing
  // anything; `onwards` makes every later one fail too.
  void fail(std::string function, std::int64_t nth, SUResult result, bool onwards);
  // Every call of `function` ("*" is every function) keeps its thread busy for that much longer.
  void cost(std::string function, std::int64_t nanoseconds);
  // Whether a definition may be placed inside itself.
  void allowCircles() { circles_.store(true, std::memory_order_relaxed); }
  bool circlesAllowed() const { return circles_.load(std::memory_order_relaxed); }
  // Switches every mode off and forgets counts and reports.
  void reset();

  std::map<std::string, std::uint64_t> counts();
  std::vector<std::string> overlaps();

 private:
  friend class HostCall;
  enum Mode : unsigned { kWatch = 1, kFault = 2, kCost = 4 };
  struct Rule;

  CallModes() = default;
  void list(CallSite& site);
  void apply(CallSite& site);
  void setMode(unsigned mode);
  void noteOverlap(const CallSite& site);

  struct State;
  State& state();

  std::atomic<bool> circles_{false};
};

}  // namespace modelhost
