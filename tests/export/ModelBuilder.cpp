#include "ModelBuilder.h"

#include <gtest/gtest.h>

namespace quellix {

namespace {

void Check(SUResult result) {
  ASSERT_EQ(result, SU_ERROR_NONE) << "the model cannot be built";
}

}  // namespace

ModelBuilder::ModelBuilder() {
  SUInitialize();
  Check(SUModelCreate(&su_model));
  Check(SUModelGetEntities(su_model, &su_root));
  Check(SUTextureWriterCreate(&su_writer));
}

ModelBuilder::~ModelBuilder() {
  SUTextureWriterRelease(&su_writer);
  SUModelRelease(&su_model);
  SUTerminate();
}

SUMaterialRef ModelBuilder::AddMaterial(const char* name) {
  SUMaterialRef su_material = SU_INVALID;
  Check(SUMaterialCreate(&su_material));
  Check(SUMaterialSetName(su_material, name));
  Check(SUModelAddMaterials(su_model, 1, &su_material));
  return su_material;
}

SUMaterialRef ModelBuilder::AddTexturedMaterial(const char* name) {
  const SUMaterialRef su_material = AddMaterial(name);
  SUImageRepRef su_rep = SU_INVALID;
  Check(SUImageRepCreate(&su_rep));
  const SUByte pixel[4] = {10, 20, 30, 255};
  Check(SUImageRepSetData(su_rep, 1, 1, 32, 0, pixel));
  SUTextureRef su_texture = SU_INVALID;
  Check(SUTextureCreateFromImageRep(&su_texture, su_rep));
  SUImageRepRelease(&su_rep);
  Check(SUMaterialSetTexture(su_material, su_texture));
  return su_material;
}

SULayerRef ModelBuilder::AddLayer(const char* name) {
  SULayerRef su_layer = SU_INVALID;
  Check(SULayerCreate(&su_layer));
  Check(SULayerSetName(su_layer, name));
  Check(SUModelAddLayers(su_model, 1, &su_layer));
  return su_layer;
}

SUComponentDefinitionRef ModelBuilder::AddDefinition() {
  SUComponentDefinitionRef su_definition = SU_INVALID;
  Check(SUComponentDefinitionCreate(&su_definition));
  Check(SUModelAddComponentDefinitions(su_model, 1, &su_definition));
  return su_definition;
}

SUComponentInstanceRef ModelBuilder::Place(SUComponentDefinitionRef su_definition,
                                           SUEntitiesRef su_entities,
                                           const std::array<double, 3>& translation) {
  SUComponentInstanceRef su_instance = SU_INVALID;
  Check(SUComponentDefinitionCreateInstance(su_definition, &su_instance));
  const SUTransformation t = Translation(translation[0], translation[1], translation[2]);
  Check(SUComponentInstanceSetTransform(su_instance, &t));
  Check(SUEntitiesAddInstance(su_entities, su_instance, nullptr));
  return su_instance;
}

SUGroupRef ModelBuilder::AddGroup(SUEntitiesRef su_entities,
                                  const std::array<double, 3>& translation) {
  SUGroupRef su_group = SU_INVALID;
  Check(SUGroupCreate(&su_group));
  const SUTransformation t = Translation(translation[0], translation[1], translation[2]);
  Check(SUGroupSetTransform(su_group, &t));
  Check(SUEntitiesAddGroup(su_entities, su_group));
  return su_group;
}

SUFaceRef ModelBuilder::AddFace(SUEntitiesRef su_entities, double x) {
  const SUPoint3D points[] = {{x, 0, 0}, {x + 1, 0, 0}, {x + 1, 1, 0}, {x, 1, 0}};
  SUFaceRef su_face = SU_INVALID;
  Check(SUFaceCreateSimple(&su_face, points, 4));
  Check(SUEntitiesAddFaces(su_entities, 1, &su_face));
  return su_face;
}

SUEntitiesRef ModelBuilder::Inside(SUComponentDefinitionRef su_definition) {
  SUEntitiesRef su_entities = SU_INVALID;
  Check(SUComponentDefinitionGetEntities(su_definition, &su_entities));
  return su_entities;
}

SUEntitiesRef ModelBuilder::Inside(SUGroupRef su_group) {
  SUEntitiesRef su_entities = SU_INVALID;
  Check(SUGroupGetEntities(su_group, &su_entities));
  return su_entities;
}

void ModelBuilder::Paint(SUDrawingElementRef su_element, SUMaterialRef su_material) {
  Check(SUDrawingElementSetMaterial(su_element, su_material));
}

void ModelBuilder::PutOnLayer(SUDrawingElementRef su_element, SULayerRef su_layer) {
  Check(SUDrawingElementSetLayer(su_element, su_layer));
}

SUTransformation Scale(double x, double y, double z) {
  return {{x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1}};
}

SUTransformation Translation(double x, double y, double z) {
  return {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1}};
}

}  // namespace quellix
