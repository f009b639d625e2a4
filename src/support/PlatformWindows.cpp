#include "support/Platform.h"

#include <wx/cursor.h>
#include <wx/utils.h>

#include <share.h>
#include <windows.h>

#include "support/Files.h"
#include "support/WxRuntime.h"

namespace quellix {

namespace {

std::wstring Utf8ToWide(const std::string& text) {
  const int length = static_cast<int>(text.size());
  const int units = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(units), L'\0');
  ::MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), units);
  return wide;
}

std::string WideToUtf8(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  const int bytes =
      ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string narrow(static_cast<std::size_t>(bytes), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), bytes, nullptr, nullptr);
  return narrow;
}

}  // namespace

std::uint32_t CurrentProcessId() {
  return ::GetCurrentProcessId();
}

std::uint64_t CoarseTick() {
  return ::GetTickCount64() + 1;
}

// The process's own list, not the C runtime's copy: an interpreter with another runtime changes
// only the first.
std::optional<std::string> EnvironmentVariable(const char* name) {
  const std::wstring wideName = Utf8ToWide(name);
  std::wstring value;
  for (;;) {
    const auto room = static_cast<DWORD>(value.size());
    ::SetLastError(ERROR_SUCCESS);
    const DWORD length = ::GetEnvironmentVariableW(wideName.c_str(), value.data(), room);
    if (length == 0 && ::GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
    if (length < room || length == 0) {
      value.resize(length);
      return WideToUtf8(value);
    }
    value.resize(length);
  }
}

std::tm LocalTime(std::time_t time) {
  std::tm local{};
  ::localtime_s(&local, &time);
  return local;
}

void ShowMessageBox(const std::string& text, const std::string& caption) {
  ::MessageBoxW(nullptr, Utf8ToWide(text).c_str(), Utf8ToWide(caption).c_str(),
                MB_OK | MB_ICONINFORMATION);
}

BusyCursor::BusyCursor() {
  EnsureWx();
  wxBeginBusyCursor(wxHOURGLASS_CURSOR);
}

BusyCursor::~BusyCursor() {
  wxEndBusyCursor();
}

std::FILE* OpenSharedForAppend(const std::string& path) {
  return ::_wfsopen(Utf8ToWide(path).c_str(), L"a", _SH_DENYNO);
}

}  // namespace quellix
