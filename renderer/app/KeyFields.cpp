#include "app/CommandLog.h"

namespace kvapp {

using nlohmann::json;

namespace {

// Longest part of a list that is shown.
constexpr std::size_t kMostListed = 1000;

json TextureSize(const Texture& texture) {
  if (!texture.present) return nullptr;
  return {texture.width, texture.height};
}

json Fields(const CameraView& view) {
  return {{"vector1", view.eye},        {"vector2", view.target},
          {"vector3", view.up},         {"cameraScalar", view.fieldOfView},
          {"vector4", view.towardsSun}, {"withProgress", view.withProgress}};
}

json Fields(const Background& background) {
  return {{"bgFloat", background.color}, {"bgInt", background.integers}};
}

json Fields(const Material& material) {
  json fields = {{"index", material.index},
                 {"key", material.key},
                 {"name", material.name},
                 {"materialType", material.type},
                 {"lightPower", material.lightPower},
                 {"refraction", material.refraction},
                 {"hidden", material.hidden},
                 {"texture", TextureSize(material.colorTexture)}};
  if (material.isPbr) {
    const PbrFields& pbr = material.pbr;
    fields.update({{"baseColor", pbr.baseColor},
                   {"metallic", pbr.metallic},
                   {"roughness", pbr.roughness},
                   {"normalScale", pbr.normalScale},
                   {"transparency", pbr.transparency},
                   {"metallicTexture", TextureSize(pbr.metallicTexture)},
                   {"roughnessTexture", TextureSize(pbr.roughnessTexture)},
                   {"normalTexture", TextureSize(pbr.normalTexture)}});
  } else {
    const ClassicFields& classic = material.classic;
    fields.update({{"ambientColor", classic.ambientColor},
                   {"diffuseColor", classic.diffuseColor},
                   {"specularColor", classic.specularColor},
                   {"diffuse", classic.diffuse},
                   {"specular", classic.specular},
                   {"reflection", classic.reflection},
                   {"reflectionBlur", classic.reflectionBlur},
                   {"refractionBlur", classic.refractionBlur},
                   {"opacity", classic.opacity},
                   {"bumpDepth", classic.bumpDepth},
                   {"textureName", classic.textureName}});
  }
  return fields;
}

json Fields(const Light& light) {
  json fields = {{"color", light.color}, {"position", light.position}};
  if (light.isSpot) {
    fields.update({{"direction", light.direction},
                   {"beamAngle", light.beamAngle},
                   {"wideBeamAngle", light.wideBeamAngle}});
  }
  return fields;
}

struct FieldsOf {
  json operator()(const command::PrepareRendering& c) const { return {{"reload", c.reload}}; }
  json operator()(const command::SetCamera& c) const { return Fields(c.view); }
  json operator()(const command::SetBackgroundSettings& c) const { return Fields(c.background); }
  json operator()(const command::SetCameraAndBackgroundSettings& c) const {
    json fields = Fields(c.view);
    fields.update(Fields(c.background));
    return fields;
  }
  json operator()(const command::AppendMaterial& c) const { return Fields(c.material); }
  json operator()(const command::AppendLight& c) const { return Fields(c.light); }
  json operator()(const command::AppendMesh& c) const {
    return {{"meshId", c.meshId},
            {"cacheKey", c.cacheKey},
            {"vertexCount", c.geometry.vertexCount},
            {"triangleCount", c.geometry.triangleCount},
            {"pass", c.pass},
            {"manifold", c.manifold},
            {"transform", c.transform}};
  }
  json operator()(const command::InstanciateMesh& c) const {
    return {{"meshId", c.meshId}, {"cacheKey", c.cacheKey}, {"transform", c.transform}};
  }
  json operator()(const command::InstanciateMeshBatch& c) const {
    json owners = json::array();
    for (std::size_t i = 0; i < c.owners.size() && i < kMostListed; ++i) {
      owners.push_back(c.owners[i]);
    }
    return {{"count", c.owners.size()}, {"owners", owners}};
  }
  json operator()(const command::AppendCachedMaterials& c) const {
    json references = json::array();
    for (std::size_t i = 0; i < c.references.size() && i < kMostListed; ++i) {
      const auto& reference = c.references[i];
      references.push_back({{"index", reference.index},
                            {"lightPower", reference.lightPower},
                            {"key", reference.key}});
    }
    return {{"count", c.references.size()}, {"references", references}};
  }
  json operator()(const command::UpdateInstanceTransform& c) const {
    return {{"owner", c.owner}, {"transform", c.transform}};
  }
  json operator()(const command::SetModelName& c) const { return {{"text", c.name}}; }
  json operator()(const command::SetMessage& c) const { return {{"text", c.text}}; }
  json operator()(const command::SetProgress& c) const { return {{"progress", c.progress}}; }
  json operator()(const command::SetLinkCamera& c) const { return {{"linked", c.linked}}; }
  // Commands without fields, and bytes that are no command.
  template <class Other>
  json operator()(const Other&) const {
    return json::object();
  }
};

}  // namespace

json KeyFields(const Command& command) {
  return std::visit(FieldsOf{}, command);
}

}  // namespace kvapp
