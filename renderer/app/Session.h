#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/CommandLog.h"
#include "app/EventPeer.h"
#include "app/Findings.h"
#include "app/Output.h"
#include "app/RequestSender.h"
#include "app/Scene.h"
#include "app/Script.h"
#include "app/Settings.h"
#include "app/SharedSegment.h"
#include "app/Watchdog.h"
#include "view/PageRequests.h"
#include "view/View.h"

namespace kvapp {

// One run of the renderer: opens the channel, takes commands until the plug-in closes it or is
// gone, follows the script, writes the outputs.
class Session {
 public:
  static constexpr int kFaultStatus = 3;

  explicit Session(Settings settings);

  // Returns the exit status of the process. Throws std::exception with one sentence.
  int Run();

 private:
  using Clock = std::chrono::steady_clock;

  void OpenEvents();
  void Loop();
  bool Consume(EventPeer& event, std::chrono::milliseconds slice);
  void AwaitSegment(std::chrono::milliseconds slice);
  void AwaitCommand(std::chrono::milliseconds slice);
  void TakeCommand();
  void Absorb(Decoded& decoded);
  void Complete(std::uint32_t id);
  void Rest();
  bool MustStop();

  void Perform(const Action& action, Script::Phase phase);
  void Perform(const action::Ask& ask, Script::Phase phase);
  void Perform(const action::Delay& delay, Script::Phase phase);
  void Perform(const action::Quit& quit, Script::Phase phase);
  [[noreturn]] void Perform(const action::Exit& exit, Script::Phase phase);
  [[noreturn]] void Perform(const action::Crash& crash, Script::Phase phase);
  void Perform(const action::Hang& hang, Script::Phase phase);
  void Perform(const action::HoldMutex& hold, Script::Phase phase);
  void Perform(const action::LinkCamera& link, Script::Phase phase);
  void PerformAll(Script::Phase phase);
  EventPeer& EventNamed(const std::string& name);
  void SleepWatching(std::optional<std::chrono::milliseconds> span);

  void OpenView();
  void ServePages();
  void End(const std::string& reason);
  RunResult Result();

  Settings settings_;
  Findings findings_;
  Script script_;
  CommandLog log_;
  Scene scene_;
  std::optional<EventPeer> commandReady_;
  std::optional<EventPeer> commandDone_;
  std::optional<EventPeer> segmentReplaced_;
  std::optional<SharedSegment> segment_;  // empty until the plug-in has made it, or made it anew
  bool segmentAnnounced_ = false;
  std::unique_ptr<RequestSender> requests_;

  std::unique_ptr<view::View> view_;  // with the setting only
  std::unique_ptr<view::PageRequests> pageRequests_;

  Script::Event event_;
  bool linkCamera_ = false;
  bool ended_ = false;
  std::string exitReason_;
  std::vector<std::string> outputTroubles_;
  Clock::time_point opened_;
  Clock::time_point lastCommand_;
  // Goes first: its thread looks at the channel.
  Watchdog watchdog_;
};

}  // namespace kvapp
