#include "support/ModelName.h"

#include <wx/filename.h>

namespace quellix {

std::string ModelNameOf(const std::string& path) {
  const wxFileName file(wxString::FromUTF8(path.c_str()));
  const wxString base = file.IsOk() ? file.GetName() : wxString();
  return base.empty() ? "Untitled" : std::string(base.utf8_str());
}

}  // namespace quellix
