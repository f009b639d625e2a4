#include "app/Session.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "app/Output.h"
#include "app/SceneJson.h"

namespace kvapp {

namespace wire = quellix::wire;
using std::chrono::milliseconds;

namespace {

// Makes the output folder. Returns where commands are logged: a line and a digest a command would
// be most of the work that a measurement wants to be without.
std::filesystem::path LogFolder(const Settings& settings) {
  const std::filesystem::path& folder = settings.outputFolder;
  if (folder.empty()) return folder;
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) {
    throw std::runtime_error("the folder " + folder.string() +
                             " of KVAPP_OUT cannot be made: " + error.message());
  }
  return settings.discard ? std::filesystem::path() : folder;
}

void WorkFor(std::chrono::microseconds span) {
  if (span.count() == 0) return;
  const auto end = std::chrono::steady_clock::now() + span;
  while (std::chrono::steady_clock::now() < end) {
  }
}

}  // namespace

Session::Session(Settings settings)
    : settings_(std::move(settings)),
      log_(LogFolder(settings_), settings_.bytesLogged),
      scene_(findings_),
      watchdog_(settings_.hostProcess) {
  if (!settings_.scriptFile.empty()) script_ = Script::Load(settings_.scriptFile);
  scene_.OnExportEnd([this](std::uint64_t number) {
    event_.exportEnded = number;
    if (view_) view_->Changes().ExportEnded();
    if (settings_.writeSceneJson) WriteSceneJson(scene_, settings_.outputFolder, number);
  });
}

int Session::Run() {
  if (watchdog_.Lost()) {
    throw std::runtime_error("there is no process " + std::to_string(settings_.hostProcess) +
                             " to render for");
  }
  OpenView();
  OpenEvents();
  if (!ended_) {
    requests_ = std::make_unique<RequestSender>(settings_.requestSegmentBytes,
                                                settings_.outputFolder, findings_);
    watchdog_.WatchChannel([this] { return commandReady_->StillNamed(); },
                           [this] { requests_->RemoveNames(); });
    if (view_) pageRequests_ = std::make_unique<view::PageRequests>(*view_, *requests_);
    opened_ = lastCommand_ = Clock::now();
    Loop();
  }
  if (view_) view_->Join();
  // The plug-in does not wait any more.
  DrawPicture(Result());
  return findings_.FaultCount() > 0 ? kFaultStatus : 0;
}

void Session::OpenView() {
  if (!settings_.viewPort) return;
  view_ = std::make_unique<view::View>(
      view::ViewSettings{*settings_.viewPort, settings_.viewToken, ProgramFolder() / "view",
                         settings_.outputFolder},
      scene_, findings_);
  scene_.WatchBy(&view_->Changes());
}

// Brings the pages' requests to the plug-in, which may end the session.
void Session::ServePages() {
  if (!pageRequests_) return;
  requests_->Poll();
  pageRequests_->Poll();
  view_->Changes().AtRest();
  if (const auto quit = pageRequests_->Quit()) End(*quit ? "quit" : "quitNotAcknowledged");
}

void Session::OpenEvents() {
  while (!MustStop()) {
    commandReady_ = EventPeer::Open(wire::kCommandReady);
    commandDone_ = EventPeer::Open(wire::kCommandDone);
    segmentReplaced_ = EventPeer::Open(wire::kSegmentReplaced);
    if (commandReady_ && commandDone_ && segmentReplaced_) {
      // Another host may have taken the names over since this process was started.
      if (!MapsObject(settings_.hostProcess, commandReady_->Identity())) End("linkReplaced");
      return;
    }
    std::this_thread::sleep_for(milliseconds(5));
  }
}

// Whether the host is gone, the channel is no longer ours or termination was asked for; then the
// session has ended.
bool Session::MustStop() {
  // A plug-in that has taken the request to quit gives the channel up at once.
  if (!ended_) ServePages();
  if (ended_) return true;
  if (const auto loss = watchdog_.Lost()) {
    End(*loss == Loss::HostGone ? "hostGone" : "linkReplaced");
  } else if (TerminationAsked()) {
    End("terminated");
  }
  return ended_;
}

void Session::Loop() {
  while (!MustStop()) {
    requests_->Poll();
    const bool watching =
        !requests_->Idle() || script_.WaitsForRest() || (pageRequests_ && !pageRequests_->Idle());
    const milliseconds slice(watching ? 2 : view_ && view_->Watched() ? 5 : 50);
    if (!segment_) {
      AwaitSegment(slice);
    } else {
      AwaitCommand(slice);
    }
    if (!ended_ && script_.WaitsForRest()) Rest();
  }
}

// Waits a slice at most for an event and takes it.
bool Session::Consume(EventPeer& event, milliseconds slice) {
  const EventPeer::Outcome outcome = event.Wait(slice);
  // A message's first bytes come from the host's core while the event does.
  if (segment_) __builtin_prefetch(segment_->Bytes().data());
  // A lost mutex answers at once, time and again.
  if (outcome == EventPeer::Outcome::Locked) std::this_thread::sleep_for(slice);
  return outcome == EventPeer::Outcome::Signaled && event.Reset();
}

void Session::AwaitSegment(milliseconds slice) {
  if (!segmentAnnounced_) {
    if (!Consume(*segmentReplaced_, slice)) return;
    segmentAnnounced_ = true;
  }
  segment_ = SharedSegment::Open(wire::kToAppSegment);
  if (segment_) {
    segmentAnnounced_ = false;
  } else {
    std::this_thread::sleep_for(slice);
  }
}

void Session::AwaitCommand(milliseconds slice) {
  if (!Consume(*commandReady_, slice)) return;
  TakeCommand();
  if (!script_.WaitsForRest()) return;
  lastCommand_ = Clock::now();
  script_.CommandCame();
}

void Session::TakeCommand() {
  const auto bytes = segment_->Bytes();
  Decoded decoded = Decode(bytes, {.headersOnly = settings_.discard});
  event_ = {event_.command + 1, ShortCommandName(decoded.id), 0, 0};
  event_.nth = log_.Add(event_.command, decoded, bytes);
  findings_.SetContext(event_.command, event_.name);
  requests_->SetCommand(event_.command);
  for (std::string& problem : decoded.problems) findings_.Fault(std::move(problem));

  const std::uint32_t id = decoded.id;
  const bool sound = decoded.problems.empty();
  if (sound && !settings_.discard) {
    scene_.Apply(std::move(decoded.command), event_.command, decoded.messageBytes);
    if (decoded.id == static_cast<std::uint32_t>(wire::CommandId::SetLinkCamera)) {
      linkCamera_ = scene_.Linked().value_or(false);
    }
  }
  if (view_) view_->Changes().Commit(event_.command, static_cast<wire::CommandId>(id));
  WorkFor(settings_.workPerCommand);
  PerformAll(Script::Phase::Before);
  if (ended_) return;
  Complete(id);
  if (ended_) return;
  PerformAll(Script::Phase::After);
  requests_->SetCommand(0);
  findings_.SetContext(0, "at rest");
}

// Does what the plug-in waits for, and says so.
void Session::Complete(std::uint32_t id) {
  switch (static_cast<wire::CommandId>(id)) {
    case wire::CommandId::GetLinkCamera:
      segment_->Bytes()[0] = static_cast<std::byte>(linkCamera_ ? 1 : 0);
      break;
    case wire::CommandId::MemoryDestroyed:
      segment_.reset();
      break;
    case wire::CommandId::CloseApp:
      // The outputs but the picture are there, and no name of ours is left, when the plug-in goes
      // on.
      End("closed");
      break;
    default:
      break;
  }
  while (!commandDone_->Set() && !watchdog_.Lost()) {
    std::this_thread::sleep_for(milliseconds(5));
  }
}

void Session::Rest() {
  const auto now = Clock::now();
  const auto idle = std::chrono::duration_cast<milliseconds>(now - lastCommand_);
  const auto open = std::chrono::duration_cast<milliseconds>(now - opened_);
  while (const auto action = script_.AtRest(idle, open)) {
    Perform(*action, Script::Phase::After);
    if (ended_) return;
  }
}

void Session::End(const std::string& reason) {
  if (std::exchange(ended_, true)) return;
  exitReason_ = reason;
  watchdog_.Finishing();
  findings_.SetContext(event_.command, event_.name);
  if (requests_) {
    requests_->Finish();
    requests_->RemoveNames();
  }
  if (pageRequests_) pageRequests_->Finish();
  if (view_) view_->Finish(reason);
  segment_.reset();
  WriteOutputs(Result());
}

RunResult Session::Result() {
  const RequestCounts counts =
      requests_ ? RequestCounts{requests_->Posted(), requests_->Acknowledged()} : RequestCounts{};
  return {settings_, scene_, log_, findings_, counts, exitReason_, outputTroubles_};
}

}  // namespace kvapp
