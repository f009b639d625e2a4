#include "export/FaceSelection.h"

#include <gtest/gtest.h>

#include "ModelBuilder.h"
#include "cw/Entity.h"

namespace quellix {
namespace {

std::uint64_t IdOf(SULayerRef su_layer) {
  return CW::persistent_id(SULayerToEntity(su_layer));
}

class FaceSelection : public ::testing::Test {
 protected:
  struct Selected {
    SUFaceRef su_face;
    FaceContext context;
  };

  std::vector<Selected> Select(SUEntitiesRef su_entities, bool atRoot) {
    std::vector<Selected> selected;
    const FaceSelectionInputs inputs{hiddenLayers, materialIndex,   11,
                                     12,           layerDependents, facesDone};
    ForEachSelectedFace(su_entities, atRoot, manager, inputs,
                        [&](SUFaceRef su_face, const FaceContext& context) {
                          selected.push_back({su_face, context});
                        });
    return selected;
  }

  ModelBuilder model;
  HiddenLayerSet hiddenLayers;
  MaterialIndexMap materialIndex;
  LayerDependents layerDependents;
  std::atomic<std::uint32_t> facesDone{0};
  InheritanceManager manager{model.su_writer};
};

TEST_F(FaceSelection, SkipsHiddenLayersAndRecordsEveryLayerUnderItsOwner) {
  const SULayerRef su_shown = model.AddLayer("shown");
  const SULayerRef su_hidden = model.AddLayer("hidden");
  const SULayerRef su_alsoHidden = model.AddLayer("also hidden");
  hiddenLayers = {su_hidden, su_alsoHidden};
  const SUGroupRef su_group = model.AddGroup(model.su_root);
  const SUEntitiesRef su_inside = ModelBuilder::Inside(su_group);
  std::vector<SUFaceRef> su_faces;
  for (const SULayerRef su_layer :
       {su_hidden, su_hidden, su_shown, su_hidden, su_alsoHidden, su_shown}) {
    su_faces.push_back(model.AddFace(su_inside, 2.0 * static_cast<double>(su_faces.size())));
    ModelBuilder::PutOnLayer(SUFaceToDrawingElement(su_faces.back()), su_layer);
  }
  // The hidden flag of a face does not count.
  SUDrawingElementSetHidden(SUFaceToDrawingElement(su_faces[2]), true);

  manager.PushGroup(su_group);
  const auto selected = Select(su_inside, false);
  ASSERT_EQ(selected.size(), 2u);
  EXPECT_EQ(selected[0].su_face.ptr, su_faces[2].ptr);
  EXPECT_EQ(selected[1].su_face.ptr, su_faces[5].ptr);
  EXPECT_EQ(facesDone, 2u);
  const std::set<std::uint64_t> owner = {manager.OutermostId()};
  EXPECT_NE(*owner.begin(), 0u);
  EXPECT_EQ(layerDependents,
            (LayerDependents{
                {IdOf(su_shown), owner}, {IdOf(su_hidden), owner}, {IdOf(su_alsoHidden), owner}}));
  manager.Pop();
  EXPECT_FALSE(manager.HasElements()) << "every face was popped";

  // The root's own faces belong to owner 0.
  const SUFaceRef su_loose = model.AddFace(model.su_root, 50);
  ModelBuilder::PutOnLayer(SUFaceToDrawingElement(su_loose), su_shown);
  EXPECT_EQ(Select(model.su_root, true).size(), 1u);
  EXPECT_EQ(layerDependents[IdOf(su_shown)], (std::set<std::uint64_t>{0, *owner.begin()}));
}

TEST_F(FaceSelection, NamesMaterialsByTheirTextureId) {
  const SUMaterialRef su_plain = model.AddMaterial("plain");
  const SUMaterialRef su_textured = model.AddTexturedMaterial("textured");
  const SUFaceRef su_face = model.AddFace(model.su_root);
  SUFaceSetFrontMaterial(su_face, su_textured);
  SUFaceSetBackMaterial(su_face, su_plain);
  model.AddFace(model.su_root, 5);
  long frontId = 0, backId = 0;
  SUTextureWriterLoadFace(model.su_writer, su_face, &frontId, &backId);
  const auto textureId = static_cast<std::int32_t>(frontId);
  ASSERT_GT(textureId, 0);

  struct Case {
    const char* what;
    MaterialIndexMap indexes;
    std::uint32_t front, back;
  };
  const Case cases[] = {
      {"unknown materials", {}, 11, 12},
      {"known", {{su_textured, {{textureId, 5}}}, {su_plain, {{0, 6}}}}, 5, 6},
      {"known with another texture only", {{su_textured, {{textureId + 1, 5}}}}, 11, 12},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    materialIndex = c.indexes;
    const auto selected = Select(model.su_root, true);
    ASSERT_EQ(selected.size(), 2u);
    const FaceContext& painted = selected[0].context;
    EXPECT_EQ(painted.front.index, c.front);
    EXPECT_EQ(painted.front.textureId, textureId);
    EXPECT_TRUE(painted.front.textured);
    EXPECT_EQ(painted.back.index, c.back);
    EXPECT_EQ(painted.back.textureId, 0);
    EXPECT_FALSE(painted.back.textured);
    EXPECT_EQ(painted.textureWriter.ptr, model.su_writer.ptr);
    const FaceContext& bare = selected[1].context;
    EXPECT_TRUE(SUIsInvalid(bare.front.material));
    EXPECT_EQ(bare.front.index, 11u);
    EXPECT_EQ(bare.back.index, 12u);
    EXPECT_FALSE(bare.front.textured || bare.back.textured);
  }
}

TEST_F(FaceSelection, HandsOnTransformAndMaterialOfTheEnclosingInstance) {
  const SUMaterialRef su_material = model.AddTexturedMaterial("of the instance");
  const SUComponentDefinitionRef su_definition = model.AddDefinition();
  model.AddFace(ModelBuilder::Inside(su_definition));
  const SUComponentInstanceRef su_instance = model.Place(su_definition, model.su_root, {7, 0, 0});
  ModelBuilder::Paint(SUComponentInstanceToDrawingElement(su_instance), su_material);
  manager.PushInstance(su_instance);
  const auto selected = Select(ModelBuilder::Inside(su_definition), false);
  ASSERT_EQ(selected.size(), 1u);
  EXPECT_EQ(selected[0].context.transform[3], glm::vec4(7, 0, 0, 1));
  EXPECT_EQ(selected[0].context.back.material.ptr, su_material.ptr);
  EXPECT_TRUE(selected[0].context.back.textured);
}

}  // namespace
}  // namespace quellix
