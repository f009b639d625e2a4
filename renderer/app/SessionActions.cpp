#include <algorithm>
#include <thread>

#include "app/Session.h"

// What a script makes the renderer do.

namespace kvapp {

using std::chrono::milliseconds;

void Session::PerformAll(Script::Phase phase) {
  for (const Action& action : script_.AtCommand(event_, phase)) {
    Perform(action, phase);
    if (ended_) return;
  }
}

void Session::Perform(const Action& action, Script::Phase phase) {
  std::visit([this, phase](const auto& chosen) { Perform(chosen, phase); }, action);
}

// Before a command is finished the answer is awaited, as by a renderer that needs it to go on; at
// rest it comes while the session goes on.
void Session::Perform(const action::Ask& ask, Script::Phase phase) {
  requests_->Post(ask.request);
  if (phase == Script::Phase::Before && ask.wait) {
    requests_->WaitUntilIdle(ask.timeout, [this] { return watchdog_.Lost().has_value(); });
  }
}

void Session::Perform(const action::Delay& delay, Script::Phase) {
  SleepWatching(delay.span);
}

void Session::Perform(const action::Quit& quit, Script::Phase) {
  requests_->Post(Request{static_cast<std::uint32_t>(quellix::wire::RequestCode::RendererQuit),
                          std::nullopt,
                          {},
                          std::nullopt,
                          {}});
  const bool acknowledged =
      requests_->WaitUntilIdle(quit.timeout, [this] { return watchdog_.Lost().has_value(); });
  End(acknowledged ? "quit" : "quitNotAcknowledged");
}

void Session::Perform(const action::Exit& exit, Script::Phase) {
  ExitNow(exit.status);
}

void Session::Perform(const action::Crash&, Script::Phase) {
  CrashNow();
}

void Session::Perform(const action::Hang& hang, Script::Phase) {
  SleepWatching(hang.span);
}

void Session::Perform(const action::HoldMutex& hold, Script::Phase phase) {
  EventPeer& event = EventNamed(hold.event);
  const bool taken = event.TakeMutex();
  std::visit([this, phase](const auto& chosen) { Perform(chosen, phase); }, hold.then);
  if (taken) event.ReleaseMutex();
}

void Session::Perform(const action::LinkCamera& link, Script::Phase) {
  linkCamera_ = link.linked;
}

EventPeer& Session::EventNamed(const std::string& name) {
  if (name == "commandReady") return *commandReady_;
  if (name == "commandDone") return *commandDone_;
  if (name == "segmentReplaced") return *segmentReplaced_;
  return name == "requestReady" ? requests_->RequestReady() : requests_->RequestDone();
}

// A renderer that hangs for ever still ends with its host.
void Session::SleepWatching(std::optional<milliseconds> span) {
  const auto end = Clock::now() + span.value_or(milliseconds(0));
  while (!watchdog_.Lost() && !TerminationAsked()) {
    const auto left = end - Clock::now();
    if (span && left <= Clock::duration::zero()) return;
    std::this_thread::sleep_for(span ? std::min<Clock::duration>(left, milliseconds(20))
                                     : Clock::duration(milliseconds(20)));
  }
}

}  // namespace kvapp
