// How one command is handed over and waited for, and how commands wait for each other.

#include "link/IpcInterface.h"

#include <cstdio>
#include <cstring>

#include <boost/interprocess/exceptions.hpp>
#include <wx/string.h>

#include "link/IpcStats.h"
#include "link/Sending.h"
#include "support/Platform.h"
#include "support/Switches.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

constexpr std::uint32_t kSliceMs = 10;
constexpr double kReloadGraceMs = 100.0;
constexpr int kReportSeconds = 10;

// The plug-in goes on only after the renderer has finished these: it needs an answer, a closed
// renderer or a released view.
bool IsPipelined(std::uint32_t id) {
  switch (static_cast<wire::CommandId>(id)) {
    case wire::CommandId::CloseApp:
    case wire::CommandId::IsCached:
    case wire::CommandId::GetLinkCamera:
    case wire::CommandId::MemoryDestroyed:
      return false;
    default:
      return true;
  }
}

}  // namespace

IpcInterface::SendScope::SendScope(IpcInterface& owner, bool mayWait) : link(owner) {
  const std::thread::id self = std::this_thread::get_id();
  const bool inCallback = self == link.hostThread && link.serving;
  if (!inCallback && mayWait) {
    link.sendLock.Enter();
  } else if (!inCallback) {
    if (!link.sendLock.TryEnter()) return;
  } else if (link.sendOwner.load(std::memory_order_relaxed) == self || !link.sendLock.TryEnter()) {
    return;
  } else if (link.InFlight()) {
    link.sendLock.Leave();
    return;
  }
  owns = true;
  link.sendOwner.store(self, std::memory_order_relaxed);
}

IpcInterface::SendScope::~SendScope() {
  if (!owns) return;
  link.sendOwner.store(std::thread::id(), std::memory_order_relaxed);
  link.sendLock.Leave();
}

bool IpcInterface::IsAlive() const {
  return !ended && process.Alive();
}

// Asking the system costs as much as a small command's way to the renderer and back, so it is asked
// once in a tick of the clock.
bool IpcInterface::SeenAlive() {
  if (ended) return false;
  const std::uint64_t tick = CoarseTick();
  if (aliveTick.load(std::memory_order_relaxed) == tick) return true;
  if (!IsAlive()) return false;
  aliveTick.store(tick, std::memory_order_relaxed);
  return true;
}

bool IpcInterface::LaunchApp(const std::string& directory) {
  if (!process.Start(directory)) {
    ShowMessageBox("Failed to start the app", "Error");
    return false;
  }
  suppressCamera = false;
  return true;
}

double IpcInterface::Send(const CommandMessage& message, const SendTraits& traits) {
  if (!SeenAlive()) return 0.0;
  const SendScope scope(*this);
  if (!scope.Owns()) {
    Hold(message, traits);
    return 0.0;
  }
  // The renderer may have died, or said that it quits, during that wait.
  const bool completed = FlushPending();
  if (ended || (!completed && !IsAlive())) return 0.0;
  if (traits.isProgress && !AdmitProgress(message.Record())) return 0.0;
  if (traits.grows) {
    if (traits.countBytes && PerfLogEnabled()) StatsAddBytes(message.Id(), message.Size());
    const std::uint64_t sizeBefore = toAppSize;
    ExpandSharedMemory(message.Size());
    if (ended || (toAppSize != sizeBefore && !IsAlive())) return 0.0;
  } else if (!EnsureSegment(message.Size())) {
    LogLine("%s: left out, its %llu bytes have no room", wire::CommandName(message.Id()),
            static_cast<unsigned long long>(message.Size()));
    return kLeftOut;
  }
  message.WriteTo(toAppBase);
  if (traits.digest != nullptr) traits.digest(traits.digestContext);

  const Stopwatch watch;
  Commit(traits.wait);
  const double elapsed = watch.Ms();
  if (!pendingWait && !reloadOutstanding) SendHeld();
  return elapsed;
}

void IpcInterface::Hold(const CommandMessage& message, const SendTraits& traits) {
  HeldCommand command{std::vector<std::byte>(message.Size()), traits.wait, traits.isProgress};
  message.WriteTo(command.bytes.data());
  const std::lock_guard<std::mutex> lock(heldMutex);
  held.push_back(std::move(command));
  anyHeld = true;
}

bool IpcInterface::TakeHeld(HeldCommand& command) {
  if (!anyHeld) return false;
  const std::lock_guard<std::mutex> lock(heldMutex);
  if (held.empty()) return false;
  command = std::move(held.front());
  held.pop_front();
  anyHeld = !held.empty();
  return true;
}

// Under the send lock and with nothing in flight. Commands that callbacks add meanwhile are sent
// too; a renderer that is gone gets none.
void IpcInterface::SendHeld() {
  if (!anyHeld) return;
  HeldCommand command;
  while (TakeHeld(command)) {
    if (!IsAlive() || !EnsureSegment(command.bytes.size())) continue;
    if (command.isProgress && !AdmitProgress(command.bytes.data())) continue;
    std::memcpy(toAppBase, command.bytes.data(), command.bytes.size());
    Commit(command.wait);
    AwaitOutstanding();
  }
}

bool IpcInterface::Commit(bool wait) {
  std::uint32_t command = 0xFFFFFFFF;
  if (toAppBase != nullptr) std::memcpy(&command, toAppBase, sizeof command);
  const bool log = PerfLogEnabled();
  const Stopwatch watch;
  commandReady->Set();
  if (!wait) {
    reloadOutstanding = true;
    return true;
  }
  if (IpcPipelineEnabled() && IsPipelined(command)) {
    pendingWait = true;
    pendingCommand = static_cast<std::int32_t>(command);
    if (log) StatsAddCount(command);
    return true;
  }
  const bool completed = WaitCompletion();
  if (log) {
    StatsAddWait(command, watch.Microseconds());
    StatsAddCount(command);
  }
  return completed;
}

void IpcInterface::EndIfInterrupted() {
  if (ended || receiver == nullptr || std::this_thread::get_id() != hostThread) return;
  if (receiver->Interrupted()) ended = true;
}

// False when the renderer was gone, or the wait given up, before it had finished.
bool IpcInterface::WaitCompletion() {
  const bool onHost = std::this_thread::get_id() == hostThread;
  bool completed = commandDone->Take(kSliceMs);
  // Most commands are finished by now, and no time is read for them.
  const double start = completed ? 0.0 : NowMs() - kSliceMs;
  int lastReport = 0;
  while (!completed && IsAlive()) {
    if (onHost) ServeRequest();
    EndIfInterrupted();
    const int seconds = static_cast<int>((NowMs() - start) / 1000.0);
    if (seconds >= lastReport + kReportSeconds) {
      lastReport = seconds;
      std::fprintf(stderr, "[IPC] WaitCompletion: waiting %ds for KvApp\n", seconds);
      std::fflush(stderr);
    }
    completed = commandDone->Take(kSliceMs);
  }
  if (!completed) commandDone->Reset();
  return completed;
}

// False when something was waited for and not seen completed, so that the renderer may be gone.
bool IpcInterface::FlushPending() {
  const bool completed = AwaitOutstanding() && !anyHeld;
  SendHeld();
  return completed;
}

// Nothing is in flight afterwards, except a ReloadFromPlugin that the renderer did not acknowledge
// in time: what it does with that late is not to be taken for the end of a later command, so it is
// given a moment.
bool IpcInterface::AwaitOutstanding() {
  bool completed = true;
  if (pendingWait) {
    pendingWait = false;
    const Stopwatch watch;
    completed = WaitCompletion();
    if (PerfLogEnabled()) {
      StatsAddWait(static_cast<std::uint32_t>(pendingCommand), watch.Microseconds());
    }
    pendingCommand = -1;
  }
  if (reloadOutstanding) {
    const bool onHost = std::this_thread::get_id() == hostThread;
    const double start = NowMs();
    completed = commandDone->Wait(kSliceMs);
    while (!completed && IsAlive() && NowMs() - start < kReloadGraceMs) {
      if (onHost) ServeRequest();
      EndIfInterrupted();
      completed = commandDone->Wait(kSliceMs);
    }
    commandDone->Reset();
    reloadOutstanding = false;
  }
  return completed;
}

// Under the send lock.
bool IpcInterface::InFlight() {
  return (pendingWait || reloadOutstanding) && commandDone && !commandDone->Wait(0) && IsAlive();
}

bool IpcInterface::WouldHold() {
  if (!serving) return false;
  const SendScope scope(*this);
  return !scope.Owns();
}

void IpcInterface::PollToPlugin() {
  ServeRequest();
  if (serving || ended || (receiver != nullptr && receiver->Interrupted())) return;
  if (!anyHeld) return;
  // Another thread that holds the lock sends them itself, with its next command at the latest.
  const SendScope scope(*this, /*mayWait=*/false);
  if (scope.Owns()) FlushPending();
}

void IpcInterface::CloseApp() {
  SendPlain(wire::CommandId::CloseApp, true);
}

}  // namespace quellix
