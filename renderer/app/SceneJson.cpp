#include "app/SceneJson.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include "app/Fnv.h"

namespace kvapp {

namespace wire = quellix::wire;
using nlohmann::json;

namespace {

json ToJson(const Texture& texture) {
  if (!texture.present) return nullptr;
  Fnv hash;
  hash.Add(std::as_bytes(texture.Pixels()));
  return {{"width", texture.width},
          {"height", texture.height},
          {"bytes", texture.Pixels().size()},
          {"pixels", DigestText(hash.Value())}};
}

}  // namespace

json MaterialToJson(const Material& material,
                    const std::function<json(const Texture&)>& textureJson) {
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
                 {"texture", textureJson(material.colorTexture)}};
  if (material.isPbr) {
    const PbrFields& pbr = material.pbr;
    result.update({{"baseColor", pbr.baseColor},
                   {"metallic", pbr.metallic},
                   {"metallicTexture", textureJson(pbr.metallicTexture)},
                   {"roughness", pbr.roughness},
                   {"roughnessTexture", textureJson(pbr.roughnessTexture)},
                   {"normalScale", pbr.normalScale},
                   {"normalTexture", textureJson(pbr.normalTexture)},
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

json LightToJson(const Light& light) {
  return {{"kind", light.isSpot ? "spot" : "omni"},
          {"color", light.color},
          {"position", light.position},
          {"direction", light.direction},
          {"beamAngle", light.beamAngle},
          {"wideBeamAngle", light.wideBeamAngle}};
}

namespace {

// One material with textures of one look has several keys when several faces distort it alike;
// which of them a mesh names cannot be seen. All count as the first that was asked for in the order
// of keys.
class Looks {
 public:
  explicit Looks(const Scene& scene) {
    for (const auto& [key, material] : scene.Materials()) KeyOf(*material);
  }

  std::uint64_t KeyOf(const Material& material) {
    const auto [known, isNew] = known_.try_emplace(&material, material.key);
    if (isNew) {
      json look = MaterialToJson(material, [](const Texture& texture) { return ToJson(texture); });
      look.erase("index");
      look["key"] = static_cast<std::uint32_t>(material.key);
      known->second =
          keys_.try_emplace(look.dump(-1, ' ', false, json::error_handler_t::replace), material.key)
              .first->second;
    }
    return known->second;
  }

 private:
  std::unordered_map<const Material*, std::uint64_t> known_;
  std::unordered_map<std::string, std::uint64_t> keys_;
};

json ToJson(const Mesh& mesh, Looks& looks) {
  Fnv vertices;
  vertices.Add(std::as_bytes(mesh.geometry.Vertices()));
  Fnv triangles;
  for (const wire::TriangleRecord& triangle : mesh.geometry.Triangles()) {
    triangles.AddValue(triangle.vertex);
    for (const std::uint32_t slot : {triangle.frontMaterial, triangle.backMaterial}) {
      const auto& material = mesh.slots[slot].material;
      triangles.AddValue(material ? looks.KeyOf(*material) : ~0ull);
    }
  }
  json keys = json::array();
  for (const MaterialSlot& slot : mesh.slots) {
    keys.push_back(slot.material ? json(looks.KeyOf(*slot.material)) : json("unknown index"));
  }
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
  Looks looks(scene);
  std::unordered_map<const Mesh*, json> meshes;
  json result = json::array();
  for (const auto& [owner, placements] : scene.Placements()) {
    for (const Placement& placement : placements) {
      json& mesh = meshes[placement.mesh.get()];
      if (mesh.is_null()) mesh = ToJson(*placement.mesh, looks);
      result.push_back({{"owner", owner}, {"transform", placement.transform}, {"mesh", mesh}});
    }
  }
  std::sort(result.begin(), result.end());
  return result;
}

}  // namespace

json CameraToJson(const CameraView& view) {
  return {{"eye", view.eye},
          {"target", view.target},
          {"up", view.up},
          {"fieldOfView", view.fieldOfView},
          {"towardsSun", view.towardsSun}};
}

json BackgroundToJson(const Background& background) {
  return {{"color", background.color}, {"integers", background.integers}};
}

json SceneToJson(Scene& scene) {
  scene.Settle();
  json materials = json::array();
  for (const auto& [key, material] : scene.Materials()) {
    materials.push_back(
        MaterialToJson(*material, [](const Texture& texture) { return ToJson(texture); }));
  }
  json lights = json::array();
  for (const Light& light : scene.Lights()) lights.push_back(LightToJson(light));
  std::sort(lights.begin(), lights.end());
  json result = {{"modelName", scene.ModelName()},
                 {"materials", materials},
                 {"placements", PlacementsToJson(scene)},
                 {"lights", lights},
                 {"camera", nullptr},
                 {"background", nullptr}};
  if (scene.Camera()) result["camera"] = CameraToJson(*scene.Camera());
  if (scene.BackgroundSettings()) {
    result["background"] = BackgroundToJson(*scene.BackgroundSettings());
  }
  return result;
}

}  // namespace kvapp
