#include "link/RendererProcess.h"

#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <vector>

#include "support/Platform.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

// The error that kept the program from running, or 0. Both paths are full.
int Spawn(const std::string& program, const std::string& folder, pid_t& id) {
  std::string arguments[] = {program, "--host-pid", std::to_string(CurrentProcessId())};
  char* const pointers[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), nullptr};
  posix_spawn_file_actions_t actions;
  int error = ::posix_spawn_file_actions_init(&actions);
  if (error != 0) return error;
  error = ::posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  if (error == 0) {
    error = ::posix_spawn(&id, program.c_str(), &actions, nullptr, pointers, environ);
  }
  ::posix_spawn_file_actions_destroy(&actions);
  return error;
}

// -1 where the system has no such descriptors, or none left.
int DescriptorOf(pid_t id) {
#ifdef SYS_pidfd_open
  return static_cast<int>(::syscall(SYS_pidfd_open, id, 0u));
#else
  return -1;
#endif
}

// Whether a child has ended; then its entry is taken out of the list of processes, which nobody
// else does. To be asked once after the end: somebody may have taken the entry out all the same,
// and without a descriptor another child may have the id by then.
bool HasEnded(int descriptor, pid_t id) {
  siginfo_t info{};
#ifdef SYS_pidfd_open
  if (descriptor >= 0) {
    pollfd watched{descriptor, POLLIN, 0};
    if (::poll(&watched, 1, 0) <= 0) return false;
    ::waitid(P_PIDFD, static_cast<id_t>(descriptor), &info, WEXITED | WNOHANG);
    return true;
  }
#endif
  return ::waitid(P_PID, static_cast<id_t>(id), &info, WEXITED | WNOHANG) != 0 || info.si_pid != 0;
}

// A renderer that was asked to close is let go while it still ends.
struct Ending {
  int descriptor;
  pid_t id;
};

bool HasLeft(const Ending& process) {
  if (!HasEnded(process.descriptor, process.id)) return false;
  if (process.descriptor >= 0) ::close(process.descriptor);
  return true;
}

}  // namespace

// Names of files are bytes here: they are taken as they come, whatever the locale. The system's own
// call starts the program, not wxExecute, whose child reports nothing when it cannot run the
// program, hands a file of no known format to a shell, and whose parent takes the host's handler
// for the ends of children away.
bool RendererProcess::Start(const std::string& directory) {
  LetGo();
  std::error_code unknown;
  const std::filesystem::path folder = std::filesystem::current_path(unknown) / directory / kFolder;
  const std::filesystem::path program = folder / kProgram;
  pid_t id = 0;
  const int error = Spawn(program, folder, id);
  if (error != 0) {
    LogLine("LaunchApp: %s: %s", program.c_str(), std::generic_category().message(error).c_str());
    return false;
  }
  handle = DescriptorOf(id);
  processId = id;
  return true;
}

bool RendererProcess::Alive() const {
  if (processId <= 0) return false;
  const std::lock_guard<std::mutex> lock(endMutex);
  over = over || HasEnded(static_cast<int>(handle), processId);
  return !over;
}

// The entry of one that is still ending is taken out when the next one is started or let go.
void RendererProcess::LetGo() {
  static std::mutex mutex;
  static std::vector<Ending> endings;
  const std::lock_guard<std::mutex> lock(mutex);
  if (Alive()) {
    endings.push_back({static_cast<int>(handle), processId});
  } else if (handle >= 0) {
    ::close(static_cast<int>(handle));
  }
  processId = 0;
  handle = -1;
  over = false;
  std::erase_if(endings, HasLeft);
}

}  // namespace quellix
