#include "support/Gates.h"

#include <atomic>
#include <cstdint>

#include "support/Switches.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

constexpr std::array<const char*, kGateCount> kNames = {
    "traverse", "facedata", "meshhelper", "uvhelper", "texturewriter", "imagerep", "attrdict"};

constexpr std::array<GateMode, kGateCount> kDefaults = {
    GateMode::Parallel, GateMode::Parallel, GateMode::Mutex,   GateMode::Mutex,
    GateMode::Mutex,    GateMode::Mutex,    GateMode::Parallel};

struct GateState {
  std::mutex mutex;
  std::atomic<std::int64_t> waitMicroseconds{0};
  std::atomic<std::int64_t> count{0};
};

GateState& StateOf(std::size_t gate) {
  static std::array<GateState, kGateCount> states;
  return states[gate];
}

void ApplyItem(std::string_view item, std::array<GateMode, kGateCount>& modes) {
  const std::size_t colon = item.find(':');
  if (colon == std::string_view::npos) return;
  const std::string_view name = item.substr(0, colon);
  const std::string_view word = item.substr(colon + 1);
  GateMode mode;
  if (word == "parallel") {
    mode = GateMode::Parallel;
  } else if (word == "mutex") {
    mode = GateMode::Mutex;
  } else {
    return;
  }
  for (std::size_t gate = 0; gate < kGateCount; ++gate) {
    if (name == "all" || name == kNames[gate]) modes[gate] = mode;
  }
}

void ApplyItems(std::string_view text, std::array<GateMode, kGateCount>& modes) {
  while (!text.empty()) {
    const std::size_t comma = text.find(',');
    ApplyItem(text.substr(0, comma), modes);
    if (comma == std::string_view::npos) break;
    text.remove_prefix(comma + 1);
  }
}

}  // namespace

std::array<GateMode, kGateCount> ParseGateModes(std::string_view text) {
  std::array<GateMode, kGateCount> modes = kDefaults;
  ApplyItems(text, modes);
  return modes;
}

bool ParseFaceDataIsShared(std::string_view text) {
  std::array<GateMode, kGateCount> modes;
  modes.fill(GateMode::Mutex);
  ApplyItems(text, modes);
  return modes[static_cast<std::size_t>(Gate::FaceData)] == GateMode::Parallel;
}

bool FaceDataIsShared() {
  static const bool shared = ParseFaceDataIsShared(SuGatesText());
  return shared;
}

const std::array<GateMode, kGateCount>& GateModes() {
  static const std::array<GateMode, kGateCount> modes = ParseGateModes(SuGatesText());
  return modes;
}

GateGuard GateAcquire(Gate gate) {
  const auto index = static_cast<std::size_t>(gate);
  if (GateModes()[index] == GateMode::Parallel) return GateGuard();
  GateState& state = StateOf(index);
  if (!PerfLogEnabled()) return GateGuard(state.mutex);
  const double start = NowMs();
  GateGuard guard(state.mutex);
  state.waitMicroseconds.fetch_add(MicrosecondsSince(start), std::memory_order_relaxed);
  state.count.fetch_add(1, std::memory_order_relaxed);
  return guard;
}

void ResetGateStats() {
  for (std::size_t gate = 0; gate < kGateCount; ++gate) {
    StateOf(gate).waitMicroseconds = 0;
    StateOf(gate).count = 0;
  }
}

void DumpGateStats() {
  if (!PerfLogEnabled()) return;
  for (std::size_t gate = 0; gate < kGateCount; ++gate) {
    const std::int64_t count = StateOf(gate).count;
    if (count == 0) continue;
    LogLine("  sugate %-14s mode=%-8s n=%-8lld lockwait=%9.1fms", kNames[gate],
            GateModes()[gate] == GateMode::Mutex ? "mutex" : "parallel",
            static_cast<long long>(count),
            static_cast<double>(StateOf(gate).waitMicroseconds) / 1000.0);
  }
}

}  // namespace quellix
