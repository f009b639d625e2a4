#include <SketchUpAPI/model/component_definition.h>
#include <SketchUpAPI/model/component_instance.h>
#include <SketchUpAPI/model/drawing_element.h>
#include <SketchUpAPI/model/entities.h>
#include <SketchUpAPI/model/group.h>
#include <SketchUpAPI/model/image.h>

#include <numbers>

#include "core/Refs.h"
#include "import/Scene.h"
#include "import/ScenePictures.h"
#include "model/Components.h"
#include "model/ImageRep.h"
#include "model/Turn.h"

namespace modelhost {

namespace {

SUTransformation translation(const SUPoint3D& p) {
  SUTransformation t = identity();
  t.values[12] = p.x;
  t.values[13] = p.y;
  t.values[14] = p.z;
  return t;
}

SUTransformation scaling(double x, double y, double z) {
  return {{x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1}};
}

// About an axis through the origin, of any length but 0; counter-clockwise seen from its tip.
SUTransformation rotation(const SUVector3D& axis, double degrees) {
  const SUVector3D a = unit(axis);
  const Turn turn(degrees * std::numbers::pi / 180);
  const double c = turn.cos;
  const double s = turn.sin;
  const double k = 1 - c;
  return {{c + a.x * a.x * k, a.y * a.x * k + a.z * s, a.z * a.x * k - a.y * s, 0,
           a.x * a.y * k - a.z * s, c + a.y * a.y * k, a.z * a.y * k + a.x * s, 0,
           a.x * a.z * k + a.y * s, a.y * a.z * k - a.x * s, c + a.z * a.z * k, 0, 0, 0, 0, 1}};
}

SUTransformation readRotation(const SceneNode& node) {
  if (node.isNumber()) return rotation({0, 0, 1}, node.number());
  const auto r = node.numbers(4, 4);
  if (!(length({r[0], r[1], r[2]}) > 0)) node.fail("the axis has no direction");
  return rotation({r[0], r[1], r[2]}, r[3]);
}

// "matrix", or "at" x "rotate" x "scale" (or "mirror").
SUTransformation readTransform(const SceneNode& node) {
  if (const auto matrix = node.get("matrix")) {
    const auto values = matrix->numbers(16, 16);
    SUTransformation t{};
    std::copy(values.begin(), values.end(), t.values);
    return t;
  }
  SUTransformation t = identity();
  if (const auto at = node.get("at")) t = translation(at->point());
  if (const auto rotate = node.get("rotate")) {
    // One rotation or a list of them, the last of which is done first.
    const bool several = rotate->isArray() && rotate->size() > 0 && rotate->item(0).isArray();
    if (!several) t = product(t, readRotation(*rotate));
    for (std::size_t i = 0; several && i < rotate->size(); ++i) {
      t = product(t, readRotation(rotate->item(i)));
    }
  }
  if (const auto scale = node.get("scale")) {
    const auto s =
        scale->isNumber() ? std::vector<double>(3, scale->number()) : scale->numbers(3, 3);
    t = product(t, scaling(s[0], s[1], s[2]));
  }
  return t;
}

void readGroup(SceneContext& context, const SceneNode& node, SUEntitiesRef entities) {
  node.allow({"group", "entities", "at", "rotate", "scale", "matrix", "material", "layer", "hidden",
              "attributes", "pid", "definition_pid", "casts_shadows", "receives_shadows"});
  SUGroupRef group = SU_INVALID;
  SUGroupCreate(&group);
  expect(SUEntitiesAddGroup(entities, group), node, "the group cannot be added");
  SUGroupSetName(group, node.at("group").text().c_str());
  const SUTransformation transform = readTransform(node);
  SUGroupSetTransform(group, &transform);
  SUComponentDefinitionRef definition = SU_INVALID;
  SUGroupGetDefinition(group, &definition);
  readPersistentId(node, "definition_pid", SUComponentDefinitionToEntity(definition));
  readCommon(context, node, SUGroupToDrawingElement(group));
  SUEntitiesRef inside = SU_INVALID;
  SUGroupGetEntities(group, &inside);
  if (const auto list = node.get("entities")) readEntities(context, *list, inside);
}

void placeInstance(SceneContext& context, const SceneNode& node, SUEntitiesRef entities,
                   SUComponentDefinitionRef definition, const SUTransformation& transform) {
  SUComponentInstanceRef instance = SU_INVALID;
  SUComponentDefinitionCreateInstance(definition, &instance);
  SUComponentInstanceSetTransform(instance, &transform);
  const SUResult added = SUEntitiesAddInstance(entities, instance, nullptr);
  SUComponentInstanceRef owned = instance;
  if (added != SU_ERROR_NONE) SUComponentInstanceRelease(&owned);
  expect(added, node, "it would lie inside itself");
  if (const auto name = node.get("name")) {
    SUComponentInstanceSetName(instance, name->text().c_str());
  }
  readCommon(context, node, SUComponentInstanceToDrawingElement(instance));
}

void readInstance(SceneContext& context, const SceneNode& node, SUEntitiesRef entities) {
  node.allow({"instance", "name", "at", "rotate", "scale", "matrix", "material", "layer", "hidden",
              "attributes", "pid", "casts_shadows", "receives_shadows"});
  const SceneNode component = node.at("instance");
  const std::string name = component.text();
  const auto found = context.components.find(name);
  if (found == context.components.end()) {
    component.fail("there is no component \"" + name + "\"");
  }
  placeInstance(context, node, entities, found->second, readTransform(node));
}

// The definition of an image: a new one, or that of one shown before.
SUComponentDefinitionRef pictureOf(SceneContext& context, const SceneNode& node) {
  const auto as = node.get("as");
  if (as) {
    const auto known = context.pictures.find(as->text());
    if (known != context.pictures.end()) return known->second;
  }
  return SU_INVALID;
}

void readImage(SceneContext& context, const SceneNode& node, SUEntitiesRef entities) {
  node.allow({"image", "as", "size", "name", "at", "rotate", "scale", "matrix", "material", "layer",
              "hidden", "attributes", "pid", "definition_pid", "casts_shadows",
              "receives_shadows"});
  SUImageRef image = SU_INVALID;
  SUComponentDefinitionRef definition = pictureOf(context, node);
  if (SUIsValid(definition)) {
    SUComponentInstanceRef instance = SU_INVALID;
    SUComponentDefinitionCreateInstance(definition, &instance);
    image = SUImageFromComponentInstance(instance);
  } else {
    ScenePicture picture = readScenePicture(node.at("image"), context.folder);
    ImageRep rep;
    rep.pixels = std::make_shared<Pixels>(std::move(picture.pixels));
    expect(SUImageCreateFromImageRep(&image, refOf<SUImageRepRef>(&rep)), node,
           "no image can be made");
    expect(SUImageGetDefinition(image, &definition), node, "no image can be made");
    find(definition)->fileName = picture.fileName;
    if (const auto as = node.get("as")) context.pictures[as->text()] = definition;
  }
  const Pixels& pixels = *find(definition)->picture;
  SUTransformation transform = readTransform(node);
  if (const auto size = node.get("size")) {
    const auto wanted = size->numbers(2, 2);
    transform = product(transform, scaling(wanted[0] / static_cast<double>(pixels.width),
                                           wanted[1] / static_cast<double>(pixels.height), 1));
  }
  SUImageSetTransform(image, &transform);
  expect(SUEntitiesAddImage(entities, image), node, "the image cannot be added");
  if (const auto name = node.get("name")) SUImageSetName(image, name->text().c_str());
  readPersistentId(node, "definition_pid", SUComponentDefinitionToEntity(definition));
  readCommon(context, node, SUImageToDrawingElement(image));
}

}  // namespace

void readEntities(SceneContext& context, const SceneNode& list, SUEntitiesRef entities) {
  const std::size_t n = list.size();
  for (std::size_t i = 0; i < n; ++i) {
    const SceneNode node = list.item(i);
    if (readGeometry(context, node, entities)) continue;
    if (node.has("group")) {
      readGroup(context, node, entities);
    } else if (node.has("instance")) {
      readInstance(context, node, entities);
    } else if (node.has("image")) {
      readImage(context, node, entities);
    } else {
      node.fail(
          "one of face, mesh, box, extrude, cylinder, sphere, edge, group, instance and image is "
          "wanted here");
    }
  }
}

}  // namespace modelhost
