#include "support/ThreadName.h"

#include <wx/string.h>
#include <wx/thread.h>

namespace quellix {

void NameThreadOnce(const char* name) {
  thread_local bool named = false;
  if (named) return;
  named = true;
  wxThread::SetNameForCurrent(wxString::FromAscii(name));
}

}  // namespace quellix
