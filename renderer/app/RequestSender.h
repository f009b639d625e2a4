#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/EventPeer.h"
#include "app/Findings.h"
#include "app/Request.h"
#include "app/SharedSegment.h"

namespace kvapp {

// The renderer's end of the ToPlugin segment: posts requests one at a time, each after the one
// before it was acknowledged, takes the answers, checks that nothing else was written, and logs one
// line of JSON each. One thread.
class RequestSender {
 public:
  // Makes the segment and its two events. An empty folder: nothing is logged.
  RequestSender(std::size_t segmentBytes, const std::filesystem::path& folder, Findings& findings);

  // The command being processed, for the log; 0 between commands.
  void SetCommand(std::uint64_t number) { command_ = number; }

  void Post(Request request);
  // Takes an acknowledgement that has come, and posts what waits.
  void Poll();
  bool Idle() const { return !current_ && waiting_.empty(); }
  // Polls until everything posted was acknowledged. False at the time-out, or when `stop` says so.
  bool WaitUntilIdle(std::chrono::milliseconds timeout, const std::function<bool()>& stop);

  std::uint64_t Posted() const { return posted_; }
  std::uint64_t Acknowledged() const { return acknowledged_; }

  EventPeer& RequestReady() { return ready_; }
  EventPeer& RequestDone() { return done_; }

  // Logs what was not acknowledged.
  void Finish();
  void RemoveNames();

 private:
  struct Current {
    Request request;
    std::uint64_t capacity = 0;
    std::uint64_t command = 0;
    std::chrono::steady_clock::time_point posted;
    std::vector<std::byte> written;  // the segment as it was posted
  };

  void PostNow(Request request);
  void TakeAnswer();
  void CheckUntouched(std::span<const std::byte> now, std::uint64_t answerEnd);
  void Log(bool acknowledged, std::uint32_t result, std::uint64_t required,
           std::span<const std::byte> answer);

  SharedSegment segment_;
  EventPeer ready_;
  EventPeer done_;
  std::ofstream file_;
  Findings& findings_;
  std::deque<Request> waiting_;
  std::optional<Current> current_;
  std::uint64_t command_ = 0;
  std::uint64_t posted_ = 0;
  std::uint64_t acknowledged_ = 0;
};

}  // namespace kvapp
