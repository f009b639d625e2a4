#include "support/Platform.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "support/Files.h"

namespace quellix {

std::uint32_t CurrentProcessId() {
  return static_cast<std::uint32_t>(::getpid());
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
