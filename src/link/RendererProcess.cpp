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

// The locale's encoding, as the directory is given; a process without a locale cannot decode
// anything beyond ASCII, and then UTF-8 is what it was.
wxString DecodeDirectory(const std::string& directory) {
  const wxString decoded(directory.c_str());
  return decoded.empty() && !directory.empty() ? wxString::FromUTF8(directory.c_str()) : decoded;
}

}  // namespace

RendererProcess::~RendererProcess() {
  LetGo();
}

bool RendererProcess::Start(const std::string& directory) {
  EnsureWx();
  LetGo();
  processId = 0;

  wxFileName folder(DecodeDirectory(directory), wxEmptyString);
  folder.AppendDir(kFolder);
  folder.MakeAbsolute();
  wxFileName program(folder);
  program.SetFullName(kProgram);

  const std::string path(program.GetFullPath().utf8_str());
  if (!IsStartable(path)) return false;

  const wxString commandLine = wxString::Format("\"%s\" --host-pid %lu", program.GetFullPath(),
                                                static_cast<unsigned long>(CurrentProcessId()));
  wxExecuteEnv environment;
  environment.cwd = folder.GetFullPath();

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
