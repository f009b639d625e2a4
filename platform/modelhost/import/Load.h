// Reads files into models.
#pragma once

#include <SketchUpAPI/model/defs.h>

#include <stdexcept>
#include <string>

namespace modelhost {

struct LoadResult {
  // Null when the file could not be read; otherwise the caller's to release.
  SUModelRef model = SU_INVALID;
  // One sentence: what is wrong and where, or what was left out. May be empty on success.
  std::string message;
};

// A scene of the project's own (.json), else whatever assimp makes of it. Never throws.
LoadResult loadFile(const std::string& path);

// What is wrong with a file, as one sentence that names the place.
class ImportError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Both fill `model` and return what had to be left out (may be empty); they throw ImportError.
std::string importScene(const std::string& path, SUModelRef model);
std::string importWithAssimp(const std::string& path, SUModelRef model);

}  // namespace modelhost
