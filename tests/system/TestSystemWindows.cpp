#include "TestSystem.h"

#include <windows.h>

#include <boost/interprocess/detail/shared_dir_helpers.hpp>

namespace quellix {

namespace {

std::wstring Wide(const std::string& text) {
  return std::filesystem::path(std::u8string(text.begin(), text.end())).wstring();
}

}  // namespace

std::int64_t OwnProcessId() {
  return GetCurrentProcessId();
}

std::filesystem::path OwnProgram() {
  wchar_t path[MAX_PATH];
  return std::wstring(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
}

void SetVariable(const char* name, const std::string& value) {
  SetEnvironmentVariableW(Wide(name).c_str(), Wide(value).c_str());
}

void UnsetVariable(const char* name) {
  SetEnvironmentVariableW(Wide(name).c_str(), nullptr);
}

void KillProcess(std::int64_t id) {
  HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, static_cast<DWORD>(id));
  TerminateProcess(process, 1);
  CloseHandle(process);
}

void AwaitEnd(std::int64_t id) {
  HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(id));
  if (process == nullptr) return;
  WaitForSingleObject(process, INFINITE);
  CloseHandle(process);
}

std::filesystem::path SharedMemoryFolder() {
  std::string folder;
  boost::interprocess::ipcdetail::get_shared_dir(folder);
  return folder;
}

}  // namespace quellix
