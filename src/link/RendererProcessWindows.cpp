#include "link/RendererProcess.h"

#include <wx/filename.h>
#include <wx/process.h>

#include <windows.h>

namespace quellix {

// The handle may be missing when the process had ended before it was opened.
void RendererProcess::Hold() {
  HANDLE process = ::OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(processId.load()));
  handle = process == nullptr ? -1 : reinterpret_cast<std::intptr_t>(process);
}

void RendererProcess::LetGo() {
  if (handle != -1) ::CloseHandle(reinterpret_cast<HANDLE>(handle));
  handle = -1;
}

bool RendererProcess::Alive() const {
  const std::int32_t id = processId;
  if (id <= 0) return false;
  if (handle != -1) {
    return ::WaitForSingleObject(reinterpret_cast<HANDLE>(handle), 0) == WAIT_TIMEOUT;
  }
  return wxProcess::Exists(id);
}

bool IsStartable(const std::string& path) {
  return wxFileName::FileExists(wxString::FromUTF8(path.c_str()));
}

// A process's end is no signal there.
ChildSignalKeeper::ChildSignalKeeper() = default;
ChildSignalKeeper::~ChildSignalKeeper() = default;

}  // namespace quellix
