#include "app/MaterialContent.h"

#include <algorithm>
#include <tuple>

namespace kvapp {

namespace {

bool Same(const Texture& a, const Texture& b) {
  return std::tie(a.present, a.width, a.height) == std::tie(b.present, b.width, b.height) &&
         (a.pixels == b.pixels || std::ranges::equal(a.Pixels(), b.Pixels()));
}

bool Same(const ClassicFields& a, const ClassicFields& b) {
  const auto values = [](const ClassicFields& fields) {
    return std::tie(fields.ambientColor, fields.diffuseColor, fields.specularColor, fields.diffuse,
                    fields.specular, fields.reflection, fields.reflectionBlur,
                    fields.refractionBlur, fields.opacity, fields.bumpDepth);
  };
  return values(a) == values(b);
}

bool Same(const PbrFields& a, const PbrFields& b) {
  const auto values = [](const PbrFields& fields) {
    return std::tie(fields.baseColor, fields.metallic, fields.roughness, fields.normalScale,
                    fields.transparency);
  };
  return values(a) == values(b) && Same(a.metallicTexture, b.metallicTexture) &&
         Same(a.roughnessTexture, b.roughnessTexture) && Same(a.normalTexture, b.normalTexture);
}

}  // namespace

bool SameContent(const Material& a, const Material& b) {
  const auto values = [](const Material& material) {
    return std::tie(material.isPbr, material.name, material.type, material.refraction,
                    material.lightPower, material.hidden);
  };
  return values(a) == values(b) && Same(a.classic, b.classic) && Same(a.pbr, b.pbr) &&
         Same(a.colorTexture, b.colorTexture);
}

}  // namespace kvapp
