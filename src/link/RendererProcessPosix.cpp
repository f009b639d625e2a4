#include "link/RendererProcess.h"

#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <mutex>
#include <vector>

#include <wx/process.h>

namespace quellix {

namespace {

// 1 when the process behind the descriptor has ended, 0 when not, -1 when it cannot be told.
int HasEnded(int processDescriptor) {
  pollfd watched{processDescriptor, POLLIN, 0};
  const int ready = ::poll(&watched, 1, 0);
  if (ready < 0) return -1;
  return ready > 0 ? 1 : 0;
}

}  // namespace

void RendererProcess::Hold() {
#ifdef SYS_pidfd_open
  handle = static_cast<std::intptr_t>(::syscall(SYS_pidfd_open, processId.load(), 0u));
#endif
}

// A renderer that was asked to close is let go while it still ends. Its entry in the process list is
// taken out later, when the next one is held or let go.
void RendererProcess::LetGo() {
  static std::mutex mutex;
  static std::vector<std::int32_t> ending;
  if (handle >= 0) ::close(static_cast<int>(handle));
  handle = -1;
  const std::lock_guard<std::mutex> lock(mutex);
  if (processId > 0) ending.push_back(processId);
  std::erase_if(ending, [](std::int32_t id) { return ::waitpid(id, nullptr, WNOHANG) != 0; });
}

bool RendererProcess::Alive() const {
  const std::int32_t id = processId;
  if (id <= 0) return false;
  if (handle >= 0) {
    const int ended = HasEnded(static_cast<int>(handle));
    if (ended == 0) return true;
    // Nobody else reaps this child; without it the process list keeps its entry.
    if (ended > 0) {
      ::waitpid(id, nullptr, WNOHANG);
      return false;
    }
  }
  if (::waitpid(id, nullptr, WNOHANG) == id) return false;
  return wxProcess::Exists(id);
}

bool IsStartable(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

ChildSignalKeeper::ChildSignalKeeper() {
  auto* action = new struct sigaction;
  ::sigaction(SIGCHLD, nullptr, action);
  former = action;
}

ChildSignalKeeper::~ChildSignalKeeper() {
  auto* action = static_cast<struct sigaction*>(former);
  ::sigaction(SIGCHLD, action, nullptr);
  delete action;
}

}  // namespace quellix
