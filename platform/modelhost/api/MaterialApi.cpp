#include <SketchUpAPI/model/material.h>

#include <cmath>

#include "core/Args.h"
#include "model/Model.h"

using namespace modelhost;

SUEntityRef SUMaterialToEntity(SUMaterialRef material) {
  MODELHOST_CALL_INFALLIBLE(SUMaterialToEntity);
  return convert<SUEntityRef>(material);
}

SUMaterialRef SUMaterialFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUMaterialFromEntity);
  return convert<SUMaterialRef>(entity);
}

SUResult SUMaterialCreate(SUMaterialRef* out_material) {
  MODELHOST_CALL(SUMaterialCreate);
  return create(out_material);
}

SUResult SUMaterialRelease(SUMaterialRef* material) {
  MODELHOST_CALL(SUMaterialRelease);
  return releaseIf(material, [](const Material& m) { return !m.listed; });
}

SUResult SUMaterialGetName(SUMaterialRef material, SUStringRef* name) {
  MODELHOST_CALL(SUMaterialGetName);
  return giveText(material, name, [](const Material& m) -> std::string_view { return m.name; });
}

SUResult SUMaterialSetName(SUMaterialRef material, const char* name) {
  MODELHOST_CALL(SUMaterialSetName);
  Material* m = find(material);
  if (m == nullptr) return SU_ERROR_INVALID_INPUT;
  if (name == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (m->listed) return m->model()->rename(*m, name) ? SU_ERROR_NONE : SU_ERROR_DUPLICATE;
  m->name = name;
  return SU_ERROR_NONE;
}

SUResult SUMaterialGetType(SUMaterialRef material, SUMaterialType* type) {
  MODELHOST_CALL(SUMaterialGetType);
  return give(material, type, [](const Material& m) { return m.type; });
}

SUResult SUMaterialSetType(SUMaterialRef material, SUMaterialType type) {
  MODELHOST_CALL(SUMaterialSetType);
  return change(material, [&](Material& m) { m.type = type; });
}

SUResult SUMaterialGetColor(SUMaterialRef material, SUColor* color) {
  MODELHOST_CALL(SUMaterialGetColor);
  return give(material, color, [](const Material& m) { return m.shownColor(); });
}

SUResult SUMaterialSetColor(SUMaterialRef material, const SUColor* color) {
  MODELHOST_CALL(SUMaterialSetColor);
  return changeFrom(material, color, [](Material& m, const SUColor& c) { m.color = c; });
}

SUResult SUMaterialGetOpacity(SUMaterialRef material, double* opacity) {
  MODELHOST_CALL(SUMaterialGetOpacity);
  return give(material, opacity, [](const Material& m) { return m.opacity; });
}

SUResult SUMaterialSetOpacity(SUMaterialRef material, double opacity) {
  MODELHOST_CALL(SUMaterialSetOpacity);
  if (!(opacity >= 0 && opacity <= 1)) return SU_ERROR_OUT_OF_RANGE;
  return change(material, [&](Material& m) { m.opacity = opacity; });
}

SUResult SUMaterialGetUseOpacity(SUMaterialRef material, bool* use) {
  MODELHOST_CALL(SUMaterialGetUseOpacity);
  return give(material, use, [](const Material& m) { return m.useOpacity; });
}

SUResult SUMaterialSetUseOpacity(SUMaterialRef material, bool use) {
  MODELHOST_CALL(SUMaterialSetUseOpacity);
  return change(material, [&](Material& m) { m.useOpacity = use; });
}

SUResult SUMaterialIsDrawnTransparent(SUMaterialRef material, bool* transparent) {
  MODELHOST_CALL(SUMaterialIsDrawnTransparent);
  return give(material, transparent, [](const Material& m) {
    return (m.useOpacity && m.opacity < 1) || (m.texture && m.texture->useAlpha);
  });
}

namespace {

// Puts a texture that still belongs to its maker into one of a material's places; a null handle
// empties the place.
template <class Put>
SUResult putTexture(SUMaterialRef material, SUTextureRef texture, Put put) {
  Texture* t = find(texture);
  if (texture.ptr != nullptr && (t == nullptr || t->material != nullptr)) {
    return SU_ERROR_INVALID_INPUT;
  }
  return change(material, [&](Material& m) { put(m, std::unique_ptr<Texture>(t)); });
}

SUResult putChannelTexture(SUMaterialRef material, SUTextureRef texture,
                           Channel Material::*channel) {
  return putTexture(material, texture, [&](Material& m, std::unique_ptr<Texture> t) {
    if (t) {
      t->material = &m;
      if (m.model() != nullptr) m.model()->adopt(*t);
    }
    (m.*channel).texture = std::move(t);
  });
}

SUResult giveEnabled(SUMaterialRef material, bool* enabled, Channel Material::*channel) {
  return give(material, enabled, [&](const Material& m) { return (m.*channel).enabled; });
}

SUResult setEnabled(SUMaterialRef material, bool enabled, Channel Material::*channel) {
  return change(material, [&](Material& m) { (m.*channel).enabled = enabled; });
}

SUResult giveFactor(SUMaterialRef material, double* factor, Channel Material::*channel) {
  return give(material, factor, [&](const Material& m) { return (m.*channel).factor; });
}

SUResult setFactor(SUMaterialRef material, double factor, Channel Material::*channel) {
  if (!std::isfinite(factor)) return SU_ERROR_OUT_OF_RANGE;
  return change(material, [&](Material& m) { (m.*channel).factor = factor; });
}

SUResult giveChannelTexture(SUMaterialRef material, SUTextureRef* texture,
                            Channel Material::*channel) {
  return giveRef(material, texture, [&](const Material& m) { return (m.*channel).texture.get(); });
}

}  // namespace

SUResult SUMaterialGetTexture(SUMaterialRef material, SUTextureRef* texture) {
  MODELHOST_CALL(SUMaterialGetTexture);
  return giveRef(material, texture, [](const Material& m) { return m.texture.get(); });
}

SUResult SUMaterialSetTexture(SUMaterialRef material, SUTextureRef texture) {
  MODELHOST_CALL(SUMaterialSetTexture);
  return putTexture(material, texture,
                    [](Material& m, std::unique_ptr<Texture> t) { m.setTexture(std::move(t)); });
}

SUResult SUMaterialGetColorizeDeltas(SUMaterialRef material, double* hue, double* saturation,
                                     double* lightness) {
  MODELHOST_CALL(SUMaterialGetColorizeDeltas);
  const Material* m = find(material);
  if (m == nullptr) return SU_ERROR_INVALID_INPUT;
  if (hue == nullptr || saturation == nullptr || lightness == nullptr) {
    return SU_ERROR_NULL_POINTER_OUTPUT;
  }
  const ColorDeltas deltas = m->colorize().deltas;
  *hue = deltas.hue;
  *saturation = deltas.saturation;
  *lightness = deltas.lightness;
  return SU_ERROR_NONE;
}

SUResult SUMaterialGetColorizeType(SUMaterialRef material, SUMaterialColorizeType* type) {
  MODELHOST_CALL(SUMaterialGetColorizeType);
  return give(material, type, [](const Material& m) { return m.colorizeType; });
}

SUResult SUMaterialSetColorizeType(SUMaterialRef material, SUMaterialColorizeType type) {
  MODELHOST_CALL(SUMaterialSetColorizeType);
  return change(material, [&](Material& m) { m.colorizeType = type; });
}

SUResult SUMaterialGetWorkflow(SUMaterialRef material, SUMaterialWorkflow* workflow) {
  MODELHOST_CALL(SUMaterialGetWorkflow);
  return give(material, workflow, [](const Material& m) {
    if (m.workflow) return *m.workflow;
    return m.metalness.enabled || m.roughness.enabled || m.normal.enabled
               ? SUMaterialWorkflow_PBRMetallicRoughness
               : SUMaterialWorkflow_Classic;
  });
}

SUResult SUMaterialIsMetalnessEnabled(SUMaterialRef material, bool* enabled) {
  MODELHOST_CALL(SUMaterialIsMetalnessEnabled);
  return giveEnabled(material, enabled, &Material::metalness);
}

SUResult SUMaterialSetMetalnessEnabled(SUMaterialRef material, bool enabled) {
  MODELHOST_CALL(SUMaterialSetMetalnessEnabled);
  return setEnabled(material, enabled, &Material::metalness);
}

SUResult SUMaterialGetMetallicFactor(SUMaterialRef material, double* factor) {
  MODELHOST_CALL(SUMaterialGetMetallicFactor);
  return giveFactor(material, factor, &Material::metalness);
}

SUResult SUMaterialSetMetallicFactor(SUMaterialRef material, double factor) {
  MODELHOST_CALL(SUMaterialSetMetallicFactor);
  return setFactor(material, factor, &Material::metalness);
}

SUResult SUMaterialGetMetallicTexture(SUMaterialRef material, SUTextureRef* texture) {
  MODELHOST_CALL(SUMaterialGetMetallicTexture);
  return giveChannelTexture(material, texture, &Material::metalness);
}

SUResult SUMaterialSetMetallicTexture(SUMaterialRef material, SUTextureRef texture) {
  MODELHOST_CALL(SUMaterialSetMetallicTexture);
  return putChannelTexture(material, texture, &Material::metalness);
}

SUResult SUMaterialIsRoughnessEnabled(SUMaterialRef material, bool* enabled) {
  MODELHOST_CALL(SUMaterialIsRoughnessEnabled);
  return giveEnabled(material, enabled, &Material::roughness);
}

SUResult SUMaterialSetRoughnessEnabled(SUMaterialRef material, bool enabled) {
  MODELHOST_CALL(SUMaterialSetRoughnessEnabled);
  return setEnabled(material, enabled, &Material::roughness);
}

SUResult SUMaterialGetRoughnessFactor(SUMaterialRef material, double* factor) {
  MODELHOST_CALL(SUMaterialGetRoughnessFactor);
  return giveFactor(material, factor, &Material::roughness);
}

SUResult SUMaterialSetRoughnessFactor(SUMaterialRef material, double factor) {
  MODELHOST_CALL(SUMaterialSetRoughnessFactor);
  return setFactor(material, factor, &Material::roughness);
}

SUResult SUMaterialGetRoughnessTexture(SUMaterialRef material, SUTextureRef* texture) {
  MODELHOST_CALL(SUMaterialGetRoughnessTexture);
  return giveChannelTexture(material, texture, &Material::roughness);
}

SUResult SUMaterialSetRoughnessTexture(SUMaterialRef material, SUTextureRef texture) {
  MODELHOST_CALL(SUMaterialSetRoughnessTexture);
  return putChannelTexture(material, texture, &Material::roughness);
}

SUResult SUMaterialIsNormalEnabled(SUMaterialRef material, bool* enabled) {
  MODELHOST_CALL(SUMaterialIsNormalEnabled);
  return giveEnabled(material, enabled, &Material::normal);
}

SUResult SUMaterialSetNormalEnabled(SUMaterialRef material, bool enabled) {
  MODELHOST_CALL(SUMaterialSetNormalEnabled);
  return setEnabled(material, enabled, &Material::normal);
}

SUResult SUMaterialGetNormalScale(SUMaterialRef material, double* scale) {
  MODELHOST_CALL(SUMaterialGetNormalScale);
  return giveFactor(material, scale, &Material::normal);
}

SUResult SUMaterialSetNormalScale(SUMaterialRef material, double scale) {
  MODELHOST_CALL(SUMaterialSetNormalScale);
  return setFactor(material, scale, &Material::normal);
}

SUResult SUMaterialGetNormalStyle(SUMaterialRef material, SUMaterialNormalMapStyle* style) {
  MODELHOST_CALL(SUMaterialGetNormalStyle);
  return give(material, style, [](const Material& m) { return m.normalStyle; });
}

SUResult SUMaterialSetNormalStyle(SUMaterialRef material, SUMaterialNormalMapStyle style) {
  MODELHOST_CALL(SUMaterialSetNormalStyle);
  return change(material, [&](Material& m) { m.normalStyle = style; });
}

SUResult SUMaterialGetNormalTexture(SUMaterialRef material, SUTextureRef* texture) {
  MODELHOST_CALL(SUMaterialGetNormalTexture);
  return giveChannelTexture(material, texture, &Material::normal);
}

SUResult SUMaterialSetNormalTexture(SUMaterialRef material, SUTextureRef texture) {
  MODELHOST_CALL(SUMaterialSetNormalTexture);
  return putChannelTexture(material, texture, &Material::normal);
}
