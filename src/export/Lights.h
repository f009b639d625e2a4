#pragma once

#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "export/InheritanceManager.h"
#include "export/SceneIndex.h"
#include "link/IpcInterface.h"

namespace quellix {

// A light as it is sent. Positions are in the world, in the host's unit; angles in radians; the
// colour is multiplied by the power and may exceed 1.
struct LightRecord {
  bool spot = false;
  float color[3] = {};
  float position[4] = {};
  float direction[3] = {};  // of a spot: as long as the transform scales the component's z axis
  float beamAngle = 0.0f;
  float wideBeamAngle = 0.0f;
};

// The light that the instance last pushed on the manager makes, appended to `lights`: one for a
// definition that says "point" or "softspot", none for any other.
void CollectLight(SUComponentInstanceRef su_instance, SUComponentDefinitionRef su_definition,
                  const InheritanceManager& manager, std::vector<LightRecord>& lights);

// Sends the lights in their order and empties the list. Host thread.
void SendPendingLights(IpcInterface& link, std::vector<LightRecord>& lights);

// Walks the model for its lights and sends each as it is met. Host thread, while no worker runs.
void ExportLights(IpcInterface& link, const HiddenLayerSet& hiddenLayers, SUEntitiesRef su_root,
                  InheritanceManager& manager);

}  // namespace quellix
