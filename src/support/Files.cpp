#include "support/Files.h"

#include <chrono>
#include <thread>

namespace quellix {

std::FILE* OpenSharedForAppendPatiently(const std::string& path) {
  constexpr int kAttempts = 5;
  for (int attempt = 1;; ++attempt) {
    if (std::FILE* file = OpenSharedForAppend(path)) return file;
    if (attempt == kAttempts) return nullptr;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace quellix
