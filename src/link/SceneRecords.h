#pragma once

#include <cstdint>

namespace quellix {

// Pixels as a material command carries them: 4 bytes each, rows packed. No pixels: size 0, null.
struct TexturePixels {
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  std::uint64_t size = 0;
  const void* bytes = nullptr;
};

// One of the textures of a metallic-roughness material beside the base colour's.
struct ChannelPixels : TexturePixels {
  std::uint64_t bitsPerPixel = 0;
  std::uint64_t stride = 0;
};

// The values of AppendMaterial. Colours and factors are 0 to 1; texts are UTF-8, null for none.
struct ClassicMaterialRecord {
  std::uint32_t index = 0;
  float ambientColor[3] = {};
  float diffuseColor[3] = {};
  float specularColor[3] = {};
  float diffuse = 1.0f;
  float specular = 0.0f;
  float reflection = 0.0f;
  bool reflectionBlur = false;
  float refraction = 0.0f;
  bool refractionBlur = false;
  float opacity = 1.0f;
  bool hasTexture = false;
  const char* textureName = nullptr;
  TexturePixels texture;
  float bumpDepth = 0.0f;
  float lightPower = 0.0f;
  bool hidden = false;
  const char* name = nullptr;
  const char* materialType = nullptr;
  std::uint64_t key = 0;
};

// The values of AppendPBRMaterial.
struct PbrMaterialRecord {
  std::uint32_t index = 0;
  const char* name = nullptr;
  float baseColor[3] = {};
  bool hasBaseTexture = false;
  TexturePixels baseTexture;
  float metallic = 0.0f;
  bool hasMetallicTexture = false;
  ChannelPixels metallicTexture;
  float roughness = 0.0f;
  bool hasRoughnessTexture = false;
  ChannelPixels roughnessTexture;
  float normalScale = 1.0f;
  bool hasNormalTexture = false;
  ChannelPixels normalTexture;
  float transparency = 0.0f;
  float refraction = 0.0f;
  float lightPower = 0.0f;
  bool hidden = false;
  const char* materialType = nullptr;
  std::uint64_t key = 0;
};

// A camera as Ruby describes it; its values are the renderer's to interpret.
struct CameraValues {
  float vector1[3] = {};
  float vector2[3] = {};
  float vector3[3] = {};
  float cameraScalar = 0.0f;
  float vector4[3] = {};
};

// Background settings as Ruby gives them: the last one is a float that goes out as an integer.
struct BackgroundValues {
  float floats[3] = {};
  std::int32_t integers[6] = {};
  float last = 0.0f;
};

}  // namespace quellix
