#include "link/RendererProcess.h"

#include <wx/filename.h>
#include <wx/log.h>
#include <wx/process.h>
#include <wx/utils.h>

#include "support/Platform.h"
#include "support/WxRuntime.h"

namespace quellix {

namespace {

constexpr char kFolder[] = "KvApp";
constexpr char kProgram[] = "KvApp.exe";

std::string Utf8(const wxFileName& file) {
  return std::string(file.GetFullPath().utf8_str());
}

wxFileName ProgramBelow(const wxString& directory) {
  wxFileName program(directory, wxEmptyString);
  program.AppendDir(kFolder);
  program.MakeAbsolute();
  program.SetFullName(kProgram);
  return program;
}

// The directory is given in the locale's encoding. A caller who hands over UTF-8 under another
// locale is understood as well: what leads to no program one way is read the other way.
wxFileName FindProgram(const std::string& directory) {
  const wxString decoded(directory.c_str());
  if (!decoded.empty() || directory.empty()) {
    const wxFileName program = ProgramBelow(decoded);
    if (IsStartable(Utf8(program))) return program;
  }
  return ProgramBelow(wxString::FromUTF8(directory.c_str()));
}

}  // namespace

RendererProcess::~RendererProcess() {
  LetGo();
}

bool RendererProcess::Start(const std::string& directory) {
  EnsureWx();
  LetGo();
  processId = 0;

  const wxFileName program = FindProgram(directory);
  if (!IsStartable(Utf8(program))) return false;

  const wxString commandLine = wxString::Format("\"%s\" --host-pid %lu", program.GetFullPath(),
                                                static_cast<unsigned long>(CurrentProcessId()));
  wxExecuteEnv environment;
  environment.cwd = program.GetPath(wxPATH_GET_VOLUME | wxPATH_GET_SEPARATOR);

  // The one box that a user sees about a failed start is the caller's.
  const wxLogNull silence;
  const ChildSignalKeeper keeper;
  const long id = wxExecute(commandLine, wxEXEC_ASYNC, nullptr, &environment);
  if (id < 1) return false;
  processId = static_cast<std::int32_t>(id);
  Hold();
  return true;
}

}  // namespace quellix
