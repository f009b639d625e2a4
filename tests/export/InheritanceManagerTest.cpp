#include "export/InheritanceManager.h"

#include <gtest/gtest.h>

#include "ModelBuilder.h"

namespace quellix {
namespace {

const glm::mat4 kIdentity(1.0f);

TEST(InheritanceManager, AnEmptyOneHasNothing) {
  ModelBuilder model;
  InheritanceManager manager(model.su_writer);
  EXPECT_EQ(manager.CurrentTransform(), kIdentity);
  EXPECT_TRUE(SUIsInvalid(manager.CurrentLayer()));
  EXPECT_EQ(manager.CurrentFrontMaterial().level, -1);
  EXPECT_EQ(manager.CurrentBackMaterial().level, -1);
  EXPECT_EQ(manager.PathKey(), 0u);
  EXPECT_EQ(manager.OutermostId(), 0u);
  manager.Pop();
  EXPECT_FALSE(manager.HasElements());
}

TEST(InheritanceManager, TransformsMultiplyFromTheOutsideIn) {
  ModelBuilder model;
  const SUComponentDefinitionRef su_definition = model.AddDefinition();
  const SUComponentInstanceRef su_instance = model.Place(su_definition, model.su_root);
  const SUTransformation su_scale = Scale(2, 3, 4);
  SUComponentInstanceSetTransform(su_instance, &su_scale);
  const SUGroupRef su_group = model.AddGroup(ModelBuilder::Inside(su_definition), {1, 1, 1});
  const SUFaceRef su_face = model.AddFace(ModelBuilder::Inside(su_group));

  InheritanceManager manager(model.su_writer);
  manager.PushInstance(su_instance);
  manager.PushGroup(su_group);
  // The translation happens inside the scale.
  EXPECT_EQ(manager.CurrentTransform() * glm::vec4(0, 0, 0, 1), glm::vec4(2, 3, 4, 1));
  EXPECT_EQ(manager.CurrentTransform()[3], glm::vec4(2, 3, 4, 1)) << "elements 12 to 14";
  EXPECT_EQ(manager.LastLocal()[3], glm::vec4(1, 1, 1, 1));
  const glm::mat4 ofGroup = manager.CurrentTransform();
  manager.PushFace(su_face);
  EXPECT_EQ(manager.CurrentTransform(), ofGroup);
  manager.Pop();

  InheritanceManager copy = manager;
  copy.ResetTransforms();
  EXPECT_EQ(copy.CurrentTransform(), kIdentity);
  EXPECT_EQ(copy.LastLocal(), kIdentity);
  copy.PushGroup(su_group);
  EXPECT_EQ(copy.CurrentTransform()[3], glm::vec4(1, 1, 1, 1));
  copy.Pop();
  copy.Pop();
  copy.Pop();
  EXPECT_EQ(manager.CurrentTransform(), ofGroup) << "a copy goes its own way";
  EXPECT_FALSE(copy.HasElements());
}

TEST(InheritanceManager, SidesInheritTheInnermostMaterialWithItsTextureId) {
  ModelBuilder model;
  const SUMaterialRef su_m = model.AddTexturedMaterial("M");
  const SUMaterialRef su_a = model.AddTexturedMaterial("A");
  const SUComponentDefinitionRef su_definition = model.AddDefinition();
  const SUGroupRef su_group = model.AddGroup(ModelBuilder::Inside(su_definition));
  const SUFaceRef su_plain = model.AddFace(ModelBuilder::Inside(su_group));
  const SUFaceRef su_painted = model.AddFace(ModelBuilder::Inside(su_group), 5);
  SUFaceSetFrontMaterial(su_painted, su_a);
  const SUComponentInstanceRef su_instance = model.Place(su_definition, model.su_root);
  ModelBuilder::Paint(SUComponentInstanceToDrawingElement(su_instance), su_m);

  long idOfInstance = 0, idOfFront = 0, idOfBack = 0;
  SUTextureWriterLoadEntity(model.su_writer, SUComponentInstanceToEntity(su_instance),
                            &idOfInstance);
  SUTextureWriterLoadFace(model.su_writer, su_painted, &idOfFront, &idOfBack);
  ASSERT_GT(idOfInstance, 0);
  ASSERT_GT(idOfFront, 0);
  ASSERT_NE(idOfFront, idOfInstance);

  InheritanceManager manager(model.su_writer);
  manager.PushInstance(su_instance);
  manager.PushGroup(su_group);
  manager.PushFace(su_plain);
  for (const EffectiveMaterial& side :
       {manager.CurrentFrontMaterial(), manager.CurrentBackMaterial()}) {
    EXPECT_EQ(side.material.ptr, su_m.ptr);
    EXPECT_EQ(side.textureId, idOfInstance);
    EXPECT_EQ(side.level, 0);
  }
  manager.Pop();

  manager.PushFace(su_painted);
  EXPECT_EQ(manager.CurrentFrontMaterial().material.ptr, su_a.ptr);
  EXPECT_EQ(manager.CurrentFrontMaterial().textureId, idOfFront);
  EXPECT_EQ(manager.CurrentFrontMaterial().level, 2);
  EXPECT_EQ(manager.CurrentBackMaterial().material.ptr, su_m.ptr);
  EXPECT_EQ(manager.CurrentBackMaterial().textureId, idOfInstance);
  EXPECT_EQ(manager.CurrentBackMaterial().level, 0);
  manager.Pop();

  manager.ResetTransforms();
  EXPECT_EQ(manager.CurrentFrontMaterial().material.ptr, su_m.ptr);

  InheritanceManager outside(model.su_writer);
  outside.PushGroup(su_group);
  outside.PushFace(su_plain);
  EXPECT_EQ(outside.CurrentFrontMaterial().level, -1);
}

TEST(InheritanceManager, TheInnermostLayerCounts) {
  ModelBuilder model;
  const SULayerRef su_outer = model.AddLayer("outer");
  const SULayerRef su_inner = model.AddLayer("inner");
  const SUGroupRef su_group = model.AddGroup(model.su_root);
  const SUGroupRef su_nested = model.AddGroup(ModelBuilder::Inside(su_group));
  ModelBuilder::PutOnLayer(SUGroupToDrawingElement(su_group), su_outer);
  ModelBuilder::PutOnLayer(SUGroupToDrawingElement(su_nested), su_inner);
  InheritanceManager manager(model.su_writer);
  manager.PushGroup(su_group);
  manager.PushGroup(su_nested);
  EXPECT_EQ(manager.CurrentLayer().ptr, su_inner.ptr);
  // An element whose layer cannot be read does not hide that of the level above.
  manager.PushGroup(SUGroupRef SU_INVALID);
  EXPECT_EQ(manager.CurrentLayer().ptr, su_inner.ptr);
  EXPECT_EQ(manager.CurrentTransform(), kIdentity);
  manager.Pop();
  manager.Pop();
  EXPECT_EQ(manager.CurrentLayer().ptr, su_outer.ptr);
}

TEST(InheritanceManager, PathKeysOfKnownIds) {
  struct Case {
    std::vector<std::uint64_t> ids;
    std::uint64_t key;
  };
  const Case cases[] = {
      {{}, 0},
      {{42}, 42},
      {{0xffffffffffffffffu}, 0xffffffffffffffffu},
      {{1, 2}, 0xd48456e1a73b0de8u},
      {{2, 1}, 0xd47cefe1a737235eu},
      {{0, 0}, 0xd483e2e1a73d2bf5u},
      {{0xffffffffffffffffu, 7}, 0xd467dde1a733188bu},
      {{1, 2, 3, 4, 5, 6}, 0xa59e60b3cc7a68c4u},
  };
  for (const Case& c : cases) EXPECT_EQ(PathKeyOf(c.ids), c.key) << c.ids.size() << " ids";
}

TEST(InheritanceManager, PathKeysTellTheWaysToOneComponentApart) {
  ModelBuilder model;
  const SUComponentDefinitionRef su_tree = model.AddDefinition();
  const SUComponentDefinitionRef su_garden = model.AddDefinition();
  const SUComponentInstanceRef su_inner = model.Place(su_tree, ModelBuilder::Inside(su_garden));
  std::vector<std::uint64_t> keys;
  for (int i = 0; i < 2; ++i) {
    const SUComponentInstanceRef su_outer = model.Place(su_garden, model.su_root);
    int64_t outerId = 0, innerId = 0;
    SUEntityGetPersistentID(SUComponentInstanceToEntity(su_outer), &outerId);
    SUEntityGetPersistentID(SUComponentInstanceToEntity(su_inner), &innerId);
    InheritanceManager manager(model.su_writer);
    manager.PushInstance(su_outer);
    EXPECT_EQ(manager.PathKey(), static_cast<std::uint64_t>(outerId));
    manager.PushInstance(su_inner);
    EXPECT_EQ(manager.OutermostId(), static_cast<std::uint64_t>(outerId));
    keys.push_back(manager.PathKey());
    EXPECT_EQ(keys.back(),
              PathKeyOf(std::vector<std::uint64_t>{static_cast<std::uint64_t>(outerId),
                                                   static_cast<std::uint64_t>(innerId)}));
    EXPECT_EQ(keys.back() >> 63, 1u);
  }
  EXPECT_NE(keys[0], keys[1]);
}

}  // namespace
}  // namespace quellix
