// Where the library that reads other formats is not there.

#include "import/Load.h"

namespace modelhost {

std::string importWithAssimp(const std::string& path, SUModelRef) {
  throw ImportError(path + ": only scenes (.json) are read on this system");
}

}  // namespace modelhost
