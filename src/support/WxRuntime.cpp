#include "support/WxRuntime.h"

#include <clocale>
#include <string>

#include <wx/app.h>
#include <wx/init.h>

namespace quellix {

void EnsureWx() {
  static const bool ready = [] {
    if (wxAppConsole::GetInstance() != nullptr) return true;
    const char* current = std::setlocale(LC_NUMERIC, nullptr);
    const std::string numeric = current == nullptr ? "C" : current;
    const bool started = wxInitialize();
    std::setlocale(LC_NUMERIC, numeric.c_str());
    return started;
  }();
  static_cast<void>(ready);
}

}  // namespace quellix
