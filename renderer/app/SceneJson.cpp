#include "app/SceneJson.h"

#include <algorithm>
#include <unordered_map>

#include "app/Fnv.h"

namespace kvapp {

namespace wire = quellix::wire;
using nlohmann::json;

namespace {

json ToJson(const Texture& texture) {
  if (!texture.present) return nullptr;
  Fnv hash;
  hash.Add(std::as_bytes(std::span(texture.pixels)));
  return {{"width", texture.width},
          {"height", texture.height},
          {"bytes", texture.pixels.size()},
          {"pixels", DigestText(hash.Value())}};
}

json ToJson(const Material& material) {
  json result = {{"key", material.key},
                 {"index", material.index},
                 {"kind", material.isPbr       ? "pbr"
                          : material.IsImage() ? "image"
                                               : "classic"},
                 {"name", material.name},
                 {"type", material.type},
                 {"refraction", material.refraction},
                 {"lightPower", material.lightPower},
                 {"hidden", material.hidden},
                 {"texture", ToJson(material.colorTexture)}};
  if (material.isPbr) {
    const PbrFields& pbr = material.pbr;
    result.update({{"baseColor", pbr.baseColor},
                   {"metallic", pbr.metallic},
                   {"metallicTexture", ToJson(pbr.metallicTexture)},
                   {"roughness", pbr.roughness},
                   {"roughnessTexture", ToJson(pbr.roughnessTexture)},
                   {"normalScale", pbr.normalScale},
                   {"normalTexture", ToJson(pbr.normalTexture)},
                   {"transparency", pbr.transparency}});
  } else {
    const ClassicFields& classic = material.classic;
    result.update({{"ambientColor", classic.ambientColor},
                   {"diffuseColor", classic.diffuseColor},
                   {"specularColor", classic.specularColor},
                   {"diffuse", classic.diffuse},
                   {"specular", classic.specular},
                   {"reflection", classic.reflection},
                   {"reflectionBlur", classic.reflectionBlur},
                   {"refractionBlur", classic.refractionBlur},
                   {"opacity", classic.opacity},
                   {"bumpDepth", classic.bumpDepth}});
  }
  return result;
}

json ToJson(const Light& light) {
  return {{"kind", light.isSpot ? "spot" : "omni"},
          {"color", light.color},
          {"position", light.position},
          {"direction", light.direction},
          {"beamAngle", light.beamAngle},
          {"wideBeamAngle", light.wideBeamAngle}};
}

// The key of a slot's material, or a text for an unknown one.
json SlotKey(const MaterialSlot& slot) {
  if (slot.material) return slot.material->key;
  return "unknown index";
}

json ToJson(const Mesh& mesh) {
  Fnv vertices;
  vertices.Add(std::as_bytes(mesh.geometry.Vertices()));
  Fnv triangles;
  for (const wire::TriangleRecord& triangle : mesh.geometry.Triangles()) {
    triangles.AddValue(triangle.vertex);
    for (const std::uint32_t slot : {triangle.frontMaterial, triangle.backMaterial}) {
      const auto& material = mesh.slots[slot].material;
      triangles.AddValue(material ? material->key : ~0ull);
    }
  }
  json keys = json::array();
  for (const MaterialSlot& slot : mesh.slots) keys.push_back(SlotKey(slot));
  std::sort(keys.begin(), keys.end());
  keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
  Vector3 low{}, high{};
  bool first = true;
  for (const wire::MeshVertex& vertex : mesh.geometry.Vertices()) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low[axis] = first ? vertex.position[axis] : std::min(low[axis], vertex.position[axis]);
      high[axis] = first ? vertex.position[axis] : std::max(high[axis], vertex.position[axis]);
    }
    first = false;
  }
  return {{"id", mesh.id},
          {"pass", mesh.pass},
          {"manifold", mesh.manifold},
          {"vertices", mesh.geometry.vertexCount},
          {"triangles", mesh.geometry.triangleCount},
          {"vertexDigest", DigestText(vertices.Value())},
          {"triangleDigest", DigestText(triangles.Value())},
          {"materials", keys},
          {"low", low},
          {"high", high}};
}

json PlacementsToJson(const Scene& scene) {
  std::unordered_map<const Mesh*, json> meshes;
  json result = json::array();
  for (const auto& [owner, placements] : scene.Placements()) {
    for (const Placement& placement : placements) {
      json& mesh = meshes[placement.mesh.get()];
      if (mesh.is_null()) mesh = ToJson(*placement.mesh);
      result.push_back({{"owner", owner}, {"transform", placement.transform}, {"mesh", mesh}});
    }
  }
  std::sort(result.begin(), result.end());
  return result;
}

json ToJson(const CameraView& view) {
  return {{"eye", view.eye},
          {"target", view.target},
          {"up", view.up},
          {"fieldOfView", view.fieldOfView},
          {"towardsSun", view.towardsSun}};
}

}  // namespace

json SceneToJson(Scene& scene) {
  scene.Settle();
  json materials = json::array();
  for (const auto& [key, material] : scene.Materials()) materials.push_back(ToJson(*material));
  json lights = json::array();
  for (const Light& light : scene.Lights()) lights.push_back(ToJson(light));
  std::sort(lights.begin(), lights.end());
  json result = {{"modelName", scene.ModelName()},
                 {"materials", materials},
                 {"placements", PlacementsToJson(scene)},
                 {"lights", lights},
                 {"camera", nullptr},
                 {"background", nullptr}};
  if (scene.Camera()) result["camera"] = ToJson(*scene.Camera());
  if (const auto& background = scene.BackgroundSettings()) {
    result["background"] = {{"color", background->color}, {"integers", background->integers}};
  }
  return result;
}

}  // namespace kvapp
