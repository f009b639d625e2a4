#include "import/AssimpMaterials.h"

#include <SketchUpAPI/model/material.h>
#include <SketchUpAPI/model/model.h>
#include <SketchUpAPI/model/texture.h>
#include <assimp/material.h>
#include <assimp/GltfMaterial.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <set>

#include "core/Refs.h"
#include "core/Texts.h"
#include "model/ImageRep.h"
#include "model/Model.h"

namespace modelhost {

namespace {

SUByte toByte(float part) {
  if (!std::isfinite(part)) return 0;
  return static_cast<SUByte>(std::clamp(part, 0.0f, 1.0f) * 255.0f + 0.5f);
}

std::optional<float> numberOf(const aiMaterial& source, const char* key, unsigned type,
                              unsigned index) {
  float value = 0;
  if (source.Get(key, type, index, value) != aiReturn_SUCCESS || !std::isfinite(value)) {
    return std::nullopt;
  }
  return value;
}

// Raw pixels of a texture inside the file: rows from the top down.
Pixels fromTexels(const aiTexture& texture) {
  Pixels pixels = blankPixels(texture.mWidth, texture.mHeight, 32);
  for (std::size_t y = 0; y < pixels.height; ++y) {
    const aiTexel* row = texture.pcData + (pixels.height - 1 - y) * pixels.width;
    std::uint8_t* out = pixels.bytes.data() + y * pixels.width * 4;
    for (std::size_t x = 0; x < pixels.width; ++x, out += 4) {
      out[0] = row[x].b;
      out[1] = row[x].g;
      out[2] = row[x].r;
      out[3] = row[x].a;
    }
  }
  return pixels;
}

// A file that a texture names: as it is given, or of that name beside the model; files of other
// systems have paths of theirs.
std::optional<Pixels> findPicture(const std::string& name, const std::string& folder) {
  namespace fs = std::filesystem;
  std::string given = name;
  std::replace(given.begin(), given.end(), '\\', '/');
  if (given.starts_with("file://")) given.erase(0, 7);
  const fs::path base(folder);
  const fs::path file = fs::path(given).filename();
  for (const fs::path& path :
       {base / given, base / file, base / "textures" / file, base / ".." / "textures" / file}) {
    if (auto pixels = readPicture(path.string())) return pixels;
  }
  return std::nullopt;
}

// The name in the model: the file's own, made different from all others.
std::string uniqueName(const aiMaterial& source, SUModelRef model) {
  aiString name;
  if (source.Get(AI_MATKEY_NAME, name) != aiReturn_SUCCESS || name.length == 0) {
    name.Set("Material");
  }
  return find(model)->freeMaterialName(asUtf8({name.C_Str(), name.length}));
}

}  // namespace

AssimpMaterials::AssimpMaterials(const aiScene& scene, const std::string& path, SUModelRef model)
    : scene_(scene),
      folder_(std::filesystem::path(path).parent_path().string()),
      model_(model),
      made_(scene.mNumMaterials, SUMaterialRef(SU_INVALID)) {}

SUMaterialRef AssimpMaterials::get(unsigned index) {
  if (index >= made_.size()) return SU_INVALID;
  if (SUIsInvalid(made_[index])) made_[index] = make(*scene_.mMaterials[index]);
  return made_[index];
}

SUMaterialRef AssimpMaterials::make(const aiMaterial& source) {
  SUMaterialRef material = SU_INVALID;
  SUMaterialCreate(&material);
  SUMaterialSetName(material, uniqueName(source, model_).c_str());
  SUModelAddMaterials(model_, 1, &material);
  SUTextureRef base = texture(source, aiTextureType_BASE_COLOR, 0);
  if (SUIsInvalid(base)) base = texture(source, aiTextureType_DIFFUSE, 0);
  if (SUIsValid(base)) SUMaterialSetTexture(material, base);
  readColors(source, material);
  readPbr(source, material);
  return material;
}

void AssimpMaterials::readColors(const aiMaterial& source, SUMaterialRef material) {
  aiColor4D color(1, 1, 1, 1);
  if (source.Get(AI_MATKEY_BASE_COLOR, color) != aiReturn_SUCCESS) {
    source.Get(AI_MATKEY_COLOR_DIFFUSE, color);
  }
  const SUColor bytes{toByte(color.r), toByte(color.g), toByte(color.b), 255};
  SUMaterialSetColor(material, &bytes);
  float opacity = numberOf(source, AI_MATKEY_OPACITY).value_or(1.0f);
  // glTF has its opacity in the colour, and counts it only where it says so.
  aiString mode;
  if (source.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == aiReturn_SUCCESS) {
    opacity = std::string(mode.C_Str()) == "BLEND" ? std::min(opacity, color.a) : 1.0f;
  }
  if (opacity < 1.0f) {
    SUMaterialSetOpacity(material, static_cast<double>(std::max(opacity, 0.0f)));
    SUMaterialSetUseOpacity(material, true);
  }
}

void AssimpMaterials::readPbr(const aiMaterial& source, SUMaterialRef material) {
  const auto metallic = numberOf(source, AI_MATKEY_METALLIC_FACTOR);
  const auto roughness = numberOf(source, AI_MATKEY_ROUGHNESS_FACTOR);
  if (!metallic && !roughness) return;
  SUMaterialSetMetalnessEnabled(material, true);
  SUMaterialSetMetallicFactor(material, static_cast<double>(metallic.value_or(0.0f)));
  SUMaterialSetRoughnessEnabled(material, true);
  SUMaterialSetRoughnessFactor(material, static_cast<double>(roughness.value_or(1.0f)));
  const SUTextureRef metallicTexture = texture(source, aiTextureType_METALNESS, 0);
  if (SUIsValid(metallicTexture)) SUMaterialSetMetallicTexture(material, metallicTexture);
  const SUTextureRef roughnessTexture = texture(source, aiTextureType_DIFFUSE_ROUGHNESS, 0);
  if (SUIsValid(roughnessTexture)) SUMaterialSetRoughnessTexture(material, roughnessTexture);
  const SUTextureRef normalTexture = texture(source, aiTextureType_NORMALS, 0);
  if (SUIsValid(normalTexture)) {
    SUMaterialSetNormalEnabled(material, true);
    SUMaterialSetNormalTexture(material, normalTexture);
  }
}

SUTextureRef AssimpMaterials::texture(const aiMaterial& source, int type, unsigned slot) {
  SUTextureRef result = SU_INVALID;
  aiString name;
  if (source.GetTexture(static_cast<aiTextureType>(type), slot, &name) != aiReturn_SUCCESS ||
      name.length == 0) {
    return result;
  }
  const Picture& found = picture(std::string(name.C_Str(), name.length));
  if (!found.pixels) return result;
  ImageRep rep;
  rep.pixels = found.pixels;
  SUTextureCreateFromImageRep(&result, refOf<SUImageRepRef>(&rep));
  SUTextureSetFileName(result, found.fileName.c_str());
  return result;
}

const AssimpMaterials::Picture& AssimpMaterials::picture(const std::string& name) {
  const auto [at, isNew] = pictures_.try_emplace(name);
  if (isNew) {
    at->second = read(name);
    if (!at->second.pixels) ++unreadable_;
  }
  return at->second;
}

AssimpMaterials::Picture AssimpMaterials::read(const std::string& name) const {
  std::optional<Pixels> pixels;
  std::string fileName = std::filesystem::path(name).filename().string();
  if (const aiTexture* inside = scene_.GetEmbeddedTexture(name.c_str())) {
    if (inside->mHeight == 0) {
      pixels =
          decodePicture({reinterpret_cast<const std::uint8_t*>(inside->pcData), inside->mWidth});
    } else if (inside->mWidth <= kMaxSide && inside->mHeight <= kMaxSide) {
      pixels = fromTexels(*inside);
    }
    if (inside->mFilename.length > 0) {
      fileName = std::filesystem::path(inside->mFilename.C_Str()).filename().string();
    }
  } else {
    pixels = findPicture(name, folder_);
  }
  if (!pixels) return {};
  return {std::make_shared<Pixels>(std::move(*pixels)), asUtf8(fileName)};
}

}  // namespace modelhost
