#pragma once

#include <cstdint>
#include <string>

#include "export/RawTextureData.h"

namespace quellix {

// One material before it is sent: shared between the thread that prepared it and the one that
// sends it, and not changed any more once handed over. Colours and factors are 0 to 1.
struct MaterialSendJob {
  bool isPbr = false;
  std::uint32_t index = 0;
  std::string name;
  std::string materialType;
  std::uint64_t key = 0;
  float lightPower = 0.0f;
  bool hidden = false;
  float color[3] = {};  // of a classic material
  float opacity = 1.0f;
  float diffuse = 1.0f;
  float specular = 0.0f;  // always the reflection
  float reflection = 0.0f;
  bool reflectionBlur = false;
  float refraction = 0.0f;
  bool refractionBlur = false;
  float bumpDepth = 0.0f;
  std::string textureName;
  bool hasTexture = false;  // of a classic material or an image
  RawTextureData baseTexture;
  float baseColor[3] = {};  // of a metallic-roughness material
  bool hasBaseTexture = false;
  float metallic = 0.0f;
  bool hasMetallicTexture = false;
  RawTextureData metallicTexture;
  float roughness = 0.0f;
  bool hasRoughnessTexture = false;
  RawTextureData roughnessTexture;
  float normalScale = 1.0f;
  bool hasNormalTexture = false;
  RawTextureData normalTexture;
  bool bumpFromBase = false;  // the normal map is made from the base texture when sending
  float transparency = 0.0f;
};

}  // namespace quellix
