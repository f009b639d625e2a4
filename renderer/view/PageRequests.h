#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "app/RequestSender.h"
#include "view/View.h"

namespace kvapp::view {

// Brings the requests of all pages into the renderer's one request channel, in order and one at a
// time, and the answers back. Cameras go at a limited rate; of those that wait the newest counts.
// The channel's thread.
class PageRequests {
 public:
  static constexpr std::chrono::seconds kPatience{10};
  static constexpr std::chrono::microseconds kCameraInterval{33'334};

  PageRequests(View& view, RequestSender& sender) : view_(view), sender_(sender) {}

  // Call it often, not while a command is in work.
  void Poll();
  // Whether something waits to be posted or to be answered.
  bool Idle() const { return waiting_.empty() && !posted_; }
  // A page asked to quit: whether the plug-in acknowledged that. Empty as long as that is open.
  std::optional<bool> Quit() const { return quit_; }
  // No answer comes any more.
  void Finish();

 private:
  using Clock = std::chrono::steady_clock;

  struct Waiting {
    std::uint64_t socket = 0;
    PageRequest message;
    Clock::time_point deadline;
    bool answered = false;
  };

  void Accept(Inbound inbound);
  void GiveUp(Clock::time_point now);
  void PostNext(Clock::time_point now);
  void Refuse(Waiting& request, const std::string& why);
  void TakeResult(const RequestResult& result);

  View& view_;
  RequestSender& sender_;
  std::deque<Waiting> waiting_;
  std::optional<Waiting> posted_;
  Clock::time_point nextCamera_;
  std::optional<bool> quit_;
};

}  // namespace kvapp::view
