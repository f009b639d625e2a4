#include "geometry/PolygonCount.h"

#include <vector>

#include <gtest/gtest.h>

namespace quellix {
namespace {

// A model with definitions that hold squares and place each other.
class PolygonCount : public ::testing::Test {
 protected:
  PolygonCount() {
    SUInitialize();
    SUModelCreate(&su_model);
    SUModelGetEntities(su_model, &su_root);
  }
  ~PolygonCount() override {
    SUModelRelease(&su_model);
    SUTerminate();
  }

  SUComponentDefinitionRef Define() {
    SUComponentDefinitionRef su_definition = SU_INVALID;
    SUComponentDefinitionCreate(&su_definition);
    EXPECT_EQ(SUModelAddComponentDefinitions(su_model, 1, &su_definition), SU_ERROR_NONE);
    return su_definition;
  }
  SUEntitiesRef Inside(SUComponentDefinitionRef su_definition) {
    SUEntitiesRef su_entities = SU_INVALID;
    SUComponentDefinitionGetEntities(su_definition, &su_entities);
    return su_entities;
  }
  SUResult Place(SUComponentDefinitionRef su_definition, SUEntitiesRef su_entities) {
    SUComponentInstanceRef su_instance = SU_INVALID;
    SUComponentDefinitionCreateInstance(su_definition, &su_instance);
    const SUResult result = SUEntitiesAddInstance(su_entities, su_instance, nullptr);
    if (result != SU_ERROR_NONE) SUComponentInstanceRelease(&su_instance);
    return result;
  }
  SUEntitiesRef AddGroup(SUEntitiesRef su_entities) {
    SUGroupRef su_group = SU_INVALID;
    SUGroupCreate(&su_group);
    SUEntitiesAddGroup(su_entities, su_group);
    SUEntitiesRef su_inside = SU_INVALID;
    SUGroupGetEntities(su_group, &su_inside);
    return su_inside;
  }
  void AddSquares(SUEntitiesRef su_entities, int count) {
    for (int i = 0; i < count; ++i) {
      const double x = 3.0 * i;
      const SUPoint3D points[] = {{x, 0, 0}, {x + 1, 0, 0}, {x + 1, 1, 0}, {x, 1, 0}};
      SUFaceRef su_face = SU_INVALID;
      ASSERT_EQ(SUFaceCreateSimple(&su_face, points, 4), SU_ERROR_NONE);
      ASSERT_EQ(SUEntitiesAddFaces(su_entities, 1, &su_face), SU_ERROR_NONE);
    }
  }

  SUModelRef su_model = SU_INVALID;
  SUEntitiesRef su_root = SU_INVALID;
};

TEST_F(PolygonCount, CountsEachPlacementAndRemembersEachCollection) {
  const SUComponentDefinitionRef su_chair = Define();
  AddSquares(Inside(su_chair), 5);
  const SUComponentDefinitionRef su_room = Define();
  AddSquares(Inside(su_room), 2);
  Place(su_chair, Inside(su_room));
  Place(su_chair, Inside(su_room));
  const SUEntitiesRef su_group = AddGroup(su_root);
  AddSquares(su_group, 1);
  Place(su_room, su_group);
  Place(su_room, su_root);
  Place(su_chair, su_root);
  AddSquares(su_root, 3);

  FaceCounts counts;
  EXPECT_EQ(CountPolygons(su_root, counts), 3u + 5 + 12 + (1 + 12));
  EXPECT_EQ(counts.size(), 4u);
  EXPECT_EQ(counts[Inside(su_room)], 12u);
  EXPECT_EQ(counts[su_group], 13u);

  // What is remembered is not counted anew.
  counts.erase(su_root);
  counts[Inside(su_chair)] = 100;
  EXPECT_EQ(CountPolygons(su_root, counts), 3u + 100 + 12 + 13);
}

TEST_F(PolygonCount, StandsDeepNestingAndStopsAtTheLargestCount) {
  SUEntitiesRef su_level = su_root;
  for (int i = 0; i < 500; ++i) su_level = AddGroup(su_level);
  AddSquares(su_level, 1);
  FaceCounts counts;
  EXPECT_EQ(CountPolygons(su_root, counts), 1u);

  // Each level places the one below twice.
  SUComponentDefinitionRef su_below = Define();
  AddSquares(Inside(su_below), 3);
  for (int i = 0; i < 40; ++i) {
    const SUComponentDefinitionRef su_above = Define();
    Place(su_below, Inside(su_above));
    Place(su_below, Inside(su_above));
    su_below = su_above;
    if (i == 19) {
      EXPECT_EQ(CountPolygons(Inside(su_below), counts), 3u << 20);
    }
  }
  EXPECT_EQ(CountPolygons(Inside(su_below), counts), 0xffffffffu);
}

}  // namespace
}  // namespace quellix
