#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <SketchUpAPI/sketchup.h>

namespace quellix {

// A model of the host and a texture writer, with short ways to put things into it. Released at the
// end.
class ModelBuilder {
 public:
  ModelBuilder();
  ~ModelBuilder();
  ModelBuilder(const ModelBuilder&) = delete;
  ModelBuilder& operator=(const ModelBuilder&) = delete;

  SUMaterialRef AddMaterial(const char* name);
  // A material with a texture of one pixel, so that the texture writer gives it an id.
  SUMaterialRef AddTexturedMaterial(const char* name);
  SULayerRef AddLayer(const char* name);
  SUComponentDefinitionRef AddDefinition();
  SUComponentInstanceRef Place(SUComponentDefinitionRef su_definition, SUEntitiesRef su_entities,
                               const std::array<double, 3>& translation = {});
  SUGroupRef AddGroup(SUEntitiesRef su_entities, const std::array<double, 3>& translation = {});
  // A unit square with its lower left corner at (x, 0, 0).
  SUFaceRef AddFace(SUEntitiesRef su_entities, double x = 0.0);

  static SUEntitiesRef Inside(SUComponentDefinitionRef su_definition);
  static SUEntitiesRef Inside(SUGroupRef su_group);
  static void Paint(SUDrawingElementRef su_element, SUMaterialRef su_material);
  static void PutOnLayer(SUDrawingElementRef su_element, SULayerRef su_layer);

  SUModelRef su_model = SU_INVALID;
  SUEntitiesRef su_root = SU_INVALID;
  SUTextureWriterRef su_writer = SU_INVALID;
};

// A pure scale, or translation, as the host has it.
SUTransformation Scale(double x, double y, double z);
SUTransformation Translation(double x, double y, double z);

}  // namespace quellix
