#include <gtest/gtest.h>

#include "cw/AttributeDictionary.h"
#include "cw/Entities.h"
#include "cw/GeometryInput.h"
#include "cw/Layer.h"
#include "cw/Loop.h"
#include "cw/LoopInput.h"
#include "cw/Model.h"
#include "cw/String.h"
#include "cw/TypedValue.h"
#include "cw/Vertex.h"

namespace {

const SUTransformation kIdentity = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

TEST(CwReading, TextsAreUtf8UpToTheFirstZero) {
  EXPECT_EQ(CW::String("Tür – 門").std_string(), "Tür – 門");
  EXPECT_EQ(CW::String(std::string("cut\0off", 7)).std_string(), "cut");
  EXPECT_EQ(CW::String().std_string(), "");
  CW::String text("moved");
  const CW::String taken = std::move(text);
  EXPECT_EQ(taken.std_string(), "moved");
  EXPECT_EQ(text.std_string(), "") << "null reads as empty";
}

TEST(CwReading, ListsOfAnEmptyModelAreEmpty) {
  CW::Model model;
  const CW::Entities root = model.entities();
  EXPECT_TRUE(root.faces().empty());
  EXPECT_TRUE(root.instances().empty());
  EXPECT_TRUE(root.groups().empty());
  EXPECT_TRUE(root.edges().empty());
  EXPECT_EQ(model.layers().size(), 1u) << "the default layer";
  EXPECT_EQ(root.model_ref().ptr, model.ref().ptr);
}

TEST(CwReading, WalksFromTheRootToTheCornersOfAFace) {
  CW::Model model;
  CW::Entities root = model.entities();
  CW::Group group = root.add_group();
  group.name("Gruppe ä");
  CW::Entities inside = group.entities();
  CW::Face outline(std::vector<SUPoint3D>{{0, 0, 0}, {4, 0, 0}, {4, 3, 0}, {0, 3, 0}});
  CW::GeometryInput input;
  EXPECT_TRUE(input.empty());
  input.add_face(outline);
  input.add_edge(CW::Edge({0, 0, 5}, {1, 0, 5}));
  EXPECT_FALSE(input.empty());
  ASSERT_TRUE(inside.fill(input));

  const CW::Group found = root.groups().at(0);
  EXPECT_EQ(found.name(), "Gruppe ä");
  EXPECT_EQ(found.definition().entities().ref().ptr, found.entities().ref().ptr);
  EXPECT_EQ(found.entities().model_ref().ptr, model.ref().ptr);
  EXPECT_EQ(found.parent().ref().ptr, model.ref().ptr);
  EXPECT_NE(found.persistent_id(), 0u);
  EXPECT_EQ(found.entity_type(), SURefType_Group);
  const CW::Face face = found.entities().faces().at(0);
  EXPECT_EQ(face.entity_type(), SURefType_Face);
  EXPECT_EQ(face.bounds().max_point.x, 4);
  EXPECT_FALSE(face.hidden());
  EXPECT_EQ(face.outer_loop().vertices().at(2).position().y, 3);
  EXPECT_TRUE(face.inner_loops().empty());
  EXPECT_EQ(found.entities().edges().size(), 5u);
  EXPECT_EQ(found.entities().edges(true).size(), 1u);
}

TEST(CwReading, PlacesInstancesWithNameAndTransform) {
  CW::Model model;
  SUComponentDefinitionRef su_definition = SU_INVALID;
  SUComponentDefinitionCreate(&su_definition);
  ASSERT_EQ(SUModelAddComponentDefinitions(model.ref(), 1, &su_definition), SU_ERROR_NONE);
  const CW::ComponentDefinition definition(su_definition);
  SUTransformation moved = kIdentity;
  moved.values[13] = -2.5;
  const CW::ComponentInstance placed = model.entities().add_instance(definition, moved, "chair #1");
  EXPECT_TRUE(placed.attached());
  const CW::ComponentInstance found = model.entities().instances().at(0);
  EXPECT_EQ(found.name(), "chair #1");
  EXPECT_EQ(found.transformation().values[13], -2.5);
  EXPECT_EQ(found.definition().ref().ptr, su_definition.ptr);
  EXPECT_FALSE(definition.behavior().component_always_face_camera);
}

TEST(CwReading, AttributesAndRenderingOptions) {
  CW::Model model;
  CW::Group group = model.entities().add_group();
  EXPECT_TRUE(group.attribute_dictionaries().empty());
  CW::TypedValue value;
  value.double_value(0.5);
  EXPECT_TRUE(group.set_attribute("corvane_II", "reflection", value));
  ASSERT_EQ(group.attribute_dictionaries().size(), 1u);
  CW::AttributeDictionary dictionary = group.attribute_dictionaries()[0];
  EXPECT_EQ(dictionary.name(), "corvane_II");
  EXPECT_EQ(dictionary.get_keys(), std::vector<std::string>{"reflection"});
  EXPECT_EQ(dictionary.get_attribute("reflection").double_value(), 0.5);
  EXPECT_EQ(dictionary.get_attribute("missing", value).double_value(), 0.5);
  EXPECT_EQ(dictionary.get_attribute("missing").get_type(), SUTypedValueType_Empty);

  EXPECT_EQ(model.rendering_option("FaceFrontColor").get_type(), SUTypedValueType_Color);
  EXPECT_EQ(model.rendering_option("NoSuchOption").get_type(), SUTypedValueType_Empty);
}

}  // namespace
