#include "core/CallModes.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>

namespace modelhost {

namespace {

constexpr std::array<std::string_view, kCategoryCount> kCategoryNames = {
    "facedata", "meshhelper", "uvhelper", "texturewriter", "imagerep", "attrdict"};

// What the functions of each category begin with, or are.
struct Prefix {
  std::string_view text;
  Category category;
};
constexpr Prefix kPrefixes[] = {
    {"SUMeshHelper", kMeshHelper},
    {"SUUVHelper", kUvHelper},
    {"SUFaceGetUVHelper", kUvHelper},
    {"SUTextureWriter", kTextureWriter},
    {"SUImageRep", kImageRep},
    {"SUTextureGetImageRep", kImageRep},
    {"SUTextureGetColorizedImageRep", kImageRep},
    {"SUImageGetImageRep", kImageRep},
    {"SUAttributeDictionary", kAttributes},
    {"SUEntityGetNumAttributeDictionaries", kAttributes},
    {"SUEntityGetAttributeDictionar", kAttributes},
    {"SUFaceGetPlane", kFaceData},
    {"SUFaceGetOuterLoop", kFaceData},
    {"SUFaceGetNumInnerLoops", kFaceData},
    {"SUFaceGetInnerLoops", kFaceData},
    {"SUFaceGetNumOpenings", kFaceData},
    {"SUFaceGetOpenings", kFaceData},
    {"SUOpening", kFaceData},
    {"SULoop", kFaceData},
    {"SUEdgeGetSmooth", kFaceData},
    {"SUEdgeGetNumFaces", kFaceData},
    {"SUEdgeGetFaces", kFaceData},
    {"SUVertexGetPosition", kFaceData},
};

int categoryOf(std::string_view function) {
  // Writing a texture reads and writes pixels: callers serialise it with those.
  if (function == "SUTextureWriterWriteTexture") return kImageRep;
  for (const Prefix& prefix : kPrefixes) {
    if (function.starts_with(prefix.text)) return prefix.category;
  }
  return -1;
}

constexpr std::size_t kMaxOverlaps = 100;

// In how many calls of the category each thread is, and how many threads are in one.
std::array<std::atomic<int>, kCategoryCount> threadsInside{};
thread_local std::array<int, kCategoryCount> depthHere{};

}  // namespace

std::atomic<unsigned> HostCall::modes_{0};

struct CallModes::Rule {
  std::int64_t nth = 0;
  SUResult result = SU_ERROR_GENERIC;
  bool onwards = false;
};

struct CallModes::State {
  std::mutex mutex;
  CallSite* first = nullptr;
  std::map<std::string, Rule> faults;
  std::map<std::string, std::int64_t> costs;
  std::array<std::atomic<bool>, kCategoryCount> serialised{};
  std::vector<std::string> overlaps;
};

CallModes& CallModes::instance() {
  static CallModes& modes = *new CallModes;
  return modes;
}

CallModes::State& CallModes::state() {
  static State& state = *new State;
  return state;
}

void CallModes::setMode(unsigned mode) {
  HostCall::modes_.fetch_or(mode, std::memory_order_relaxed);
}

// With the mutex held: what the rules say about one function goes into its site.
void CallModes::apply(CallSite& site) {
  State& s = state();
  std::int64_t cost = 0;
  if (const auto all = s.costs.find("*"); all != s.costs.end()) cost = all->second;
  if (const auto own = s.costs.find(site.name); own != s.costs.end()) cost = own->second;
  site.busyNanoseconds.store(cost, std::memory_order_relaxed);
  if (const auto fault = s.faults.find(site.name); fault != s.faults.end()) {
    site.failWith.store(fault->second.result, std::memory_order_relaxed);
    site.failOn.store(fault->second.onwards, std::memory_order_relaxed);
    site.failAt.store(fault->second.nth, std::memory_order_relaxed);
    s.faults.erase(fault);
  }
}

void CallModes::list(CallSite& site) {
  State& s = state();
  const std::lock_guard lock(s.mutex);
  if (site.listed.load(std::memory_order_relaxed)) return;
  site.category = categoryOf(site.name);
  site.next = s.first;
  s.first = &site;
  apply(site);
  site.listed.store(true, std::memory_order_release);
}

bool CallModes::watch(const std::vector<std::string>& serialised) {
  State& s = state();
  for (auto& flag : s.serialised) flag.store(false, std::memory_order_relaxed);
  for (const std::string& name : serialised) {
    if (name == "all") {
      for (auto& flag : s.serialised) flag.store(true, std::memory_order_relaxed);
      continue;
    }
    const auto at = std::find(kCategoryNames.begin(), kCategoryNames.end(), name);
    if (at == kCategoryNames.end()) return false;
    s.serialised[static_cast<std::size_t>(at - kCategoryNames.begin())].store(
        true, std::memory_order_relaxed);
  }
  setMode(kWatch);
  return true;
}

void CallModes::fail(std::string function, std::int64_t nth, SUResult result, bool onwards) {
  State& s = state();
  {
    const std::lock_guard lock(s.mutex);
    s.faults[std::move(function)] = Rule{nth, result, onwards};
    for (CallSite* site = s.first; site != nullptr; site = site->next) apply(*site);
  }
  setMode(kFault);
}

void CallModes::cost(std::string function, std::int64_t nanoseconds) {
  State& s = state();
  {
    const std::lock_guard lock(s.mutex);
    s.costs[std::move(function)] = nanoseconds;
    for (CallSite* site = s.first; site != nullptr; site = site->next) apply(*site);
  }
  setMode(kCost);
}

void CallModes::reset() {
  State& s = state();
  const std::lock_guard lock(s.mutex);
  HostCall::modes_.store(0, std::memory_order_relaxed);
  circles_.store(false, std::memory_order_relaxed);
  s.faults.clear();
  s.costs.clear();
  s.overlaps.clear();
  for (auto& flag : s.serialised) flag.store(false, std::memory_order_relaxed);
  for (CallSite* site = s.first; site != nullptr; site = site->next) {
    site->calls.store(0, std::memory_order_relaxed);
    site->failAt.store(0, std::memory_order_relaxed);
    site->failOn.store(false, std::memory_order_relaxed);
    site->busyNanoseconds.store(0, std::memory_order_relaxed);
  }
}

std::map<std::string, std::uint64_t> CallModes::counts() {
  State& s = state();
  const std::lock_guard lock(s.mutex);
  std::map<std::string, std::uint64_t> counts;
  for (CallSite* site = s.first; site != nullptr; site = site->next) {
    if (const auto n = site->calls.load(std::memory_order_relaxed)) counts[site->name] = n;
  }
  return counts;
}

std::vector<std::string> CallModes::overlaps() {
  State& s = state();
  const std::lock_guard lock(s.mutex);
  return s.overlaps;
}

void CallModes::noteOverlap(const CallSite& site) {
  State& s = state();
  const std::lock_guard lock(s.mutex);
  if (s.overlaps.size() >= kMaxOverlaps) return;
  s.overlaps.push_back(std::string(kCategoryNames[static_cast<std::size_t>(site.category)]) + ": " +
                       site.name + " ran while another thread was in a call of this kind");
}

void HostCall::enter(CallSite& site) {
  CallModes& modes = CallModes::instance();
  if (!site.listed.load(std::memory_order_acquire)) modes.list(site);
  entered_ = &site;
  site.calls.fetch_add(1, std::memory_order_relaxed);
  if (site.category >= 0) {
    const auto category = static_cast<std::size_t>(site.category);
    inCategory_ = true;
    if (depthHere[category]++ == 0) {
      const int others = threadsInside[category].fetch_add(1, std::memory_order_acq_rel);
      if (others > 0 && modes.state().serialised[category].load(std::memory_order_relaxed)) {
        modes.noteOverlap(site);
      }
    }
  }
  if (const auto busy = site.busyNanoseconds.load(std::memory_order_relaxed); busy > 0) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::nanoseconds(busy);
    while (std::chrono::steady_clock::now() < until) {
    }
  }
  if (site.failAt.load(std::memory_order_relaxed) > 0) {
    const auto left = site.failAt.fetch_sub(1, std::memory_order_relaxed);
    if (left == 1) {
      result_ = static_cast<SUResult>(site.failWith.load(std::memory_order_relaxed));
      if (site.failOn.load(std::memory_order_relaxed)) {
        site.failAt.store(1, std::memory_order_relaxed);
      }
    }
  }
}

void HostCall::leave() {
  if (!inCategory_) return;
  const auto category = static_cast<std::size_t>(entered_->category);
  if (--depthHere[category] == 0) {
    threadsInside[category].fetch_sub(1, std::memory_order_acq_rel);
  }
}

}  // namespace modelhost
