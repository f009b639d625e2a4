#pragma once

#include <cstdint>

namespace quellix {

// True when QUELLIX_PERF_LOG_FILE names a file. Any thread; one test of a cached flag.
bool PerfLogEnabled();

// Appends one line, "[HH:MM:SS.mmm][DLL] message", to the timing log when it is enabled. The
// message is cut at 1,023 characters; a line feed is added unless the message ends with one. A file
// that cannot be opened drops the line. Any thread.
#if defined(__MINGW32__)
// Its plain "printf" stands for the letters of the system's older library.
__attribute__((format(gnu_printf, 1, 2)))
#elif defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
void LogLine(const char* format, ...);

// Milliseconds of the monotonic clock since the first call. Any thread.
double NowMs();

// Elapsed time as the statistics count it: milliseconds x 1000, truncated.
inline std::int64_t MicrosecondsSince(double startMs) {
  return static_cast<std::int64_t>((NowMs() - startMs) * 1000.0);
}

// Measures what a line of the timing log tells. Without the log no clock is read.
class Stopwatch {
 public:
  Stopwatch() : start(PerfLogEnabled() ? NowMs() : 0.0) {}
  // Milliseconds since it was made; 0 without the log.
  double Ms() const { return PerfLogEnabled() ? NowMs() - start : 0.0; }
  // The same as the statistics count it.
  std::int64_t Microseconds() const { return static_cast<std::int64_t>(Ms() * 1000.0); }

 private:
  const double start;
};

}  // namespace quellix
