#include "FakePlugin.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace kvapp::test {

using std::chrono::milliseconds;

namespace {

int StartProgram(const std::string& program, std::vector<std::string> arguments,
                 const FakePlugin::Environment& environment) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    if (!environment.contains(text.substr(0, text.find('=')))) variables.push_back(text);
  }
  for (const auto& [name, value] : environment) variables.push_back(name + "=" + value);
  arguments.insert(arguments.begin(), program);
  std::vector<char*> argumentPointers, variablePointers;
  for (std::string& text : arguments) argumentPointers.push_back(text.data());
  for (std::string& text : variables) variablePointers.push_back(text.data());
  argumentPointers.push_back(nullptr);
  variablePointers.push_back(nullptr);
  pid_t process = 0;
  if (posix_spawn(&process, program.c_str(), nullptr, nullptr, argumentPointers.data(),
                  variablePointers.data()) != 0) {
    throw std::runtime_error("the renderer " + program + " cannot be started");
  }
  return process;
}

// Exit status.
int AwaitEnd(int process) {
  int status = 0;
  waitpid(process, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// A renderer that was killed left its objects; a new link removes them, so that they are not taken
// for those of the next renderer.
void RemoveLeftovers() {
  for (const char* name :
       {"Qlx_Mem_ToPlugin", "Qlx_Lock_ToPlugin1_seg", "Qlx_Lock_ToPlugin2_seg"}) {
    boost::interprocess::shared_memory_object::remove(name);
  }
}

std::filesystem::path NewFolder() {
  RemoveLeftovers();
  std::string pattern = (std::filesystem::temp_directory_path() / "kvapp-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  return pattern;
}

}  // namespace

OtherProcess::OtherProcess(const std::function<void()>& first) : process_(fork()) {
  if (process_ != 0) return;
  if (first) first();
  for (;;) pause();
}

void OtherProcess::Kill() {
  if (process_ <= 0) return;
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = 0;
}

FakePlugin::FakePlugin()
    : folder_(NewFolder()),
      commandReady_(EventPeer::Create("Qlx_Lock_ToApp1")),
      commandDone_(EventPeer::Create("Qlx_Lock_ToApp2")),
      segmentReplaced_(EventPeer::Create("Qlx_Lock_ToApp3")),
      segment_(SharedSegment::Create("Qlx_Mem_ToApp", kSegmentBytes)) {
  segmentReplaced_.Set();
}

FakePlugin::~FakePlugin() {
  Kill();
  RemoveNames();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void FakePlugin::RemoveNames() {
  commandReady_.RemoveName();
  commandDone_.RemoveName();
  segmentReplaced_.RemoveName();
  if (segment_) segment_->RemoveName();
}

void FakePlugin::Start(const Environment& environment, std::optional<std::int64_t> host) {
  Environment all = {{"KVAPP_OUT", folder_.string()}, {"KVAPP_PICTURE", "0"}};
  for (const auto& [name, value] : environment) all[name] = value;
  process_ = StartProgram(program, {"--host-pid", std::to_string(host.value_or(getpid()))}, all);
}

int FakePlugin::RunWith(const std::vector<std::string>& arguments) {
  return AwaitEnd(StartProgram(KVAPP_PROGRAM, arguments, {}));
}

void FakePlugin::Post(std::span<const std::byte> command) {
  if (command.size() > Segment().size()) throw std::runtime_error("the command does not fit");
  std::memcpy(Segment().data(), command.data(), command.size());
  commandReady_.Set();
}

bool FakePlugin::Done(milliseconds timeout) {
  if (commandDone_.Wait(timeout) != EventPeer::Outcome::Signaled) return false;
  commandDone_.Reset();
  return true;
}

void FakePlugin::AwaitDone() {
  while (!Done(milliseconds(10))) {
    if (!Running()) throw std::runtime_error("the renderer ended before it finished a command");
  }
}

void FakePlugin::Send(std::span<const std::byte> command) {
  Post(command);
  AwaitDone();
}

void FakePlugin::Grow(std::size_t bytes) {
  const std::uint32_t memoryDestroyed = 21;
  Send(std::as_bytes(std::span(&memoryDestroyed, 1)));
  segment_->RemoveName();
  segment_.reset();
  segment_ = SharedSegment::Create("Qlx_Mem_ToApp", bytes);
  segmentReplaced_.Set();
}

std::span<std::byte> FakePlugin::AwaitRequest() {
  while (Running()) {
    if (!requestReady_) requestReady_ = EventPeer::Open("Qlx_Lock_ToPlugin1");
    if (!requestDone_) requestDone_ = EventPeer::Open("Qlx_Lock_ToPlugin2");
    if (requestReady_ && requestDone_) {
      if (!requestSegment_) requestSegment_ = SharedSegment::Open("Qlx_Mem_ToPlugin");
      if (requestReady_->Wait(milliseconds(10)) == EventPeer::Outcome::Signaled) {
        requestReady_->Reset();
        return requestSegment_->Bytes();
      }
    }
    std::this_thread::sleep_for(milliseconds(1));
  }
  throw std::runtime_error("the renderer posted no request");
}

void FakePlugin::AcknowledgeRequest() {
  requestDone_->Set();
}

int FakePlugin::AwaitExit() {
  return AwaitEnd(std::exchange(process_, 0));
}

void FakePlugin::Kill() {
  if (process_ == 0) return;
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = 0;
}

bool FakePlugin::Running() {
  if (process_ == 0) return false;
  siginfo_t info{};
  waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOHANG | WNOWAIT);
  return info.si_pid == 0;
}

nlohmann::json FakePlugin::Json(const std::string& file) const {
  std::ifstream stream(folder_ / file);
  if (!stream) throw std::runtime_error("the renderer wrote no " + file);
  return nlohmann::json::parse(stream);
}

std::vector<nlohmann::json> FakePlugin::Lines(const std::string& file) const {
  std::ifstream stream(folder_ / file);
  if (!stream) throw std::runtime_error("the renderer wrote no " + file);
  std::vector<nlohmann::json> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(nlohmann::json::parse(line));
  return lines;
}

}  // namespace kvapp::test
