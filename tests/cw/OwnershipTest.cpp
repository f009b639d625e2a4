#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "cw/AttributeDictionary.h"
#include "cw/Entities.h"
#include "cw/Layer.h"
#include "cw/Loop.h"
#include "cw/LoopInput.h"
#include "cw/Material.h"
#include "cw/Model.h"
#include "cw/Texture.h"
#include "cw/Vertex.h"

namespace {

const std::vector<SUPoint3D> kSquare = {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};
const SUTransformation kIdentity = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

bool Lives(SUEntityRef su_entity) {
  return SUEntityGetType(su_entity) != SURefType_Unknown;
}

// What a wrapper made goes with it, once, whatever ways it has been handed around before.
template <class T>
void ExpectReleasedOnce(T made) {
  ASSERT_FALSE(made.is_null());
  EXPECT_FALSE(made.attached());
  const SUEntityRef su_entity = made.entity_ref();
  {
    T moved = std::move(made);
    EXPECT_TRUE(made.is_null());
    T assigned = std::move(moved);
    const CW::Entity name = assigned;  // a mere name
    EXPECT_TRUE(name.attached());
    EXPECT_EQ(name.entity_ref().ptr, su_entity.ptr);
    CW::Entity base = std::move(assigned);
    EXPECT_TRUE(assigned.is_null());
    EXPECT_FALSE(base.attached());
    EXPECT_TRUE(Lives(su_entity));
  }
  EXPECT_FALSE(Lives(su_entity));
}

TEST(CwOwnership, AWrapperReleasesWhatItMade) {
  CW::Model model;
  ExpectReleasedOnce(CW::Layer());
  ExpectReleasedOnce(CW::Material());
  ExpectReleasedOnce(CW::ComponentDefinition());
  ExpectReleasedOnce(CW::Group());
  ExpectReleasedOnce(CW::AttributeDictionary("d"));
  ExpectReleasedOnce(CW::Edge({0, 0, 0}, {1, 0, 0}));
  ExpectReleasedOnce(CW::Face(kSquare));
  const CW::ComponentDefinition definition;
  ExpectReleasedOnce(definition.create_instance());
}

TEST(CwOwnership, AnAttachedWrapperLeavesTheObject) {
  CW::Model model;
  CW::Entities root = model.entities();
  SUEntityRef su_face;
  SUEntityRef su_group;
  {
    std::vector<CW::Face> faces;
    faces.emplace_back(kSquare);
    su_face = faces[0].entity_ref();
    ASSERT_TRUE(root.add(faces));
    EXPECT_TRUE(faces[0].attached());
    su_group = root.add_group().entity_ref();
  }
  EXPECT_TRUE(Lives(su_face));
  EXPECT_TRUE(Lives(su_group));
  {
    const CW::Face listed = root.faces().at(0);
    const CW::Face copy = listed;
    EXPECT_EQ(copy.ref().ptr, listed.ref().ptr);
    const CW::Layer layer = listed.layer();
    EXPECT_FALSE(layer.is_null());
  }
  EXPECT_TRUE(Lives(su_face));
  EXPECT_EQ(root.faces().size(), 1u);
}

TEST(CwOwnership, CopyingWhatIsNotAttachedMakesAnotherObject) {
  CW::Model model;
  CW::TypedValue seven;
  seven.int32_value(7);

  CW::Layer layer;
  layer.name("Wände");
  layer.set_attribute("corvane_II", "k", seven);
  const CW::Layer otherLayer = layer;
  EXPECT_NE(otherLayer.ref().ptr, layer.ref().ptr);
  EXPECT_FALSE(otherLayer.attached());
  EXPECT_EQ(otherLayer.name(), "Wände");
  EXPECT_EQ(otherLayer.attribute_dictionaries().at(0).get_attribute("k").int32_value(), 7);

  CW::Material material;
  material.name("glass");
  material.color({10, 20, 30, 40});
  material.opacity(0.25);
  CW::Material otherMaterial(SUMaterialRef SU_INVALID);
  otherMaterial = material;
  EXPECT_NE(otherMaterial.ref().ptr, material.ref().ptr);
  EXPECT_EQ(otherMaterial.name(), "glass");
  EXPECT_EQ(otherMaterial.color().green, 20);
  EXPECT_DOUBLE_EQ(otherMaterial.opacity(), 0.25);
  EXPECT_TRUE(otherMaterial.use_alpha());
  EXPECT_TRUE(otherMaterial.TEXTURE().is_null());

  CW::Edge edge({0, 0, 0}, {0, 0, 5});
  edge.smooth(true);
  const CW::Edge otherEdge = edge;
  EXPECT_NE(otherEdge.ref().ptr, edge.ref().ptr);
  EXPECT_EQ(otherEdge.end().position().z, 5);
  EXPECT_TRUE(otherEdge.smooth());
  EXPECT_FALSE(otherEdge.soft());

  CW::Group group;
  group.name("g");
  SUTransformation moved = kIdentity;
  moved.values[12] = 3;
  group.transformation(moved);
  const CW::Group otherGroup = group;
  EXPECT_NE(otherGroup.ref().ptr, group.ref().ptr);
  EXPECT_EQ(otherGroup.name(), "g");
  EXPECT_EQ(otherGroup.transformation().values[12], 3);
}

TEST(CwOwnership, CopyingAFaceKeepsItsHolesFlagsMaterialsAndAttributes) {
  CW::Model model;
  SUMaterialRef su_material = SU_INVALID;
  SUMaterialCreate(&su_material);
  ASSERT_EQ(SUModelAddMaterials(model.ref(), 1, &su_material), SU_ERROR_NONE);
  const CW::Material back(su_material);

  CW::LoopInput outline;
  for (size_t i = 0; i < 4; ++i) outline.add_vertex_index(i);
  outline.set_edge_smooth(1, true);
  CW::Face face(kSquare, outline);
  EXPECT_TRUE(outline.is_null()) << "the face has taken the loop over";
  const SUPoint3D hole[] = {{0.5, 0.5, 0}, {0.5, 1, 0}, {1, 1, 0}};
  CW::LoopInput holeInput;
  for (size_t i = 0; i < 3; ++i) holeInput.add_vertex_index(i);
  ASSERT_EQ(SUFaceAddInnerLoop(face.ref(), hole, holeInput.out()), SU_ERROR_NONE);
  face.back_material(back);
  face.hidden(true);
  CW::TypedValue text;
  text.string_value("x");
  face.set_attribute("notes", "k", text);

  const CW::Face copy = face;
  EXPECT_NE(copy.ref().ptr, face.ref().ptr);
  EXPECT_FALSE(copy.attached());
  EXPECT_EQ(copy.back_material().ref().ptr, su_material.ptr);
  EXPECT_TRUE(copy.material().is_null());
  EXPECT_TRUE(copy.hidden());
  EXPECT_EQ(copy.attribute_dictionary("notes").get_attribute("k").string_value(), "x");
  ASSERT_EQ(copy.inner_loops().size(), 1u);
  EXPECT_EQ(copy.inner_loops()[0].points().at(0).x, 0.5);
  const std::vector<CW::Edge> edges = copy.outer_loop().edges();
  ASSERT_EQ(edges.size(), 4u);
  EXPECT_TRUE(edges[1].smooth());
  EXPECT_FALSE(edges[0].smooth());
}

TEST(CwOwnership, ATextureIsCopiedThroughAFileThatIsGoneAfter) {
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("qlx_cw_test_" + std::to_string(getpid()) + ".png");
  SUImageRepRef su_rep = SU_INVALID;
  SUImageRepCreate(&su_rep);
  const SUByte pixels[8] = {1, 2, 3, 255, 4, 5, 6, 255};
  ASSERT_EQ(SUImageRepSetData(su_rep, 2, 1, 32, 0, pixels), SU_ERROR_NONE);
  ASSERT_EQ(SUImageRepSaveToFile(su_rep, path.string().c_str()), SU_ERROR_NONE);
  SUImageRepRelease(&su_rep);
  CW::Texture texture(path.string(), 0.5, 0.25);
  std::filesystem::remove(path);
  ASSERT_FALSE(texture.is_null());

  const CW::Texture copy = texture;
  EXPECT_NE(copy.ref().ptr, texture.ref().ptr);
  EXPECT_EQ(copy.s_scale(), 0.5);
  EXPECT_EQ(copy.t_scale(), 0.25);
  EXPECT_FALSE(std::filesystem::exists("/tmp/tmptexture"));

  // A material takes its texture over, and a copy of the material has one of its own.
  const SUEntityRef su_texture = texture.entity_ref();
  CW::Material material;
  material.texture(texture);
  EXPECT_TRUE(texture.attached());
  EXPECT_EQ(material.TEXTURE().ref().ptr, texture.ref().ptr);
  const CW::Material other = material;
  EXPECT_FALSE(other.TEXTURE().is_null());
  EXPECT_NE(other.TEXTURE().ref().ptr, material.TEXTURE().ref().ptr);
  EXPECT_EQ(other.type(), material.type());
  ExpectReleasedOnce(std::move(material));
  EXPECT_FALSE(Lives(su_texture));
  EXPECT_TRUE(CW::Texture("/no/such/file.png", 1, 1).is_null());
}

}  // namespace
