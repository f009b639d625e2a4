#include "app/GlbWriter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "app/VectorMath.h"
#include "app/GlbDocument.h"
#include "app/GlbMaterials.h"
#include "app/GlbMeshes.h"

namespace kvapp {

using nlohmann::json;

namespace {

constexpr char kLights[] = "KHR_lights_punctual";

// A light of power 1 lights what is this far away (in host units) like a full white surface; the
// format wants what arrives at distance one.
constexpr double kLightReach = 60;
constexpr double kSunStrength = 3;

// Names what a node stands for, in host coordinates.
json Node(const char* name, const Vector3& translation, const Quaternion& rotation) {
  return {{"name", name}, {"translation", translation}, {"rotation", rotation}};
}

Bounds SceneBounds(const Scene& scene) {
  Bounds bounds;
  for (const auto& [owner, placements] : scene.Placements()) {
    for (const Placement& placement : placements) {
      Bounds mesh;
      for (const auto& vertex : placement.mesh->geometry.Vertices()) {
        mesh.Add({vertex.position[0], vertex.position[1], vertex.position[2]});
      }
      if (mesh.Empty()) continue;
      for (int corner = 0; corner < 8; ++corner) {
        bounds.Add(TransformPoint(placement.transform, {(corner & 1 ? mesh.high : mesh.low)[0],
                                                        (corner & 2 ? mesh.high : mesh.low)[1],
                                                        (corner & 4 ? mesh.high : mesh.low)[2]}));
      }
    }
  }
  return bounds;
}

class Writer {
 public:
  explicit Writer(const Scene& scene)
      : scene_(scene), materials_(document_), meshes_(document_, materials_) {}

  void Write(const std::filesystem::path& file) {
    json& root = document_.Root();
    root["asset"] = {{"version", "2.0"}, {"generator", "KvApp"}};
    AddPlacements();
    AddLights();
    AddCamera();
    AddTop();
    document_.Write(file);
  }

 private:
  void AddPlacements() {
    for (const auto& [owner, placements] : scene_.Placements()) {
      for (const Placement& placement : placements) AddPlacement(owner, placement);
    }
  }

  void AddPlacement(std::uint64_t owner, const Placement& placement) {
    const auto parts = Decompose(placement.transform);
    const auto mesh = parts ? meshes_.Index(*placement.mesh)
                            : meshes_.Baked(*placement.mesh, placement.transform);
    if (!mesh) return;
    json node = {{"mesh", *mesh}, {"extras", {{"owner", owner}}}};
    if (parts) {
      node["translation"] = parts->translation;
      node["rotation"] = parts->rotation;
      node["scale"] = parts->scale;
    }
    AddNode(std::move(node));
  }

  void AddLights() {
    std::size_t number = 0;
    for (const Light& light : scene_.Lights()) AddLight(light, ++number);
    const auto& camera = scene_.Camera();
    if (!camera || Length(camera->towardsSun) <= 0) return;
    const Vector3 sun = camera->towardsSun;
    json node = Node("sun", {0, 0, 0}, RotationTowards({-sun[0], -sun[1], -sun[2]}, {0, 0, 1}));
    AddLightNode({{"type", "directional"}, {"name", "sun"}, {"intensity", kSunStrength}},
                 std::move(node));
  }

  // Readers tell lights apart by their names.
  void AddLight(const Light& light, std::size_t number) {
    const std::string name = "light " + std::to_string(number);
    const float power = std::max({light.color[0], light.color[1], light.color[2]});
    if (!(power > 0)) return;
    json color = json::array();
    for (const float channel : light.color)
      color.push_back(ToLinear(std::max(channel, 0.f) / power));
    json object = {{"type", light.isSpot ? "spot" : "point"},
                   {"name", name},
                   {"color", color},
                   {"intensity", power * kLightReach * kLightReach},
                   {"extras", {{"color", light.color}}}};
    Vector3 direction = {0, 0, -1};
    if (light.isSpot) {
      constexpr double kWidest = std::numbers::pi / 2;
      const double outer = std::clamp<double>(light.wideBeamAngle, 0.01, kWidest);
      object["spot"] = {{"innerConeAngle", std::clamp<double>(light.beamAngle, 0, outer * 0.98)},
                        {"outerConeAngle", outer}};
      direction = light.direction;
    }
    AddLightNode(std::move(object),
                 Node(name.c_str(), light.position, RotationTowards(direction, {0, 0, 1})));
  }

  void AddLightNode(json light, json node) {
    document_.UseExtension(kLights);
    json& lights = document_.Root()["extensions"][kLights]["lights"];
    if (lights.is_null()) lights = json::array();
    node["extensions"] = {{kLights, {{"light", lights.size()}}}};
    lights.push_back(std::move(light));
    AddNode(std::move(node));
  }

  void AddCamera() {
    const auto& view = scene_.Camera();
    if (!view) return;
    const Vector3 direction = Subtract(view->target, view->eye);
    if (!(Length(direction) > 0)) return;
    const Bounds bounds = SceneBounds(scene_);
    double far = 2 * Length(direction);
    for (int corner = 0; corner < 8 && !bounds.Empty(); ++corner) {
      const Vector3 point = {(corner & 1 ? bounds.high : bounds.low)[0],
                             (corner & 2 ? bounds.high : bounds.low)[1],
                             (corner & 4 ? bounds.high : bounds.low)[2]};
      far = std::max(far, 1.5 * Length(Subtract(point, view->eye)));
    }
    const double degrees = std::clamp<double>(view->fieldOfView, 1, 170);
    const std::size_t camera = document_.Add(
        "cameras",
        {{"type", "perspective"},
         {"perspective",
          {{"yfov", degrees * std::numbers::pi / 180}, {"znear", far / 20000}, {"zfar", far}}}});
    json node = Node("camera", view->eye, RotationTowards(direction, view->up));
    node["camera"] = camera;
    AddNode(std::move(node));
  }

  void AddTop() {
    json top = {{"name", "Z up to Y up"},
                {"rotation", {-std::numbers::sqrt2 / 2, 0, 0, std::numbers::sqrt2 / 2}}};
    if (!children_.empty()) top["children"] = children_;
    json scene = {{"nodes", {document_.Add("nodes", std::move(top))}}};
    if (!scene_.ModelName().empty()) scene["name"] = scene_.ModelName();
    json extras = {{"modelName", scene_.ModelName()}};
    if (const auto& background = scene_.BackgroundSettings()) {
      extras["background"] = background->color;
      extras["backgroundIntegers"] = background->integers;
    }
    scene["extras"] = std::move(extras);
    document_.Root()["scene"] = document_.Add("scenes", std::move(scene));
  }

  void AddNode(json node) { children_.push_back(document_.Add("nodes", std::move(node))); }

  const Scene& scene_;
  GlbDocument document_;
  GlbMaterials materials_;
  GlbMeshes meshes_;
  json children_ = json::array();
};

}  // namespace

void WriteGlb(const Scene& scene, const std::filesystem::path& file) {
  Writer(scene).Write(file);
}

}  // namespace kvapp
