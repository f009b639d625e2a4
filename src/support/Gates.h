#pragma once

#include <array>
#include <mutex>
#include <string_view>

// Gates serialise categories of host calls that the host does not allow from several threads at
// once. A call site takes a gate around one group of calls and lets it go right after; no thread
// holds two gates at once, so no lock order arises.

namespace quellix {

enum class Gate { Traverse, FaceData, MeshHelper, UvHelper, TextureWriter, ImageRep, AttrDict };

inline constexpr std::size_t kGateCount = 7;

enum class GateMode { Parallel = 0, Mutex = 1 };

// Holds a category's mutex while it lives; holds nothing when the category is parallel.
using GateGuard = std::unique_lock<std::mutex>;

// Enters a category: blocks while another thread is in it and its mode is Mutex. Any thread.
[[nodiscard]] GateGuard GateAcquire(Gate gate);

// The modes in force, from QUELLIX_SU_GATES, read once.
const std::array<GateMode, kGateCount>& GateModes();

// The modes that a configuration text gives: "name:mode" items split at commas, later ones
// overriding earlier ones, "all" naming every category; items that say nothing known are skipped.
std::array<GateMode, kGateCount> ParseGateModes(std::string_view text);

// Whether face data may be read on several threads at once. Without a word about it in
// QUELLIX_SU_GATES it may not, although its gate is open then: collection is a stage of the
// geometry that one thread at a time runs, and a lock around each face would only add to it.
bool FaceDataIsShared();
bool ParseFaceDataIsShared(std::string_view text);

// Statistics of mutex-mode acquisitions, kept while the timing log is on.
void ResetGateStats();
void DumpGateStats();

}  // namespace quellix
