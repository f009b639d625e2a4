#include "support/Platform.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "support/Files.h"

namespace quellix {

namespace {

std::atomic<std::uint32_t> processId{0};

void ReadProcessId() {
  processId.store(static_cast<std::uint32_t>(::getpid()), std::memory_order_relaxed);
}

}  // namespace

// Asked with every command, so the system is only asked in each new process.
std::uint32_t CurrentProcessId() {
  static const int watched = [] {
    ReadProcessId();
    return ::pthread_atfork(nullptr, nullptr, ReadProcessId);
  }();
  if (watched != 0) ReadProcessId();
  return processId.load(std::memory_order_relaxed);
}

std::uint64_t CoarseTick() {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * 1000 +
         static_cast<std::uint64_t>(time.tv_nsec) / 1'000'000 + 1;
}

std::optional<std::string> EnvironmentVariable(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr) return std::nullopt;
  return std::string(value);
}

std::tm LocalTime(std::time_t time) {
  std::tm local{};
  ::localtime_r(&time, &local);
  return local;
}

void ShowMessageBox(const std::string& text, const std::string& caption) {
  std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
  std::fflush(stderr);
}

BusyCursor::BusyCursor() = default;
BusyCursor::~BusyCursor() = default;

std::FILE* OpenSharedForAppend(const std::string& path) {
  return std::fopen(path.c_str(), "ae");
}

}  // namespace quellix
