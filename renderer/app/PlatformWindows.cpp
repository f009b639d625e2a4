#include "app/Platform.h"

#include <atomic>
#include <cstddef>

#include <windows.h>

#include <boost/interprocess/shared_memory_object.hpp>

#include "app/Paths.h"

namespace kvapp {

namespace {

std::atomic<bool> terminationAsked{false};

BOOL WINAPI OnConsoleEvent(DWORD event) {
  if (event == CTRL_C_EVENT) return TRUE;
  terminationAsked = true;
  return TRUE;
}

std::wstring Wide(const std::string& utf8) {
  return FilePath(utf8).wstring();
}

HANDLE HandleOf(std::intptr_t value) {
  return reinterpret_cast<HANDLE>(value);
}

}  // namespace

HostWatch::HostWatch(std::int64_t processId) : processId_(processId) {
  HANDLE process = ::OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(processId));
  found_ = process != nullptr;
  if (found_) handle_ = reinterpret_cast<std::intptr_t>(process);
}

HostWatch::~HostWatch() {
  if (found_) ::CloseHandle(HandleOf(handle_));
}

bool HostWatch::Alive() const {
  return found_ && ::WaitForSingleObject(HandleOf(handle_), 0) == WAIT_TIMEOUT;
}

// Objects are files there, so a file's identity is the object's.
std::optional<ObjectIdentity> IdentityOfSharedObject(const std::string& name) {
  namespace bip = boost::interprocess;
  try {
    const bip::shared_memory_object object(bip::open_only, name.c_str(), bip::read_only);
    BY_HANDLE_FILE_INFORMATION file{};
    if (::GetFileInformationByHandle(object.get_mapping_handle().handle, &file) == 0) {
      return std::nullopt;
    }
    return ObjectIdentity{file.dwVolumeSerialNumber,
                          (std::uint64_t{file.nFileIndexHigh} << 32) | file.nFileIndexLow};
  } catch (const bip::interprocess_exception&) {
    return std::nullopt;
  }
}

// The system does not tell what another process has mapped.
bool MapsObject(std::int64_t, const ObjectIdentity&) {
  return true;
}

std::string EnvironmentText(const char* name) {
  const wchar_t* value = ::_wgetenv(Wide(name).c_str());
  return value == nullptr ? std::string() : Utf8(value);
}

std::filesystem::path ProgramFolder() {
  std::wstring program(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length =
        ::GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    if (length == 0) return std::filesystem::current_path();
    if (length < program.size()) {
      program.resize(length);
      return std::filesystem::path(program).parent_path();
    }
    program.resize(program.size() * 2);
  }
}

std::string RunProgram(const std::vector<std::string>& arguments, std::chrono::seconds limit) {
  // The arguments are paths, which hold no quotes and do not end with a backslash.
  std::wstring line;
  for (const std::string& argument : arguments) line += L'"' + Wide(argument) + L"\" ";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (::CreateProcessW(Wide(arguments[0]).c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                       nullptr, &startup, &process) == 0) {
    return arguments[0] + " could not be started: error " + std::to_string(::GetLastError());
  }
  const auto limitMs = static_cast<DWORD>(std::chrono::milliseconds(limit).count());
  const bool ended = ::WaitForSingleObject(process.hProcess, limitMs) == WAIT_OBJECT_0;
  DWORD status = 0;
  if (ended) {
    ::GetExitCodeProcess(process.hProcess, &status);
  } else {
    ::TerminateProcess(process.hProcess, 1);
  }
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);
  if (!ended) {
    return arguments[0] + " took longer than " + std::to_string(limit.count()) + " s and was ended";
  }
  return status == 0 ? std::string()
                     : arguments[0] + " ended with status " + std::to_string(status);
}

// They get no handles at all.
void KeepFromChildren(std::intptr_t) {}

void HandleSignals() {
  ::SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

bool TerminationAsked() {
  return terminationAsked;
}

void CrashNow() {
  ExitNow(137);
}

void ExitNow(int status) {
  ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(status));
  for (;;) ::Sleep(INFINITE);  // it cannot fail for oneself; this only tells the compiler so
}

}  // namespace kvapp
