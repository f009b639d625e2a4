#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include <nlohmann/json.hpp>

#include "app/GlbDocument.h"
#include "app/SceneTypes.h"

namespace kvapp {

// Turns materials into glTF materials, each the first time it is asked for.
class GlbMaterials {
 public:
  explicit GlbMaterials(GlbDocument& document) : document_(document) {}

  // The glTF material of one; a null material stands for one that is not known.
  std::size_t Index(const Material* material, bool doubleSided);

  // Whether surfaces of it need texture coordinates.
  static bool IsTextured(const Material* material);
  // Whether surfaces of it show nothing at all.
  static bool IsInvisible(const Material* material);
  // "OPAQUE", "MASK" or "BLEND": how surfaces of it let through what is behind.
  static const char* AlphaMode(const Material& material);

 private:
  struct Alpha {
    const char* mode;
    float factor;
  };

  nlohmann::json Describe(const Material& material);
  nlohmann::json ClassicSurface(const Material& material);
  nlohmann::json PbrSurface(const Material& material);
  void AddEmission(const Material& material, nlohmann::json& described);
  std::optional<std::size_t> MetallicRoughnessTexture(const Material& material);
  std::size_t AddTexture(std::uint32_t width, std::uint32_t height,
                         const std::vector<std::uint8_t>& rgbaTopFirst);
  std::size_t ColorTexture(const Material& material);

  GlbDocument& document_;
  std::map<std::pair<const Material*, bool>, std::size_t> materials_;
  std::map<const Material*, nlohmann::json> described_;
  std::map<std::uint64_t, std::size_t> textures_;  // by digest of size and pixels
};

// A colour channel of the host, which is coded for the screen, as a linear factor.
float ToLinear(float channel);

}  // namespace kvapp
