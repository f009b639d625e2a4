#include "app/GlbMaterials.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "app/Fnv.h"
#include "app/Png.h"

namespace kvapp {

using nlohmann::json;

namespace {

// Roughness of classic materials, which know reflection only as sharp, blurred or none.
constexpr float kDull = 0.85f;
constexpr float kBlurred = 0.4f;
constexpr float kSharp = 0.08f;

constexpr std::uint8_t kNearlyClear = 8;
constexpr std::uint8_t kNearlyOpaque = 247;

// Top row first, red first. Colour and channel pixels come blue first.
std::vector<std::uint8_t> ToRgba(const Texture& texture, bool blueFirst) {
  std::vector<std::uint8_t> rgba(texture.Pixels().size());
  const std::size_t stride = std::size_t{texture.width} * 4;
  for (std::size_t row = 0; row < texture.height; ++row) {
    const std::uint8_t* from = texture.Pixels().data() + (texture.height - 1 - row) * stride;
    std::uint8_t* to = rgba.data() + row * stride;
    for (std::size_t i = 0; i < stride; i += 4) {
      to[i] = from[i + (blueFirst ? 2 : 0)];
      to[i + 1] = from[i + 1];
      to[i + 2] = from[i + (blueFirst ? 0 : 2)];
      to[i + 3] = from[i + 3];
    }
  }
  return rgba;
}

json LinearColor(const Vector3& color, float scale) {
  json factors = json::array();
  for (const float channel : color)
    factors.push_back(std::clamp(ToLinear(channel) * scale, 0.f, 1.f));
  return factors;
}

// Opacity of a surface apart from its texture's.
float Opacity(const Material& material) {
  return std::clamp(material.isPbr ? 1 - material.pbr.transparency : material.classic.opacity, 0.f,
                    1.f);
}

std::uint8_t Sample(const Texture& texture, std::size_t x, std::size_t y, std::size_t width,
                    std::size_t height) {
  const std::size_t column = x * texture.width / width;
  const std::size_t row = y * texture.height / height;
  return texture.Pixels()[(row * texture.width + column) * 4 + 1];
}

}  // namespace

float ToLinear(float channel) {
  if (channel <= 0.04045f) return std::max(channel, 0.f) / 12.92f;
  return std::pow((channel + 0.055f) / 1.055f, 2.4f);
}

bool GlbMaterials::IsTextured(const Material* material) {
  return material != nullptr &&
         (material->colorTexture.HasPixels() || material->pbr.metallicTexture.HasPixels() ||
          material->pbr.roughnessTexture.HasPixels() || material->pbr.normalTexture.HasPixels());
}

bool GlbMaterials::IsInvisible(const Material* material) {
  return material != nullptr && (material->hidden || Opacity(*material) <= 0);
}

// Cut-outs, such as foliage, are drawn in any order; what is really see-through must be sorted.
const char* GlbMaterials::AlphaMode(const Material& material) {
  if (Opacity(material) < 1) return "BLEND";
  const auto pixels = material.colorTexture.Pixels();
  std::size_t between = 0;
  std::size_t clear = 0;
  for (std::size_t i = 3; i < pixels.size(); i += 4) {
    clear += pixels[i] < kNearlyClear ? 1 : 0;
    between += pixels[i] >= kNearlyClear && pixels[i] <= kNearlyOpaque ? 1 : 0;
  }
  if (clear + between == 0) return "OPAQUE";
  return between * 10 < pixels.size() / 4 ? "MASK" : "BLEND";
}

std::size_t GlbMaterials::Index(const Material* material, bool doubleSided) {
  const auto [found, added] = materials_.try_emplace({material, doubleSided}, 0);
  if (!added) return found->second;
  json& described = described_[material];
  if (described.is_null()) {
    described = material != nullptr
                    ? Describe(*material)
                    : json{{"name", "unknown material"},
                           {"pbrMetallicRoughness",
                            {{"baseColorFactor", {0.5, 0.5, 0.5, 1}}, {"metallicFactor", 0}}}};
  }
  json object = described;
  if (doubleSided) object["doubleSided"] = true;
  return found->second = document_.Add("materials", std::move(object));
}

json GlbMaterials::Describe(const Material& material) {
  json described = {
      {"name", material.name},
      {"pbrMetallicRoughness", material.isPbr ? PbrSurface(material) : ClassicSurface(material)}};
  const char* mode = AlphaMode(material);
  if (std::string_view(mode) != "OPAQUE") described["alphaMode"] = mode;
  if (material.isPbr && material.pbr.normalTexture.HasPixels()) {
    const Texture& normal = material.pbr.normalTexture;
    described["normalTexture"] = {
        {"index", AddTexture(normal.width, normal.height, ToRgba(normal, false))},
        {"scale", material.pbr.normalScale}};
  }
  AddEmission(material, described);
  described["extras"] = {{"key", material.key},
                         {"type", material.type},
                         {"refraction", material.refraction},
                         {"lightPower", material.lightPower}};
  return described;
}

json GlbMaterials::ClassicSurface(const Material& material) {
  const ClassicFields& classic = material.classic;
  json factors = {1, 1, 1};
  json surface;
  if (material.colorTexture.HasPixels()) {
    factors = json::array({classic.diffuse, classic.diffuse, classic.diffuse});
    for (json& factor : factors) factor = std::clamp(factor.get<float>(), 0.f, 1.f);
    surface["baseColorTexture"] = {{"index", ColorTexture(material)}};
  } else {
    factors = LinearColor(classic.diffuseColor, classic.diffuse);
  }
  factors.push_back(Opacity(material));
  surface["baseColorFactor"] = factors;
  surface["metallicFactor"] = material.type == "Metallic" ? 1 : 0;
  surface["roughnessFactor"] = classic.reflection <= 0  ? kDull
                               : classic.reflectionBlur ? kBlurred
                                                        : kSharp;
  return surface;
}

json GlbMaterials::PbrSurface(const Material& material) {
  const PbrFields& pbr = material.pbr;
  json surface;
  json factors = {1, 1, 1};
  if (material.colorTexture.HasPixels()) {
    surface["baseColorTexture"] = {{"index", ColorTexture(material)}};
  } else {
    factors = LinearColor(pbr.baseColor, 1);
  }
  factors.push_back(Opacity(material));
  surface["baseColorFactor"] = factors;
  surface["metallicFactor"] = std::clamp(pbr.metallic, 0.f, 1.f);
  surface["roughnessFactor"] = std::clamp(pbr.roughness, 0.f, 1.f);
  if (const auto texture = MetallicRoughnessTexture(material)) {
    surface["metallicRoughnessTexture"] = {{"index", *texture}};
  }
  return surface;
}

// glTF keeps both in one picture: roughness in green, metalness in blue.
std::optional<std::size_t> GlbMaterials::MetallicRoughnessTexture(const Material& material) {
  const Texture& metallic = material.pbr.metallicTexture;
  const Texture& roughness = material.pbr.roughnessTexture;
  if (!metallic.HasPixels() && !roughness.HasPixels()) return std::nullopt;
  const std::size_t width = std::max(metallic.HasPixels() ? metallic.width : 0u,
                                     roughness.HasPixels() ? roughness.width : 0u);
  const std::size_t height = std::max(metallic.HasPixels() ? metallic.height : 0u,
                                      roughness.HasPixels() ? roughness.height : 0u);
  std::vector<std::uint8_t> rgba(width * height * 4, 255);
  for (std::size_t y = 0; y < height; ++y) {
    std::uint8_t* row = rgba.data() + (height - 1 - y) * width * 4;
    for (std::size_t x = 0; x < width; ++x) {
      if (roughness.HasPixels()) row[x * 4 + 1] = Sample(roughness, x, y, width, height);
      if (metallic.HasPixels()) row[x * 4 + 2] = Sample(metallic, x, y, width, height);
    }
  }
  return AddTexture(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), rgba);
}

void GlbMaterials::AddEmission(const Material& material, json& described) {
  if (material.lightPower <= 0) return;
  if (material.colorTexture.HasPixels()) {
    described["emissiveFactor"] = {1, 1, 1};
    described["emissiveTexture"] = {{"index", ColorTexture(material)}};
  } else {
    described["emissiveFactor"] =
        LinearColor(material.isPbr ? material.pbr.baseColor : material.classic.diffuseColor, 1);
  }
  const char* kStrength = "KHR_materials_emissive_strength";
  document_.UseExtension(kStrength);
  described["extensions"] = {{kStrength, {{"emissiveStrength", material.lightPower}}}};
}

std::size_t GlbMaterials::ColorTexture(const Material& material) {
  const Texture& texture = material.colorTexture;
  return AddTexture(texture.width, texture.height, ToRgba(texture, true));
}

std::size_t GlbMaterials::AddTexture(std::uint32_t width, std::uint32_t height,
                                     const std::vector<std::uint8_t>& rgbaTopFirst) {
  Fnv hash;
  hash.AddValue(width);
  hash.AddValue(height);
  hash.Add(std::as_bytes(std::span(rgbaTopFirst)));
  const auto [found, added] = textures_.try_emplace(hash.Value(), 0);
  if (!added) return found->second;
  const auto png = EncodePng(width, height, rgbaTopFirst);
  const std::size_t view =
      document_.AddView(std::as_bytes(std::span(png)), GlbDocument::Target::None);
  const std::size_t image =
      document_.Add("images", {{"bufferView", view}, {"mimeType", "image/png"}});
  if (!document_.Root().contains("samplers")) {
    document_.Add("samplers", {{"magFilter", 9729}, {"minFilter", 9987}});
  }
  return found->second = document_.Add("textures", {{"source", image}, {"sampler", 0}});
}

}  // namespace kvapp
