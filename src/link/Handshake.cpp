// How one command is handed over and waited for.

#include "link/IpcInterface.h"

#include <cstdio>
#include <cstring>

#include "link/IpcStats.h"
#include "link/Sending.h"
#include "support/Platform.h"
#include "support/Switches.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

constexpr std::uint32_t kSliceMs = 10;
constexpr int kReportSeconds = 10;

// How long the end of a reload that the renderer was only told of is waited for before the next
// command is written. A renderer that takes its commands one by one would not take it sooner.
constexpr double kReloadGraceMs = 1000.0;

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

bool IpcInterface::IsAlive() const {
  return !ended && process.Alive() && ownProcess == CurrentProcessId();
}

// Asking the system costs as much as a small command's way to the renderer and back, so it is asked
// once in a tick of the clock.
bool IpcInterface::SeenAlive() {
  if (ended || ownProcess != CurrentProcessId()) return false;
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

bool IpcInterface::Commit(bool wait) {
  std::uint32_t command = 0xFFFFFFFF;
  if (toAppBase != nullptr) std::memcpy(&command, toAppBase, sizeof command);
  const bool log = PerfLogEnabled();
  const Stopwatch watch;
  commandReady->Set();
  if (!wait) {
    ++reloadsOutstanding;
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

// A signal's handler may run in there, and may send.
bool IpcInterface::AskInterrupted() {
  if (receiver == nullptr) return false;
  const NestedRuby nested(*this, sends == Sends::Held ? Sends::Held : Sends::WhenFree);
  return receiver->Interrupted();
}

void IpcInterface::EndIfInterrupted() {
  if (ended || std::this_thread::get_id() != hostThread) return;
  if (AskInterrupted() && NowMs() >= patienceEnds) ended = true;
}

// Waits until `done` holds, which itself waits up to a slice, and lets the renderer's requests
// through meanwhile. False when the renderer has gone before, or the wait was given up.
template <class Done>
bool IpcInterface::AwaitInSlices(Done&& done) {
  // Most commands are finished by now, and no time is read for them.
  if (done()) return true;
  const bool onHost = std::this_thread::get_id() == hostThread;
  const double start = NowMs() - kSliceMs;
  int lastReport = 0;
  while (IsAlive()) {
    if (onHost) ServeRequest();
    EndIfInterrupted();
    const int seconds = static_cast<int>((NowMs() - start) / 1000.0);
    if (seconds >= lastReport + kReportSeconds) {
      lastReport = seconds;
      std::fprintf(stderr, "[IPC] WaitCompletion: waiting %ds for KvApp\n", seconds);
      std::fflush(stderr);
    }
    if (done()) return true;
  }
  return false;
}

// False when the renderer was gone, or the wait given up, before it had finished.
bool IpcInterface::WaitCompletion() {
  double settledAt = 0.0;
  const bool completed = AwaitInSlices([&] { return TakeCompletion(settledAt); });
  if (!completed) commandDone->Reset();
  return completed;
}

// One look, up to a slice long, for the completion of the command that was written last. Where the
// renderer still owes that of a reload, one that comes before it has taken the command is the
// reload's. One that is found after may be either's, or both in one: a second is given until
// `settledAt` to come.
bool IpcInterface::TakeCompletion(double& settledAt) {
  const bool owed = reloadsOutstanding > 0;
  const bool takenBefore = owed && !commandReady->Wait(0);
  if (commandDone->Take(kSliceMs)) {
    if (!owed) return true;
    --reloadsOutstanding;
    if (!commandReady->Wait(0)) settledAt = NowMs() + kReloadGraceMs;
    return false;
  }
  // It took a command without having completed the reload, so it owes nothing.
  if (takenBefore) reloadsOutstanding = 0;
  return settledAt > 0.0 && NowMs() >= settledAt;
}

// False when something was waited for and not seen completed, so that the renderer may be gone.
bool IpcInterface::FlushPending() {
  const bool completed = AwaitOutstanding() && !anyHeld;
  SendHeld();
  return completed;
}

bool IpcInterface::AwaitPending() {
  if (!pendingWait) return true;
  pendingWait = false;
  const Stopwatch watch;
  const bool completed = WaitCompletion();
  if (PerfLogEnabled()) {
    StatsAddWait(static_cast<std::uint32_t>(pendingCommand), watch.Microseconds());
  }
  pendingCommand = -1;
  return completed;
}

// The segment may be written afterwards.
bool IpcInterface::AwaitOutstanding() {
  const bool completed = AwaitPending();
  return (reloadsOutstanding == 0 || AwaitReloadTaken()) && completed;
}

// A reload is not waited for when it is sent, but written over it would be lost: only once the
// renderer has taken it does the next command follow, and mostly once it has completed it.
bool IpcInterface::AwaitReloadTaken() {
  double graceEnds = 0.0;
  return AwaitInSlices([&] {
    const bool completed = commandDone->Take(kSliceMs);
    const bool taken = !commandReady->Wait(0);
    // A reload that was not taken yet is not what was completed.
    if (completed && reloadsOutstanding > (taken ? 0 : 1)) --reloadsOutstanding;
    if (reloadsOutstanding == 0) return true;
    if (taken && graceEnds == 0.0) graceEnds = NowMs() + kReloadGraceMs;
    return taken && NowMs() >= graceEnds;
  });
}

// Under the send lock.
bool IpcInterface::InFlight() {
  return pendingWait && commandDone && !commandDone->Wait(0) && IsAlive();
}

void IpcInterface::PollToPlugin() {
  ServeRequest();
  if (serving || ended || !anyHeld || AskInterrupted()) return;
  // Another thread that holds the lock sends them itself, with its next command at the latest.
  const SendScope scope(*this, /*mayWait=*/false);
  if (scope.Owns()) FlushPending();
}

void IpcInterface::CloseApp() {
  SendPlain(wire::CommandId::CloseApp, true);
}

}  // namespace quellix
