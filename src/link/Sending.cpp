// The one way of every command, and what becomes of those that must wait for another.

#include "link/Sending.h"

#include <cstring>

#include "link/IpcDigest.h"
#include "link/IpcStats.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

void AddToDigest(const DigestEntries& entries) {
  for (const std::uint64_t hash : entries.hashes) {
    DigestAdd(static_cast<std::uint32_t>(entries.id), hash);
  }
}

}  // namespace

// A thread that is inside already got here through Ruby code that runs in its wait.
IpcInterface::SendScope::SendScope(IpcInterface& owner, bool mayWait) : link(owner) {
  const std::thread::id self = std::this_thread::get_id();
  if (link.sendOwner.load(std::memory_order_relaxed) == self) return;
  const Sends sends = self == link.hostThread ? link.sends : Sends::Normally;
  if (sends == Sends::Held) return;
  if (mayWait && sends == Sends::Normally) {
    link.sendLock.Enter();
  } else if (!link.sendLock.TryEnter()) {
    return;
  } else if (sends == Sends::WhenFree && link.InFlight()) {
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

bool IpcInterface::WouldHold() {
  const SendScope scope(*this);
  return !scope.Owns();
}

bool IpcInterface::Send(const CommandMessage& message, const SendTraits& traits) {
  if (!SeenAlive()) return true;
  const SendScope scope(*this);
  if (!scope.Owns()) {
    Hold(message, traits);
    return true;
  }
  // The renderer may have died, or said that it quits, during that wait.
  const bool completed = FlushPending();
  if (ended || (!completed && !IsAlive())) return true;
  if (traits.isProgress && !AdmitProgress(message.Record())) return true;
  if (!MakeRoom(message.Id(), message.Size(), traits)) return !IsAlive();
  message.WriteTo(toAppBase);
  if (traits.digest != nullptr && DigestEnabled()) {
    AddToDigest(traits.digest(traits.digestContext));
  }
  Deliver(message.Record(), traits);
  if (traits.wait && !pendingWait) SendHeld();
  return true;
}

// Under the send lock.
bool IpcInterface::MakeRoom(std::uint32_t command, std::uint64_t messageBytes,
                            const SendTraits& traits) {
  if (traits.countBytes && PerfLogEnabled()) StatsAddBytes(command, messageBytes);
  if (traits.grows) {
    const std::uint64_t sizeBefore = toAppSize;
    ExpandSharedMemory(messageBytes);
    return !ended && (toAppSize == sizeBefore || IsAlive());
  }
  if (EnsureSegment(messageBytes)) return true;
  LogLine("%s: left out, its %llu bytes have no room", wire::CommandName(command),
          static_cast<unsigned long long>(messageBytes));
  return false;
}

void IpcInterface::Deliver(const std::byte* record, const SendTraits& traits) {
  const Stopwatch watch;
  Commit(traits.wait);
  if (traits.sent != nullptr) traits.sent(record, watch.Ms());
}

// What the digest is made of does not outlive the call, so it is worked out here.
void IpcInterface::Hold(const CommandMessage& message, const SendTraits& traits) {
  HeldCommand command{std::vector<std::byte>(message.Size()), traits, {}};
  message.WriteTo(command.bytes.data());
  if (traits.digest != nullptr && DigestEnabled()) {
    command.digest = traits.digest(traits.digestContext);
  }
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
    if (!IsAlive()) continue;
    SendOneHeld(command);
    AwaitOutstanding();
  }
}

void IpcInterface::SendOneHeld(const HeldCommand& command) {
  std::uint32_t id = 0;
  std::memcpy(&id, command.bytes.data(), sizeof id);
  if (command.traits.isProgress && !AdmitProgress(command.bytes.data())) return;
  if (!MakeRoom(id, command.bytes.size(), command.traits)) return;
  std::memcpy(toAppBase, command.bytes.data(), command.bytes.size());
  AddToDigest(command.digest);
  Deliver(command.bytes.data(), command.traits);
}

}  // namespace quellix
