#include "export/Lights.h"

#include <algorithm>
#include <array>
#include <string>

#include "export/AttributeReaders.h"
#include "export/Descent.h"
#include "export/Lists.h"
#include "export/Walks.h"
#include "support/Finite.h"

namespace quellix {

namespace {

constexpr double kBeamAngle = 0.26179934;    // 15 degrees
constexpr double kWideBeamAngle = 0.785398;  // 45 degrees

// The centre of a definition's content, in its own coordinates.
glm::vec4 CentreOf(SUComponentDefinitionRef su_definition) {
  SUBoundingBox3D su_box{};
  SUDrawingElementGetBoundingBox(SUComponentDefinitionToDrawingElement(su_definition), &su_box);
  const glm::vec3 low(su_box.min_point.x, su_box.min_point.y, su_box.min_point.z);
  const glm::vec3 high(su_box.max_point.x, su_box.max_point.y, su_box.max_point.z);
  return glm::vec4((low + high) * 0.5f, 1.0f);
}

void Copy(const glm::vec3& from, float to[3]) {
  for (int i = 0; i < 3; ++i) to[i] = from[i];
}

void Send(IpcInterface& link, const LightRecord& light) {
  if (light.spot) {
    link.AppendSpotLight(light.color, light.position, light.direction, light.beamAngle,
                         light.wideBeamAngle);
  } else {
    link.AppendOmniLight(light.color, light.position);
  }
}

void WalkLights(IpcInterface& link, const HiddenLayerSet& hiddenLayers, SUEntitiesRef su_entities,
                InheritanceManager& manager) {
  for (const SUComponentInstanceRef su_instance : InstancesOf(su_entities)) {
    if (IsHidden(AsDrawingElement(su_instance))) continue;
    const SUComponentDefinitionRef su_definition = DefinitionOf(su_instance);
    const PushedLevel level(manager, su_instance);
    if (!RecordLayerAndTest(hiddenLayers, manager, OwnerOf(manager))) continue;
    const Descent step(su_definition);
    if (!step) continue;
    std::vector<LightRecord> lights;
    CollectLight(su_instance, su_definition, manager, lights);
    SendPendingLights(link, lights);
    WalkLights(link, hiddenLayers, EntitiesOf(su_definition), manager);
  }
  const IterateParams params{su_entities, &manager, nullptr, SU_INVALID};
  IterateGroups(hiddenLayers, params, [&](IterateParams& child) {
    WalkLights(link, hiddenLayers, child.entities, *child.manager);
  });
}

}  // namespace

void CollectLight(SUComponentInstanceRef su_instance, SUComponentDefinitionRef su_definition,
                  const InheritanceManager& manager, std::vector<LightRecord>& lights) {
  const std::string type = LightType(su_definition);
  if (type != "point" && type != "softspot") return;

  std::array<float, 4> color = {1.0f, 1.0f, 1.0f, 1.0f};
  double power = 1.0;
  double beamAngle = kBeamAngle;
  double wideBeamAngle = kWideBeamAngle;
  const SUAttributeDictionaryRef su_dictionary =
      FindUsableDictionary(SUComponentInstanceToEntity(su_instance));
  if (SUIsValid(su_dictionary)) {
    color = ReadColor(su_dictionary, color);
    power = ReadPower(su_dictionary, power);
    beamAngle = ReadDouble(su_dictionary, "beam-angle", beamAngle);
    wideBeamAngle = ReadDouble(su_dictionary, "beam-angle-wide", wideBeamAngle);
  }

  LightRecord light;
  light.spot = type == "softspot";
  const glm::mat4 transform = manager.CurrentTransform();
  const glm::vec4 position = transform * CentreOf(su_definition);
  for (int i = 0; i < 4; ++i) light.position[i] = position[i];
  Copy(glm::vec3(color[0], color[1], color[2]) * FiniteFloat(power, 1.0f), light.color);
  if (light.spot) {
    // The component shines along its own negative z axis.
    Copy(-glm::vec3(transform[2]), light.direction);
    light.beamAngle = FiniteFloat(beamAngle, static_cast<float>(kBeamAngle));
    light.wideBeamAngle = FiniteFloat(wideBeamAngle, static_cast<float>(kWideBeamAngle));
  }
  lights.push_back(light);
}

void SendPendingLights(IpcInterface& link, std::vector<LightRecord>& lights) {
  for (const LightRecord& light : lights) Send(link, light);
  lights.clear();
}

void ExportLights(IpcInterface& link, const HiddenLayerSet& hiddenLayers, SUEntitiesRef su_root,
                  InheritanceManager& manager) {
  WalkLights(link, hiddenLayers, su_root, manager);
}

}  // namespace quellix
