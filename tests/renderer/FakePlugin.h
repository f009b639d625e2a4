#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/EventPeer.h"
#include "app/SharedSegment.h"

namespace kvapp::test {

// A process that does nothing until it is killed.
class OtherProcess {
 public:
  // `first` runs in it before.
  explicit OtherProcess(const std::function<void()>& first = {});
  ~OtherProcess() { Kill(); }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  std::int64_t Id() const { return process_; }
  void Kill();

 private:
  int process_ = 0;
};

// The plug-in's end of the channel, bytes in and bytes out, with a real renderer at the other end.
// Object names are machine-wide: one at a time. Every wait ends; a wait in vain throws
// std::runtime_error that says for what.
class FakePlugin {
 public:
  using Environment = std::map<std::string, std::string>;

  static constexpr std::size_t kSegmentBytes = 1 << 16;

  // Opens the channel, without a renderer.
  FakePlugin();
  ~FakePlugin();
  FakePlugin(const FakePlugin&) = delete;
  FakePlugin& operator=(const FakePlugin&) = delete;

  // Starts a renderer that writes to `Folder()`; `host` is the process it is told to serve, this
  // one when not given.
  void Start(const Environment& environment = {}, std::optional<std::int64_t> host = {});
  // Starts one with the given arguments and returns its exit status.
  static int RunWith(const std::vector<std::string>& arguments);

  // Writes a command and signals it.
  void Post(std::span<const std::byte> command);
  // Waits until the renderer has finished the command.
  void AwaitDone();
  bool Done(std::chrono::milliseconds timeout);
  void Send(std::span<const std::byte> command);
  // Announces that the segment goes away, and makes a new one.
  void Grow(std::size_t bytes);
  std::span<std::byte> Segment() { return segment_->Bytes(); }

  // Waits for a request and returns the renderer's segment.
  std::span<std::byte> AwaitRequest();
  void AcknowledgeRequest();

  // Exit status; 128 + signal when a signal ended it.
  int AwaitExit();
  void Kill();
  bool Running();
  // Gives the channel up as a host does that forgets its renderer.
  void RemoveNames();

  // What `Start` starts.
  std::string program = KVAPP_PROGRAM;

  const std::filesystem::path& Folder() const { return folder_; }
  nlohmann::json Report() const { return Json("report.json"); }
  nlohmann::json Json(const std::string& file) const;
  std::vector<nlohmann::json> Lines(const std::string& file) const;

 private:
  std::filesystem::path folder_;
  EventPeer commandReady_;
  EventPeer commandDone_;
  EventPeer segmentReplaced_;
  std::optional<SharedSegment> segment_;
  std::optional<EventPeer> requestReady_;
  std::optional<EventPeer> requestDone_;
  std::optional<SharedSegment> requestSegment_;
  int process_ = 0;
};

}  // namespace kvapp::test
