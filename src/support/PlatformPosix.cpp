#include "support/Platform.h"

#include <unistd.h>

#include <cstdio>

#include "support/Files.h"

namespace quellix {

std::uint32_t CurrentProcessId() {
  return static_cast<std::uint32_t>(::getpid());
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
