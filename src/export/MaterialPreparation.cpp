#include "export/MaterialPreparation.h"

#include <cmath>
#include <utility>

#include "cw/String.h"
#include "export/AttributeReaders.h"
#include "export/ReloadCaches.h"
#include "export/TextureReading.h"
#include "support/Finite.h"
#include "support/Uuid.h"

namespace quellix {

namespace {

constexpr double kOpaque = 0.99;
constexpr double kClear = 0.01;
constexpr double kSmallestShift = 0.001;

// Thresholds compare the stored single-precision value, widened, with the double constant.
bool Above(float value, double threshold) {
  return static_cast<double>(value) > threshold;
}
bool Below(float value, double threshold) {
  return static_cast<double>(value) < threshold;
}

float ReadFloat(SUAttributeDictionaryRef su_dictionary, const char* key, float current) {
  return FiniteFloat(ReadDouble(su_dictionary, key, static_cast<double>(current)), current);
}

void BeginJob(const MaterialEntry& entry, std::uint32_t materialId, bool isPbr,
              MaterialSendJob& job) {
  job = MaterialSendJob();
  job.isPbr = isPbr;
  job.index = entry.index;
  job.name = CW::fetch_text(
      [&](SUStringRef* su_name) { return SUMaterialGetName(entry.material, su_name); });
  job.key = MaterialKey(entry.textureId, materialId);
}

void ReadMaterialColor(SUMaterialRef su_material, float color[3]) {
  SUColor su_color{};
  if (SUMaterialGetColor(su_material, &su_color) != SU_ERROR_NONE) return;
  color[0] = static_cast<float>(su_color.red) / 255.0f;
  color[1] = static_cast<float>(su_color.green) / 255.0f;
  color[2] = static_cast<float>(su_color.blue) / 255.0f;
}

// True, with the opacity, when the material uses one.
bool ReadOpacity(SUMaterialRef su_material, float& opacity) {
  bool used = false;
  double value = 1.0;
  if (SUMaterialGetUseOpacity(su_material, &used) != SU_ERROR_NONE || !used) return false;
  if (SUMaterialGetOpacity(su_material, &value) != SU_ERROR_NONE) return false;
  opacity = FiniteFloat(value, 1.0f);
  return true;
}

SUTextureRef TextureOf(SUMaterialRef su_material) {
  SUTextureRef su_texture = SU_INVALID;
  if (SUMaterialGetTexture(su_material, &su_texture) != SU_ERROR_NONE) return SU_INVALID;
  return su_texture;
}

bool IsColorized(SUMaterialRef su_material) {
  double hue = 0.0;
  double saturation = 0.0;
  double lightness = 0.0;
  SUMaterialGetColorizeDeltas(su_material, &hue, &saturation, &lightness);
  return std::fabs(hue) > kSmallestShift || std::fabs(saturation) > kSmallestShift ||
         std::fabs(lightness) > kSmallestShift;
}

void FillBaseTexture(const MaterialEntry& entry, SUTextureRef su_texture, MaterialSendJob& job) {
  if (entry.prefetched && entry.prefetched->valid) {
    // One entry makes one record, so the pixels move on instead of being held twice.
    job.baseTexture = std::move(*entry.prefetched);
    return;
  }
  const TextureMode mode =
      IsColorized(entry.material) ? TextureMode::Colorized : TextureMode::Plain;
  ReadTexturePixels(su_texture, mode, job.baseTexture);
}

// The parameters of both kinds; true when the dictionary holds any.
bool ReadParameters(SUMaterialRef su_material, MaterialSendJob& job) {
  job.materialType = "Default";
  const SUAttributeDictionaryRef su_dictionary =
      FindUsableDictionary(SUMaterialToEntity(su_material));
  if (SUIsInvalid(su_dictionary)) return false;
  job.diffuse = ReadFloat(su_dictionary, "diffuse", job.diffuse);
  job.reflection = ReadFloat(su_dictionary, "reflection", job.reflection);
  job.specular = job.reflection;
  job.reflectionBlur = ReadBool(su_dictionary, "reflection_blur", job.reflectionBlur);
  job.refraction = ReadFloat(su_dictionary, "refraction", job.refraction);
  if (Below(job.refraction, kClear)) job.refraction = 1.0f;
  job.refractionBlur = ReadBool(su_dictionary, "refraction_blur", job.refractionBlur);
  job.bumpDepth = ReadFloat(su_dictionary, "bump_depth", job.bumpDepth);
  job.lightPower = ReadLightPower(su_dictionary);
  job.hidden = ReadBool(su_dictionary, "hidden", job.hidden);
  if (ReadBool(su_dictionary, "hidden_lem", false)) job.hidden = true;
  job.materialType = ReadString(su_dictionary, "material_type", "Default");
  return true;
}

using IsEnabled = SUResult (*)(SUMaterialRef, bool*);
using GetNumber = SUResult (*)(SUMaterialRef, double*);
using GetTexture = SUResult (*)(SUMaterialRef, SUTextureRef*);

bool Enabled(SUMaterialRef su_material, IsEnabled isEnabled) {
  bool enabled = false;
  return isEnabled(su_material, &enabled) == SU_ERROR_NONE && enabled;
}

float Number(SUMaterialRef su_material, GetNumber getNumber, double fallback) {
  double value = fallback;
  if (getNumber(su_material, &value) != SU_ERROR_NONE) value = fallback;
  return FiniteFloat(value, static_cast<float>(fallback));
}

// True when the channel has a texture; its pixels, if they can be read, are in `block` then.
bool ReadChannelTexture(SUMaterialRef su_material, GetTexture getTexture, RawTextureData& block) {
  SUTextureRef su_texture = SU_INVALID;
  if (getTexture(su_material, &su_texture) != SU_ERROR_NONE || SUIsInvalid(su_texture)) {
    return false;
  }
  ReadTexturePixels(su_texture, TextureMode::Channel, block);
  return true;
}

void ReadMetalness(SUMaterialRef su_material, MaterialSendJob& job) {
  if (!Enabled(su_material, SUMaterialIsMetalnessEnabled)) {
    job.metallic = job.materialType == "Metallic" ? 1.0f : 0.0f;
    return;
  }
  job.metallic = Number(su_material, SUMaterialGetMetallicFactor, 0.0);
  job.hasMetallicTexture =
      ReadChannelTexture(su_material, SUMaterialGetMetallicTexture, job.metallicTexture);
}

void ReadRoughness(SUMaterialRef su_material, MaterialSendJob& job) {
  if (!Enabled(su_material, SUMaterialIsRoughnessEnabled)) {
    job.roughness = job.reflectionBlur ? 0.3f : 0.0f;
    return;
  }
  job.roughness = Number(su_material, SUMaterialGetRoughnessFactor, 0.0);
  job.hasRoughnessTexture =
      ReadChannelTexture(su_material, SUMaterialGetRoughnessTexture, job.roughnessTexture);
}

void ReadNormal(SUMaterialRef su_material, MaterialSendJob& job) {
  if (!Enabled(su_material, SUMaterialIsNormalEnabled)) {
    job.bumpFromBase = job.bumpDepth > 0.0f && job.hasBaseTexture && job.baseTexture.valid;
    return;
  }
  job.normalScale = Number(su_material, SUMaterialGetNormalScale, 1.0);
  job.hasNormalTexture =
      ReadChannelTexture(su_material, SUMaterialGetNormalTexture, job.normalTexture);
}

}  // namespace

float ReadLightPower(SUAttributeDictionaryRef su_dictionary) {
  if (SUIsInvalid(su_dictionary)) return 0.0f;
  const auto power = static_cast<float>(ReadInt(su_dictionary));
  return power * (ReadBool(su_dictionary, "light_power_high_intensity", false) ? 10.0f : 0.1f);
}

bool IsPbrMaterial(SUMaterialRef su_material) {
  SUMaterialWorkflow workflow = SUMaterialWorkflow_Classic;
  return SUMaterialGetWorkflow(su_material, &workflow) == SU_ERROR_NONE &&
         workflow == SUMaterialWorkflow_PBRMetallicRoughness;
}

bool PrepareClassicMaterial(const MaterialEntry& entry, std::uint32_t materialId,
                            MaterialSendJob& job) {
  BeginJob(entry, materialId, false, job);
  ReadMaterialColor(entry.material, job.color);
  ReadOpacity(entry.material, job.opacity);
  if (Above(job.opacity, kOpaque)) job.opacity = 1.0f;
  const SUTextureRef su_texture = TextureOf(entry.material);
  if (SUIsValid(su_texture) && entry.textureId >= 1) {
    FillBaseTexture(entry, su_texture, job);
    job.textureName = MakeUuidText();
    job.hasTexture = true;
  }
  if (ReadParameters(entry.material, job) && job.hidden) job.opacity = 0.0f;
  return true;
}

bool PreparePbrMaterial(const MaterialEntry& entry, std::uint32_t materialId,
                        MaterialSendJob& job) {
  BeginJob(entry, materialId, true, job);
  ReadMaterialColor(entry.material, job.baseColor);
  const SUTextureRef su_texture = TextureOf(entry.material);
  job.hasBaseTexture = SUIsValid(su_texture);
  if (job.hasBaseTexture) FillBaseTexture(entry, su_texture, job);
  float opacity = 1.0f;
  if (ReadOpacity(entry.material, opacity)) job.transparency = 1.0f - opacity;
  if (Below(job.transparency, kClear)) job.transparency = 0.0f;
  if (ReadParameters(entry.material, job) && job.hidden) job.transparency = 1.0f;
  ReadMetalness(entry.material, job);
  ReadRoughness(entry.material, job);
  ReadNormal(entry.material, job);
  return true;
}

bool PrepareImageMaterial(const MaterialEntry& entry, MaterialSendJob& job) {
  job = MaterialSendJob();
  job.index = entry.index;
  job.name = "Image";
  job.key = entry.imageKey;
  for (float& channel : job.color) channel = 1.0f;
  job.materialType = "Default";
  job.textureName = MakeUuidText();
  job.hasTexture = ReadImagePixels(entry.image, job.baseTexture);
  const std::string fileName = CW::fetch_text(
      [&](SUStringRef* su_name) { return SUImageGetFileName(entry.image, su_name); });
  if (!fileName.empty()) job.name = fileName;
  return job.hasTexture;
}

}  // namespace quellix
