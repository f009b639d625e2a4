#include "app/Platform.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/interprocess/shared_memory_object.hpp>

extern char** environ;

namespace kvapp {

namespace {

volatile std::sig_atomic_t terminationAsked = 0;

void RememberTermination(int) {
  terminationAsked = 1;
}

std::intptr_t OpenProcess([[maybe_unused]] std::int64_t processId) {
#ifdef SYS_pidfd_open
  return static_cast<std::intptr_t>(syscall(SYS_pidfd_open, static_cast<pid_t>(processId), 0));
#else
  errno = ENOSYS;
  return -1;
#endif
}

}  // namespace

HostWatch::HostWatch(std::int64_t processId) : processId_(processId) {
  handle_ = OpenProcess(processId);
  found_ = handle_ >= 0 ||
           (errno != ESRCH && errno != EINVAL && kill(static_cast<pid_t>(processId), 0) == 0);
}

HostWatch::~HostWatch() {
  if (handle_ >= 0) close(static_cast<int>(handle_));
}

bool HostWatch::Alive() const {
  if (!found_) return false;
  if (handle_ >= 0) {
    pollfd entry{static_cast<int>(handle_), POLLIN, 0};
    return poll(&entry, 1, 0) <= 0;
  }
  return kill(static_cast<pid_t>(processId_), 0) == 0 || errno == EPERM;
}

std::optional<ObjectIdentity> IdentityOfSharedObject(const std::string& name) {
  namespace bip = boost::interprocess;
  try {
    const bip::shared_memory_object object(bip::open_only, name.c_str(), bip::read_only);
    struct stat status {};
    if (fstat(object.get_mapping_handle().handle, &status) != 0) return std::nullopt;
    return ObjectIdentity{static_cast<std::uint64_t>(status.st_dev),
                          static_cast<std::uint64_t>(status.st_ino)};
  } catch (const bip::interprocess_exception&) {
    return std::nullopt;
  }
}

bool MapsObject(std::int64_t processId, const ObjectIdentity& object) {
  std::ifstream maps("/proc/" + std::to_string(processId) + "/maps");
  bool any = false;
  for (std::string line; std::getline(maps, line);) {
    unsigned int deviceMajor = 0;
    unsigned int deviceMinor = 0;
    unsigned long long index = 0;
    if (std::sscanf(line.c_str(), "%*s %*s %*s %x:%x %llu", &deviceMajor, &deviceMinor, &index) !=
        3) {
      continue;
    }
    any = true;
    if (index == object.index && makedev(deviceMajor, deviceMinor) == object.device) return true;
  }
  return !any;
}

std::string EnvironmentText(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

std::filesystem::path ProgramFolder() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::filesystem::current_path() : program.parent_path();
}

std::string RunProgram(const std::vector<std::string>& arguments, std::chrono::seconds limit) {
  std::vector<char*> values;
  for (const std::string& argument : arguments)
    values.push_back(const_cast<char*>(argument.c_str()));
  values.push_back(nullptr);
  pid_t child = 0;
  if (const int error = posix_spawn(&child, values[0], nullptr, nullptr, values.data(), environ)) {
    return arguments[0] + " could not be started: " + std::strerror(error);
  }
  const auto deadline = std::chrono::steady_clock::now() + limit;
  int status = 0;
  for (;;) {
    const pid_t ended = waitpid(child, &status, WNOHANG);
    if (ended == child) break;
    if (ended < 0 && errno != EINTR) return arguments[0] + " was lost: " + std::strerror(errno);
    if (std::chrono::steady_clock::now() > deadline) {
      kill(child, SIGKILL);
      waitpid(child, &status, 0);
      return arguments[0] + " took longer than " + std::to_string(limit.count()) +
             " s and was ended";
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return {};
  return arguments[0] + (WIFEXITED(status)
                             ? " ended with status " + std::to_string(WEXITSTATUS(status))
                             : " was ended by signal " + std::to_string(WTERMSIG(status)));
}

void KeepFromChildren(std::intptr_t socket) {
  fcntl(static_cast<int>(socket), F_SETFD, FD_CLOEXEC);
}

void HandleSignals() {
  std::signal(SIGINT, SIG_IGN);
  std::signal(SIGTERM, RememberTermination);
}

bool TerminationAsked() {
  return terminationAsked != 0;
}

void CrashNow() {
  raise(SIGKILL);
  _exit(137);  // SIGKILL cannot be survived; this only tells the compiler so
}

void ExitNow(int status) {
  _exit(status);
}

}  // namespace kvapp
