// A scene file on its way into a model: what its parts share.
#pragma once

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/model/defs.h>

#include <map>
#include <string>

#include "import/PolygonMesh.h"
#include "import/SceneNode.h"
#include "model/Geometry.h"

namespace modelhost {

struct SceneContext {
  SUModelRef model = SU_INVALID;
  // The folder of the scene file, for the pictures beside it.
  std::string folder;
  std::map<std::string, SUMaterialRef> materials;
  std::map<std::string, SULayerRef> layers;
  std::map<std::string, SUComponentDefinitionRef> components;
  // Definitions of images that were given a name to be shown again by.
  std::map<std::string, SUComponentDefinitionRef> pictures;
  MeshReport report;

  SUMaterialRef material(const SceneNode& name) const;
  SULayerRef layer(const SceneNode& name) const;
};

// Fails at `node` when the call that gave `result` did not succeed.
void expect(SUResult result, const SceneNode& node, const std::string& what);
// "pid".
void readPersistentId(const SceneNode& node, const char* key, SUEntityRef entity);
// "material", "layer", "hidden", "casts_shadows", "receives_shadows", "attributes", "pid".
void readCommon(SceneContext& context, const SceneNode& node, SUDrawingElementRef element);

void readLayers(SceneContext& context, const SceneNode& root);
void readMaterials(SceneContext& context, const SceneNode& materials);
// The list under "entities".
void readEntities(SceneContext& context, const SceneNode& list, SUEntitiesRef entities);
// A face, a mesh or a solid; false for an object that is none of these.
bool readGeometry(SceneContext& context, const SceneNode& node, SUEntitiesRef entities);

}  // namespace modelhost
