#include "link/RendererProcess.h"

#include <wx/filename.h>
#include <wx/log.h>
#include <wx/process.h>
#include <wx/utils.h>

#include <windows.h>

#include "support/Platform.h"
#include "support/WxRuntime.h"

namespace quellix {

namespace {

wxFileName ProgramBelow(const wxString& directory, const char* folder, const char* name) {
  wxFileName program(directory, wxEmptyString);
  program.AppendDir(folder);
  program.MakeAbsolute();
  program.SetFullName(name);
  return program;
}

}  // namespace

// The directory is given in the locale's encoding. A caller who hands over UTF-8 under another
// locale is understood as well: what leads to no program one way is read the other way.
bool RendererProcess::Start(const std::string& directory) {
  EnsureWx();
  LetGo();
  const wxString decoded(directory.c_str());
  wxFileName program = ProgramBelow(decoded, kFolder, kProgram);
  if ((decoded.empty() && !directory.empty()) || !program.FileExists()) {
    program = ProgramBelow(wxString::FromUTF8(directory.c_str()), kFolder, kProgram);
  }
  if (!program.FileExists()) return false;

  const wxString commandLine = wxString::Format("\"%s\" --host-pid %lu", program.GetFullPath(),
                                                static_cast<unsigned long>(CurrentProcessId()));
  wxExecuteEnv environment;
  environment.cwd = program.GetPath(wxPATH_GET_VOLUME | wxPATH_GET_SEPARATOR);
  // The one box that a user sees about a failed start is the caller's.
  const wxLogNull silence;
  const long id = wxExecute(commandLine, wxEXEC_ASYNC, nullptr, &environment);
  if (id < 1) return false;
  // The process may have ended before it can be opened.
  HANDLE process = ::OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(id));
  handle = process == nullptr ? -1 : reinterpret_cast<std::intptr_t>(process);
  processId = static_cast<std::int32_t>(id);
  return true;
}

bool RendererProcess::Alive() const {
  const std::int32_t id = processId;
  if (id <= 0) return false;
  if (handle != -1) {
    return ::WaitForSingleObject(reinterpret_cast<HANDLE>(handle), 0) == WAIT_TIMEOUT;
  }
  return wxProcess::Exists(id);
}

void RendererProcess::LetGo() {
  if (handle != -1) ::CloseHandle(reinterpret_cast<HANDLE>(handle));
  handle = -1;
  processId = 0;
}

}  // namespace quellix
