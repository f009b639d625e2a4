#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

// What differs between the systems the extension runs on, one implementation file a system.

namespace quellix {

// The id of this process, as the renderer's command line carries it. Any thread.
std::uint32_t CurrentProcessId();

// A monotonic count that is a few times cheaper to read than a clock, and steps every 1 to 16
// milliseconds; never 0. Any thread.
std::uint64_t CoarseTick();

// The value of an environment variable as UTF-8; empty when it is unset. Any thread, while none
// changes the environment.
std::optional<std::string> EnvironmentVariable(const char* name);

// Breaks a time down in the local time zone. Any thread.
std::tm LocalTime(std::time_t time);

// Tells the user something and returns when it was read: a message box where the host has a window
// system, a line on standard error elsewhere. Both texts are UTF-8. Host thread.
void ShowMessageBox(const std::string& text, const std::string& caption);

// Shows the host's busy cursor while it lives; does nothing where there is no window system. Host
// thread.
class BusyCursor {
 public:
  BusyCursor();
  ~BusyCursor();
  BusyCursor(const BusyCursor&) = delete;
  BusyCursor& operator=(const BusyCursor&) = delete;
};

}  // namespace quellix
