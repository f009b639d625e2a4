#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// What differs between the systems the renderer runs on, one implementation file a system.

namespace kvapp {

// Watches one process that is not a child of ours. An exited process that nobody has reaped yet
// counts as gone, and so does one whose id the system has given to another since.
class HostWatch {
 public:
  // A process that is not there makes a watch that is not alive.
  explicit HostWatch(std::int64_t processId);
  ~HostWatch();
  HostWatch(const HostWatch&) = delete;
  HostWatch& operator=(const HostWatch&) = delete;

  bool Alive() const;  // any thread

 private:
  std::int64_t processId_;
  std::intptr_t handle_ = -1;
  bool found_ = false;
};

// Which object a machine-wide name stands for, so that a name that was removed and made anew by
// somebody else is told from our own.
struct ObjectIdentity {
  std::uint64_t device = 0;
  std::uint64_t index = 0;
  bool operator==(const ObjectIdentity&) const = default;
};

// Whether a process has the object mapped; true where that cannot be told.
bool MapsObject(std::int64_t processId, const ObjectIdentity& object);

// Empty when there is no shared-memory object of that name.
std::optional<ObjectIdentity> IdentityOfSharedObject(const std::string& name);

// The value of an environment variable as UTF-8; empty when it is unset.
std::string EnvironmentText(const char* name);

// The folder of the running program.
std::filesystem::path ProgramFolder();

// Runs a program and waits for it. The arguments are UTF-8, the program's path first. Returns an
// empty text on success, else one sentence. A program that takes longer than the limit is ended.
std::string RunProgram(const std::vector<std::string>& arguments, std::chrono::seconds limit);

// Programs that are run do not get this socket.
void KeepFromChildren(std::intptr_t socket);

// Ctrl-C in the host's console is meant for the host: it is ignored here. A request to terminate is
// remembered, so that the renderer ends itself in order.
void HandleSignals();
bool TerminationAsked();

// Ends this process as a crash does: at once, nothing is flushed or removed.
[[noreturn]] void CrashNow();
// Ends this process at once with a status, without destructors.
[[noreturn]] void ExitNow(int status);

}  // namespace kvapp
