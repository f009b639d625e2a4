// The segments and events of our end: making, growing, opening the renderer's side, giving up.

#include "link/IpcInterface.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "support/Platform.h"
#include "support/TimingLog.h"

namespace quellix {

namespace bi = boost::interprocess;

namespace {

constexpr std::uint64_t kFirstMessageBytes = 67'108'864;
constexpr double kMiB = 1.0 / 1048576.0;

void RemoveRendererObjects() {
  bi::shared_memory_object::remove(wire::kToPluginSegment);
  ManualEvent::Remove(wire::kRequestReady);
  ManualEvent::Remove(wire::kRequestDone);
}

}  // namespace

IpcInterface::~IpcInterface() = default;

bool IpcInterface::OpenChannel(RequestReceiver* requestReceiver) {
  receiver = requestReceiver;
  hostThread = std::this_thread::get_id();
  ownProcess = CurrentProcessId();

  bi::shared_memory_object::remove(wire::kToAppSegment);
  RemoveRendererObjects();
  ManualEvent::Remove(wire::kCommandReady);
  ManualEvent::Remove(wire::kCommandDone);
  ManualEvent::Remove(wire::kSegmentReplaced);

  try {
    ExpandSharedMemory(kFirstMessageBytes);
  } catch (const bi::interprocess_exception& error) {
    LogLine("OpenChannel: %s", error.what());
  }
  if (toAppBase != nullptr) return true;
  ReleaseChannel();
  return false;
}

void IpcInterface::CreateEvents() {
  const auto alive = [this] { return PeerAlive(); };
  commandReady = ManualEvent::Create(wire::kCommandReady, alive);
  commandDone = ManualEvent::Create(wire::kCommandDone, alive);
  segmentReplaced = ManualEvent::Create(wire::kSegmentReplaced, alive);
}

// Asked by an event that cannot have its lock, time and again.
bool IpcInterface::PeerAlive() {
  EndIfInterrupted();
  return IsAlive();
}

// False once another process has made a channel of its own under the same names.
bool IpcInterface::StillOurs() const {
  return !commandReady || commandReady->StillNamed();
}

void IpcInterface::AwaitAttachment() {
  constexpr double kPatienceMs = 1000.0;
  const double start = NowMs();
  while (segmentReplaced && segmentReplaced->Wait(0) && IsAlive() &&
         NowMs() - start < kPatienceMs) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

void IpcInterface::ExpandSharedMemory(std::uint64_t requiredBytes) {
  if (toAppSize == 0) requiredBytes = std::max(requiredBytes, kFirstMessageBytes);
  auto target = static_cast<std::uint64_t>(static_cast<float>(requiredBytes) * 1.2f);
  if (target <= toAppSize) return;
  if (toAppSize != 0) target = std::max(target, 2 * toAppSize);

  const Stopwatch watch;
  const std::uint64_t oldSize = toAppSize;
  if (toAppBase != nullptr) AcknowledgeMemoryDestroyed();
  if (!StillOurs()) {
    // What stands under the names now is the newer channel's, whose renderer may be opening it.
    LogLine("ExpandSharedMemory: the channel belongs to another host now");
    ended = true;
    return;
  }
  if (!segmentReplaced) CreateEvents();
  toAppBase = nullptr;
  toAppSize = 0;
  toAppRegion.reset();
  toAppMemory.reset();

  bi::shared_memory_object::remove(wire::kToAppSegment);
  // The segment carries the whole model, so only the user who runs the host may open it.
  auto memory = std::make_unique<bi::shared_memory_object>(bi::create_only, wire::kToAppSegment,
                                                           bi::read_write, OwnerOnlyPermissions());
  try {
    memory->truncate(static_cast<bi::offset_t>(target));
    toAppRegion = std::make_unique<bi::mapped_region>(*memory, bi::read_write);
  } catch (...) {
    bi::shared_memory_object::remove(wire::kToAppSegment);
    throw;
  }
  toAppMemory = std::move(memory);
  toAppBase = static_cast<std::byte*>(toAppRegion->get_address());
  toAppSize = target;
  std::memset(toAppBase, 0, sizeof(std::uint32_t));
  segmentReplaced->Set();
  LogLine("ExpandSharedMemory: %.1fMB -> %.1fMB (%.1f ms)", static_cast<double>(oldSize) * kMiB,
          static_cast<double>(target) * kMiB, watch.Ms());
}

// Returns once the renderer has let go of the segment's old mapping, or is gone.
void IpcInterface::AcknowledgeMemoryDestroyed() {
  const auto id = static_cast<std::uint32_t>(wire::CommandId::MemoryDestroyed);
  std::memcpy(toAppBase, &id, sizeof id);
  Commit(true);
}

bool IpcInterface::EnsureSegment(std::uint64_t messageBytes) {
  if (toAppBase == nullptr) {
    try {
      ExpandSharedMemory(kFirstMessageBytes);
    } catch (const bi::interprocess_exception& error) {
      LogLine("ExpandSharedMemory: %s", error.what());
    }
  }
  return toAppBase != nullptr && messageBytes <= toAppSize;
}

// False while the renderer has not made its side, or where what stands under its names is another
// host's: its renderer makes them only after that host has taken the channel's names over.
bool IpcInterface::OpenToPluginSide() {
  if (requestReady && requestDone) return true;
  if (!commandReady) return false;
  const auto alive = [this] { return PeerAlive(); };
  try {
    requestReady = ManualEvent::Open(wire::kRequestReady, alive);
    requestDone = ManualEvent::Open(wire::kRequestDone, alive);
    if (StillOurs()) return true;
  } catch (const std::exception&) {  // the renderer is not up yet
  }
  requestReady.reset();
  requestDone.reset();
  return false;
}

// Maps the renderer's segment, anew when it has grown or another one has taken its place. A mapping
// reaches no further than its object, and reading behind an end that was moved would end the
// process: false when there is no whole header to be read.
bool IpcInterface::MapRequestSegment() {
  bi::offset_t size = 0;
  const std::optional<ObjectIdentity> named = IdentityOfObject(wire::kToPluginSegment);
  if (toPluginMemory && (!named || named == toPluginIdentity) && toPluginMemory->get_size(size)) {
    const auto mapped = static_cast<bi::offset_t>(toPluginRegion->get_size());
    if (size <= mapped) return size == mapped;
  }
  try {
    auto memory = std::make_unique<bi::shared_memory_object>(bi::open_only, wire::kToPluginSegment,
                                                             bi::read_write);
    auto region = std::make_unique<bi::mapped_region>(*memory, bi::read_write);
    if (region->get_size() < sizeof(wire::RequestHeader)) return false;
    toPluginMemory = std::move(memory);
    toPluginRegion = std::move(region);
    toPluginBase = static_cast<std::byte*>(toPluginRegion->get_address());
    toPluginIdentity = named;
    return true;
  } catch (const bi::interprocess_exception&) {
    return false;
  }
}

void IpcInterface::ReleaseChannel() {
  const bool rendererGone = process.Id() > 0 && !process.Alive();
  const bool ours = ownProcess == CurrentProcessId() && StillOurs();
  pendingWait = false;
  pendingCommand = -1;
  reloadsOutstanding = 0;
  {
    const std::lock_guard<std::mutex> lock(heldMutex);
    held.clear();
    anyHeld = false;
  }

  toAppBase = nullptr;
  toAppSize = 0;
  toAppRegion.reset();
  toAppMemory.reset();
  commandReady.reset();
  commandDone.reset();
  segmentReplaced.reset();

  toPluginBase = nullptr;
  toPluginIdentity.reset();
  toPluginRegion.reset();
  toPluginMemory.reset();
  requestReady.reset();
  requestDone.reset();

  if (!ours) return;
  ManualEvent::Remove(wire::kCommandReady);
  ManualEvent::Remove(wire::kCommandDone);
  ManualEvent::Remove(wire::kSegmentReplaced);
  bi::shared_memory_object::remove(wire::kToAppSegment);
  // A living renderer removes its own objects when it ends; a killed one never could.
  if (rendererGone) RemoveRendererObjects();
}

}  // namespace quellix
