#include "import/Scene.h"

#include <SketchUpAPI/model/component_definition.h>
#include <SketchUpAPI/model/drawing_element.h>
#include <SketchUpAPI/model/entity.h>
#include <SketchUpAPI/model/model.h>

#include <cstdint>
#include <fstream>
#include <iterator>

#include "ModelHost.h"
#include "core/Paths.h"
#include "core/Refs.h"
#include "core/Texts.h"
#include "import/Load.h"
#include "import/SceneValues.h"
#include "model/Model.h"

namespace modelhost {

namespace {

constexpr int kMaxDepth = 200;

SceneNode::Json parse(const std::string& path) {
  std::ifstream in(filePath(path), std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(in), {});
  const auto limitDepth = [](int depth, SceneNode::Json::parse_event_t, SceneNode::Json&) {
    if (depth > kMaxDepth) {
      throw ImportError("objects and lists are nested deeper than " + std::to_string(kMaxDepth));
    }
    return true;
  };
  try {
    return SceneNode::Json::parse(asUtf8(text), limitDepth);
  } catch (const SceneNode::Json::parse_error& error) {
    // The parser's own text begins with a number of its own; what it says after the place is for
    // people.
    std::string what = error.what();
    const auto from = what.find("parse error");
    throw ImportError("this is not valid JSON: " +
                      (from == std::string::npos ? what : what.substr(from)));
  } catch (const SceneNode::Json::exception&) {
    throw ImportError("a number or a text in it cannot be represented");
  }
}

// All components exist before any is filled, so that they may place each other in any order.
void readComponents(SceneContext& context, const SceneNode& components) {
  components.each([&](const std::string& name, const SceneNode& node) {
    SUComponentDefinitionRef definition = SU_INVALID;
    SUComponentDefinitionCreate(&definition);
    SUComponentDefinitionSetName(definition, name.c_str());
    expect(SUModelAddComponentDefinitions(context.model, 1, &definition), node,
           "the component cannot be added");
    context.components[name] = definition;
  });
  components.each([&](const std::string& name, const SceneNode& node) {
    node.allow({"entities", "description", "faces_camera", "cuts_opening", "attributes", "pid",
                "material", "layer", "hidden"});
    const SUComponentDefinitionRef definition = context.components[name];
    if (const auto text = node.get("description")) {
      SUComponentDefinitionSetDescription(definition, text->text().c_str());
    }
    SUComponentBehavior behavior{};
    SUComponentDefinitionGetBehavior(definition, &behavior);
    if (const auto faces = node.get("faces_camera")) {
      behavior.component_always_face_camera = faces->flag();
    }
    if (const auto cuts = node.get("cuts_opening")) behavior.component_cuts_opening = cuts->flag();
    SUComponentDefinitionSetBehavior(definition, &behavior);
    readCommon(context, node, SUComponentDefinitionToDrawingElement(definition));
    SUEntitiesRef entities = SU_INVALID;
    SUComponentDefinitionGetEntities(definition, &entities);
    if (const auto list = node.get("entities")) readEntities(context, *list, entities);
  });
}

void readCamera(const SceneNode& node, SUModelRef model) {
  node.allow({"eye", "target", "up", "fov"});
  const auto up = node.get("up");
  const SUPoint3D upwards = up ? up->point() : SUPoint3D{0, 0, 1};
  const auto fov = node.get("fov");
  const ModelHostCamera camera{node.at("eye").point(),
                               node.at("target").point(),
                               {upwards.x, upwards.y, upwards.z},
                               fov ? fov->positive() : 35.0};
  modelhost_set_camera(model, &camera);
}

void readModelAttributes(const SceneNode& node, SUModelRef model) {
  // A model has dictionaries but is no entity: they are read onto one and then moved.
  Layer carrier;
  readAttributes(node, refOf<SUEntityRef>(&carrier));
  Model& target = *find(model);
  for (const auto& dictionary : carrier.dictionaries()) {
    auto copy = std::make_unique<Dictionary>(dictionary->name);
    copy->entries = dictionary->entries;
    target.adopt(*copy);
    target.dictionaries.push_back(std::move(copy));
  }
}

void readScene(SceneContext& context, const SceneNode& root) {
  if (!root.isObject()) root.fail("a scene is an object");
  root.allow({"name", "title", "rendering", "camera", "layers", "folders", "materials",
              "components", "entities", "attributes"});
  Model& model = *find(context.model);
  if (const auto name = root.get("name")) model.name = name->text();
  model.title = root.has("title") ? root.at("title").text() : model.name;
  if (const auto options = root.get("rendering")) {
    readRenderingOptions(*options, refOf<SURenderingOptionsRef>(&model.options));
  }
  if (const auto camera = root.get("camera")) readCamera(*camera, context.model);
  readLayers(context, root);
  if (const auto materials = root.get("materials")) readMaterials(context, *materials);
  if (const auto components = root.get("components")) readComponents(context, *components);
  if (const auto attributes = root.get("attributes")) {
    readModelAttributes(*attributes, context.model);
  }
  SUEntitiesRef entities = SU_INVALID;
  SUModelGetEntities(context.model, &entities);
  if (const auto list = root.get("entities")) readEntities(context, *list, entities);
}

template <class Map>
auto lookUp(const Map& map, const SceneNode& name, const char* what) {
  const std::string key = name.text();
  const auto found = map.find(key);
  if (found == map.end()) name.fail(std::string("there is no ") + what + " \"" + key + "\"");
  return found->second;
}

}  // namespace

SUMaterialRef SceneContext::material(const SceneNode& name) const {
  return lookUp(materials, name, "material");
}

SULayerRef SceneContext::layer(const SceneNode& name) const {
  return lookUp(layers, name, "layer");
}

void expect(SUResult result, const SceneNode& node, const std::string& what) {
  if (result != SU_ERROR_NONE) node.fail(what);
}

void readPersistentId(const SceneNode& node, const char* key, SUEntityRef entity) {
  const auto id = node.get(key);
  if (!id) return;
  if (!id->json().is_number_integer() || id->json().get<std::int64_t>() <= 0) {
    id->fail("a whole number above 0 is wanted here");
  }
  expect(modelhost_set_persistent_id(entity, id->json().get<std::int64_t>()), *id,
         "another entity has this id");
}

void readCommon(SceneContext& context, const SceneNode& node, SUDrawingElementRef element) {
  if (const auto material = node.get("material")) {
    SUDrawingElementSetMaterial(element, context.material(*material));
  }
  if (const auto layer = node.get("layer")) {
    SUDrawingElementSetLayer(element, context.layer(*layer));
  }
  if (const auto hidden = node.get("hidden")) SUDrawingElementSetHidden(element, hidden->flag());
  if (const auto casts = node.get("casts_shadows")) {
    SUDrawingElementSetCastsShadows(element, casts->flag());
  }
  if (const auto receives = node.get("receives_shadows")) {
    SUDrawingElementSetReceivesShadows(element, receives->flag());
  }
  const SUEntityRef entity = SUDrawingElementToEntity(element);
  if (const auto attributes = node.get("attributes")) readAttributes(*attributes, entity);
  readPersistentId(node, "pid", entity);
}

std::string importScene(const std::string& path, SUModelRef model) {
  try {
    const SceneNode::Json json = parse(path);
    SceneContext context;
    context.model = model;
    context.folder = utf8(filePath(path).parent_path());
    readScene(context, SceneNode(json));
    const std::string left = context.report.text();
    return left.empty() ? left : path + ": left out " + left;
  } catch (const ImportError& error) {
    throw ImportError(path + ": " + error.what());
  }
}

}  // namespace modelhost
