#include "TestSystem.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace quellix {

std::int64_t OwnProcessId() {
  return getpid();
}

std::filesystem::path OwnProgram() {
  return std::filesystem::read_symlink("/proc/self/exe");
}

void SetVariable(const char* name, const std::string& value) {
  setenv(name, value.c_str(), 1);
}

void UnsetVariable(const char* name) {
  unsetenv(name);
}

void KillProcess(std::int64_t id) {
  kill(static_cast<pid_t>(id), SIGKILL);
}

void AwaitEnd(std::int64_t id) {
  waitpid(static_cast<pid_t>(id), nullptr, 0);
}

std::filesystem::path SharedMemoryFolder() {
  return "/dev/shm";
}

}  // namespace quellix
