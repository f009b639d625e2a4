// What the sanitizers report and should not. The thread sanitizer does not know that a timed lock
// which answers that the last owner has died has taken the lock, and complains of the unlock that
// follows. wxWidgets stays up until the process ends, with what it holds.

#define KNOWN_REPORTS extern "C" __attribute__((visibility("default"))) const char*

KNOWN_REPORTS __tsan_default_suppressions();
KNOWN_REPORTS __lsan_default_suppressions();

const char* __tsan_default_suppressions() {
  return "mutex:posix_mutex::timed_lock\n";
}

const char* __lsan_default_suppressions() {
  return "leak:libwx_baseu\n";
}
