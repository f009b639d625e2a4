#include "import/Load.h"

#include <SketchUpAPI/model/model.h>

#include <algorithm>
#include <cctype>
#include <exception>
#include <filesystem>
#include <fstream>

#include "core/Paths.h"
#include "core/Refs.h"
#include "core/Texts.h"
#include "model/Model.h"

namespace modelhost {

namespace {

namespace fs = std::filesystem;

std::string lowerSuffix(const std::string& path) {
  std::string suffix = utf8(filePath(path).extension());
  std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return suffix;
}

void checkReadable(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(filePath(path), error);
  if (!fs::exists(status)) throw ImportError(path + ": there is no such file");
  if (fs::is_directory(status)) throw ImportError(path + ": this is a folder, not a file");
  if (!std::ifstream(filePath(path), std::ios::binary))
    throw ImportError(path + ": cannot be opened");
}

// assimp reserves room for as many things as an OFF file says it has, before it reads them.
void checkOffCounts(const std::string& path) {
  std::ifstream in(filePath(path));
  std::string head;
  double vertices = 0;
  double faces = 0;
  if (!(in >> head >> vertices >> faces)) return;
  // Each of them is a line of several numbers.
  const auto size = static_cast<double>(fs::file_size(filePath(path)));
  if (vertices * 4 > size || faces * 4 > size) {
    throw ImportError(path + ": it says that it holds more than fits into it");
  }
}

std::string read(const std::string& path, SUModelRef ref) {
  checkReadable(path);
  if (lowerSuffix(path) == ".off") checkOffCounts(path);
  Model& model = *find(ref);
  model.path = path;
  model.title = asUtf8(utf8(filePath(path).stem()));
  model.name = model.title;
  return lowerSuffix(path) == ".json" ? importScene(path, ref) : importWithAssimp(path, ref);
}

}  // namespace

LoadResult loadFile(const std::string& path) {
  LoadResult result;
  if (SUModelCreate(&result.model) != SU_ERROR_NONE) {
    result.message = path + ": no model can be made";
    return result;
  }
  try {
    result.message = read(path, result.model);
    return result;
  } catch (const ImportError& error) {
    result.message = error.what();
  } catch (const std::exception& error) {
    result.message = path + ": cannot be read: " + error.what();
  }
  SUModelRelease(&result.model);
  return result;
}

}  // namespace modelhost
