#include "TestSystem.h"

namespace quellix {

std::vector<std::string> LinkObjects() {
  std::vector<std::string> names;
  std::error_code none;
  for (const auto& entry : std::filesystem::directory_iterator(SharedMemoryFolder(), none)) {
    const std::string name = entry.path().filename().string();
    if (name.rfind("Qlx_", 0) == 0 && name.rfind("Qlx_Test", 0) != 0) names.push_back(name);
  }
  return names;
}

}  // namespace quellix
