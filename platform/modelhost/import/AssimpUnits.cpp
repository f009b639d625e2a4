#include "import/AssimpUnits.h"

#include <assimp/scene.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <initializer_list>

#include "model/Geometry.h"

namespace modelhost {

namespace {

constexpr double kInchesPerMetre = 1 / 0.0254;

std::string suffixOf(const std::string& path) {
  std::string suffix = std::filesystem::path(path).extension().string();
  std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return suffix;
}

bool isOneOf(const std::string& suffix, std::initializer_list<const char*> list) {
  return std::find(list.begin(), list.end(), suffix) != list.end();
}

// Metadata numbers come as any of several types.
double numberIn(const aiScene& scene, const char* key, double otherwise) {
  if (scene.mMetaData == nullptr) return otherwise;
  double real = 0;
  if (scene.mMetaData->Get(key, real)) return real;
  float single = 0;
  if (scene.mMetaData->Get(key, single)) return static_cast<double>(single);
  int whole = 0;
  if (scene.mMetaData->Get(key, whole)) return whole;
  return otherwise;
}

double inchesPerUnit(const aiScene& scene, const std::string& suffix) {
  // assimp brings COLLADA and IFC to metres itself.
  if (isOneOf(suffix, {".gltf", ".glb", ".dae", ".ifc", ".ifczip", ".x3d", ".x3db"})) {
    return kInchesPerMetre;
  }
  if (isOneOf(suffix, {".3mf", ".amf"})) return kInchesPerMetre / 1000;
  // FBX: centimetres in one unit.
  if (suffix == ".fbx") return numberIn(scene, "UnitScaleFactor", 1) * kInchesPerMetre / 100;
  return 1;
}

bool isZUp(const aiScene& scene, const std::string& suffix) {
  if (suffix == ".fbx") return numberIn(scene, "UpAxis", 1) == 2;
  return isOneOf(suffix, {".stl", ".ply", ".dxf", ".3mf", ".amf", ".off", ".blend"});
}

}  // namespace

SUTransformation conversionOf(const aiScene& scene, const std::string& path) {
  const std::string suffix = suffixOf(path);
  const double s = inchesPerUnit(scene, suffix);
  if (isZUp(scene, suffix)) return {{s, 0, 0, 0, 0, s, 0, 0, 0, 0, s, 0, 0, 0, 0, 1}};
  // Y up becomes Z up: (x, y, z) goes to (x, -z, y).
  return {{s, 0, 0, 0, 0, 0, s, 0, 0, -s, 0, 0, 0, 0, 0, 1}};
}

}  // namespace modelhost
