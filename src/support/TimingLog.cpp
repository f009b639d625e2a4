#include "support/TimingLog.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>

#include "support/Files.h"
#include "support/Platform.h"
#include "support/Switches.h"

namespace quellix {

bool PerfLogEnabled() {
  static const bool enabled = !PerfLogPath().empty();
  return enabled;
}

double NowMs() {
  using Clock = std::chrono::steady_clock;
  static const Clock::time_point origin = Clock::now();
  const auto elapsed = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - origin);
  return static_cast<double>(elapsed.count()) / 1e6;
}

void LogLine(const char* format, ...) {
  if (!PerfLogEnabled()) return;

  char message[1024];
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(message, sizeof message, format, arguments);
  va_end(arguments);
  if (length < 0) return;

  using Ticks = std::chrono::duration<long long, std::ratio<1, 10'000'000>>;
  const long long ticks =
      std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch())
          .count();
  const long long seconds = ticks / 10'000'000;
  const long long milliseconds = (ticks - seconds * 10'000'000) / 10'000;
  const std::tm local = LocalTime(static_cast<std::time_t>(seconds));

  static std::mutex logMutex;
  const std::lock_guard<std::mutex> lock(logMutex);
  std::FILE* file = OpenSharedForAppendPatiently(PerfLogPath());
  if (file == nullptr) return;
  const std::size_t written = std::strlen(message);
  const bool ended = written > 0 && message[written - 1] == '\n';
  std::fprintf(file, "[%02d:%02d:%02d.%03lld][DLL] %s%s", local.tm_hour, local.tm_min, local.tm_sec,
               milliseconds, message, ended ? "" : "\n");
  std::fclose(file);
}

}  // namespace quellix
