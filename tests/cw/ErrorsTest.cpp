#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "cw/AttributeDictionary.h"
#include "cw/Entities.h"
#include "cw/GeometryInput.h"
#include "cw/Layer.h"
#include "cw/Loop.h"
#include "cw/LoopInput.h"
#include "cw/Material.h"
#include "cw/Model.h"
#include "cw/String.h"
#include "cw/Texture.h"
#include "cw/TypedValue.h"
#include "cw/Vertex.h"

namespace {

template <class Error>
std::string MessageOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const Error& error) {
    return error.what();
  } catch (...) {
    return "another kind of error";
  }
  return "no error";
}

TEST(CwErrors, ANullWrapperNamesClassAndOperation) {
  const CW::Model model(SUModelRef SU_INVALID, false, SU_ERROR_INVALID_INPUT);
  CW::Entities entities;
  CW::Entity entity;
  CW::DrawingElement element;
  CW::ComponentDefinition definition(SUComponentDefinitionRef SU_INVALID);
  CW::ComponentInstance instance(SUComponentInstanceRef SU_INVALID);
  CW::Group group(SUGroupRef SU_INVALID);
  CW::Face face(SUFaceRef SU_INVALID);
  CW::Edge edge(SUEdgeRef SU_INVALID);
  CW::Loop loop;
  CW::Vertex vertex;
  CW::Layer layer(SULayerRef SU_INVALID);
  CW::Material material(SUMaterialRef SU_INVALID);
  CW::Texture texture;
  CW::AttributeDictionary dictionary(SUAttributeDictionaryRef SU_INVALID);
  CW::TypedValue value = CW::TypedValue::attached(SU_INVALID);
  CW::LoopInput loopInput;
  CW::LoopInput takenLoop = std::move(loopInput);
  CW::GeometryInput input;
  CW::GeometryInput takenInput = std::move(input);
  EXPECT_TRUE(model.is_null() && entities.is_null() && entity.is_null() && element.is_null());
  EXPECT_TRUE(definition.is_null() && instance.is_null() && group.is_null() && face.is_null());
  EXPECT_TRUE(edge.is_null() && loop.is_null() && vertex.is_null() && layer.is_null());
  EXPECT_TRUE(material.is_null() && texture.is_null() && dictionary.is_null() && value.is_null());

  struct Case {
    const char* operation;
    std::function<void()> run;
  };
  std::vector<CW::Face> faces;
  std::vector<CW::Edge> edges;
  const Case cases[] = {
      {"Model::entities", [&] { model.entities(); }},
      {"Model::layers", [&] { model.layers(); }},
      {"Entities::faces", [&] { entities.faces(); }},
      {"Entities::instances", [&] { entities.instances(); }},
      {"Entities::groups", [&] { entities.groups(); }},
      {"Entities::edges", [&] { entities.edges(); }},
      {"Entities::add", [&] { entities.add(faces); }},
      {"Entities::add", [&] { entities.add(edges); }},
      {"Entities::add_group", [&] { entities.add_group(group); }},
      {"Entities::add_instance", [&] { entities.add_instance(definition, {}); }},
      {"Entities::fill", [&] { entities.fill(input); }},
      {"Entity::entity_type", [&] { entity.entity_type(); }},
      {"Entity::parent", [&] { entity.parent(); }},
      {"Entity::attribute_dictionaries", [&] { entity.attribute_dictionaries(); }},
      {"Entity::attribute_dictionary", [&] { entity.attribute_dictionary("d"); }},
      {"Entity::set_attribute", [&] { entity.set_attribute("d", "k", {}); }},
      {"Entity::copy_attributes_from", [&] { entity.copy_attributes_from(face); }},
      {"DrawingElement::hidden", [&] { face.hidden(); }},
      {"DrawingElement::hidden", [&] { element.hidden(true); }},
      {"DrawingElement::bounds", [&] { element.bounds(); }},
      {"DrawingElement::casts_shadows", [&] { element.casts_shadows(); }},
      {"DrawingElement::receive_shadows", [&] { element.receive_shadows(true); }},
      {"DrawingElement::layer", [&] { element.layer(); }},
      {"DrawingElement::layer", [&] { element.layer(layer); }},
      {"DrawingElement::material", [&] { element.material(); }},
      {"DrawingElement::material", [&] { element.material(material); }},
      {"ComponentDefinition::entities", [&] { definition.entities(); }},
      {"ComponentDefinition::behavior", [&] { definition.behavior(); }},
      {"ComponentDefinition::create_instance", [&] { definition.create_instance(); }},
      {"ComponentInstance::definition", [&] { instance.definition(); }},
      {"ComponentInstance::name", [&] { instance.name(); }},
      {"ComponentInstance::name", [&] { instance.name("n"); }},
      {"ComponentInstance::transformation", [&] { instance.transformation(); }},
      {"Group::definition", [&] { group.definition(); }},
      {"Group::entities", [&] { group.entities(); }},
      {"Group::name", [&] { group.name(); }},
      {"Group::transformation", [&] { group.transformation({}); }},
      {"Edge::start", [&] { edge.start(); }},
      {"Edge::end", [&] { edge.end(); }},
      {"Edge::color", [&] { edge.color(); }},
      {"Edge::soft", [&] { edge.soft(); }},
      {"Edge::smooth", [&] { edge.smooth(true); }},
      {"Face::outer_loop", [&] { face.outer_loop(); }},
      {"Face::inner_loops", [&] { face.inner_loops(); }},
      {"Face::back_material", [&] { face.back_material(); }},
      {"Loop::vertices", [&] { loop.vertices(); }},
      {"Loop::edges", [&] { loop.edges(); }},
      {"Loop::points", [&] { loop.points(); }},
      {"Loop::loop_input", [&] { loop.loop_input(); }},
      {"Vertex::position", [&] { vertex.position(); }},
      {"Layer::name", [&] { layer.name(); }},
      {"Material::name", [&] { material.name("m"); }},
      {"Material::opacity", [&] { material.opacity(); }},
      {"Material::use_alpha", [&] { material.use_alpha(); }},
      {"Material::TEXTURE", [&] { material.TEXTURE(); }},
      {"Material::texture", [&] { material.texture(texture); }},
      {"Material::type", [&] { material.type(); }},
      {"Material::color", [&] { material.color({}); }},
      {"Texture::s_scale", [&] { texture.s_scale(); }},
      {"Texture::t_scale", [&] { texture.t_scale(); }},
      {"AttributeDictionary::get_attribute", [&] { dictionary.get_attribute("k"); }},
      {"AttributeDictionary::set_attribute", [&] { dictionary.set_attribute("k", {}); }},
      {"AttributeDictionary::get_keys", [&] { dictionary.get_keys(); }},
      {"TypedValue::get_type", [&] { value.get_type(); }},
      {"TypedValue::color_value", [&] { value.color_value(); }},
      {"TypedValue::string_value", [&] { value.string_value("s"); }},
      {"LoopInput::add_vertex_index", [&] { loopInput.add_vertex_index(0); }},
      {"LoopInput::set_edge_soft", [&] { loopInput.set_edge_soft(0, true); }},
      {"GeometryInput::add_face", [&] { input.add_face(face); }},
      {"GeometryInput::add_faces", [&] { input.add_faces(faces); }},
      {"GeometryInput::add_edge", [&] { input.add_edge(edge); }},
      {"GeometryInput::add_edges", [&] { input.add_edges(edges); }},
      {"GeometryInput::empty", [&] { input.empty(); }},
  };
  for (const Case& c : cases) {
    const std::string operation = c.operation;
    const std::string className = operation.substr(0, operation.find(':'));
    EXPECT_EQ(MessageOf<std::logic_error>(c.run),
              "CW::" + operation + "(): " + className + " is null");
  }

  // Not checked: the call fails, and that is no error.
  EXPECT_EQ(face.persistent_id(), 0u);
  EXPECT_EQ(material.name(), "");
}

TEST(CwErrors, BadArguments) {
  const SUPoint3D point = {1, 2, 3};
  const CW::Face nullFace(SUFaceRef SU_INVALID);
  const CW::Edge nullEdge(SUEdgeRef SU_INVALID);
  const CW::ComponentDefinition nullDefinition(SUComponentDefinitionRef SU_INVALID);
  CW::Model model;
  CW::GeometryInput input;
  CW::LoopInput loop;
  for (size_t i = 0; i < 3; ++i) loop.add_vertex_index(i);
  CW::Layer layer;
  struct Case {
    const char* message;
    std::function<void()> run;
  };
  const Case cases[] = {
      {"CW::Edge::create_edge(): given Point3D is null",
       [&] { CW::Edge::create_edge(&point, nullptr); }},
      {"CW::Edge::create_edge(): start and end points are equal - cannot create edge of zero "
       "length",
       [&] { CW::Edge(point, point); }},
      {"CW::Entities::add_instance(): ComponentDefinition argument is invalid",
       [&] { model.entities().add_instance(nullDefinition, {}); }},
      {"CW::GeometryInput::add_face(): Face argument is null", [&] { input.add_face(nullFace); }},
      {"CW::GeometryInput::add_face(): Face argument is null",
       [&] { input.add_faces({nullFace}); }},
      {"CW::GeometryInput::add_edge(): Edge argument is null", [&] { input.add_edge(nullEdge); }},
      {"CW::LoopInput::set_edge_hidden(): edge_index is larger than the number of vertices in the "
       "LoopInput",
       [&] { loop.set_edge_hidden(4, true); }},
      {"CW::LoopInput::set_edge_soft(): edge_index is larger than the number of vertices in the "
       "LoopInput",
       [&] { loop.set_edge_soft(4, true); }},
      {"CW::LoopInput::set_edge_smooth(): edge_index is larger than the number of vertices in the "
       "LoopInput",
       [&] { loop.set_edge_smooth(4, true); }},
      {"CW::Entity::copy_attributes_from(): Entity argument is null",
       [&] { layer.copy_attributes_from(nullFace); }},
  };
  for (const Case& c : cases) EXPECT_EQ(MessageOf<std::invalid_argument>(c.run), c.message);
  EXPECT_NO_THROW(loop.set_edge_smooth(2, true));
  EXPECT_TRUE(input.empty()) << "a refused argument leaves nothing behind";
}

}  // namespace
