#include <SketchUpAPI/model/image_rep.h>
#include <SketchUpAPI/model/layer.h>
#include <SketchUpAPI/model/layer_folder.h>
#include <SketchUpAPI/model/material.h>
#include <SketchUpAPI/model/model.h>
#include <SketchUpAPI/model/texture.h>

#include "ModelHost.h"
#include "core/Refs.h"
#include "import/Scene.h"
#include "import/ScenePictures.h"
#include "import/SceneValues.h"
#include "model/ImageRep.h"

namespace modelhost {

namespace {

SUTextureRef readTexture(SceneContext& context, const SceneNode& node) {
  if (node.isObject()) {
    node.allow({"file", "pattern", "colors", "pixels", "cells", "bits", "rows", "palette", "name",
                "size", "use_alpha"});
  }
  ScenePicture picture = readScenePicture(node, context.folder);
  ImageRep rep;
  rep.pixels = std::make_shared<Pixels>(std::move(picture.pixels));
  SUTextureRef texture = SU_INVALID;
  expect(SUTextureCreateFromImageRep(&texture, refOf<SUImageRepRef>(&rep)), node,
         "the texture cannot be made");
  SUTextureSetFileName(texture, picture.fileName.c_str());
  if (const auto size = node.get("size")) {
    const double width = size->isArray() ? size->numbers(2, 2)[0] : size->positive();
    const double height = size->isArray() ? size->numbers(2, 2)[1] : width;
    expect(SUTextureSetDimensions(texture, 1 / width, 1 / height), *size,
           "width and height of one tile are above 0");
  }
  if (const auto alpha = node.get("use_alpha")) {
    modelhost_texture_set_use_alpha(texture, alpha->flag());
  }
  return texture;
}

// {"factor": 0.5, "texture": …} or the factor alone.
struct ChannelCalls {
  decltype(&SUMaterialSetMetalnessEnabled) enable;
  decltype(&SUMaterialSetMetallicFactor) factor;
  decltype(&SUMaterialSetMetallicTexture) texture;
};

void readChannel(SceneContext& context, const SceneNode& node, SUMaterialRef material,
                 const ChannelCalls& calls) {
  calls.enable(material, true);
  if (node.isNumber()) {
    calls.factor(material, node.number());
    return;
  }
  node.allow({"factor", "texture", "enabled"});
  if (const auto factor = node.get("factor")) calls.factor(material, factor->number());
  if (const auto texture = node.get("texture")) {
    calls.texture(material, readTexture(context, *texture));
  }
  if (const auto enabled = node.get("enabled")) calls.enable(material, enabled->flag());
}

void readAppearance(SceneContext& context, const SceneNode& node, SUMaterialRef material) {
  if (const auto texture = node.get("texture")) {
    SUMaterialSetTexture(material, readTexture(context, *texture));
  }
  if (const auto color = node.get("color")) {
    const SUColor value = color->color();
    SUMaterialSetColor(material, &value);
  }
  if (const auto opacity = node.get("opacity")) {
    expect(SUMaterialSetOpacity(material, opacity->number()), *opacity, "opacity is from 0 to 1");
    SUMaterialSetUseOpacity(material, true);
  }
  if (const auto use = node.get("use_opacity")) SUMaterialSetUseOpacity(material, use->flag());
  if (const auto colorize = node.get("colorize")) {
    if (colorize->isString()) {
      if (colorize->text() != "color") colorize->fail("\"color\" or three shifts are wanted here");
      SUMaterialSetType(material, SUMaterialType_ColorizedTexture);
    } else {
      const auto shifts = colorize->numbers(3, 3);
      modelhost_material_set_colorize(material, shifts[0], shifts[1], shifts[2]);
    }
  }
  if (const auto tint = node.get("tint")) {
    SUMaterialSetColorizeType(
        material, tint->flag() ? SUMaterialColorizeType_Tint : SUMaterialColorizeType_Shift);
  }
}

void readPbr(SceneContext& context, const SceneNode& node, SUMaterialRef material) {
  const auto channel = [&](const char* key, const ChannelCalls& calls) {
    if (const auto of = node.get(key)) readChannel(context, *of, material, calls);
  };
  channel("metallic", {&SUMaterialSetMetalnessEnabled, &SUMaterialSetMetallicFactor,
                       &SUMaterialSetMetallicTexture});
  channel("roughness", {&SUMaterialSetRoughnessEnabled, &SUMaterialSetRoughnessFactor,
                        &SUMaterialSetRoughnessTexture});
  channel("normal",
          {&SUMaterialSetNormalEnabled, &SUMaterialSetNormalScale, &SUMaterialSetNormalTexture});
  if (const auto workflow = node.get("workflow")) {
    const std::string name = workflow->text();
    if (name != "classic" && name != "pbr") {
      workflow->fail("\"classic\" or \"pbr\" is wanted here");
    }
    modelhost_material_set_workflow(material, name == "pbr"
                                                  ? SUMaterialWorkflow_PBRMetallicRoughness
                                                  : SUMaterialWorkflow_Classic);
  }
}

void readLayer(SceneContext& context, const SceneNode& node, SULayerFolderRef folder) {
  const std::string name = node.isString() ? node.text() : node.at("name").text();
  SULayerRef layer = SU_INVALID;
  if (const auto known = context.layers.find(name); known != context.layers.end()) {
    layer = known->second;
  } else {
    SULayerCreate(&layer);
    SULayerSetName(layer, name.c_str());
    expect(SUModelAddLayers(context.model, 1, &layer), node, "the layer cannot be added");
    context.layers[name] = layer;
  }
  if (SUIsValid(folder)) SULayerFolderAddLayer(folder, layer);
  if (node.isString()) return;
  node.allow({"name", "visible", "attributes", "pid"});
  if (const auto visible = node.get("visible")) SULayerSetVisibility(layer, visible->flag());
  if (const auto attributes = node.get("attributes")) {
    readAttributes(*attributes, SULayerToEntity(layer));
  }
  readPersistentId(node, "pid", SULayerToEntity(layer));
}

void readFolders(SceneContext& context, const SceneNode& list, SULayerFolderRef parent) {
  for (std::size_t i = 0; i < list.size(); ++i) {
    const SceneNode node = list.item(i);
    node.allow({"name", "visible", "layers", "folders"});
    SULayerFolderRef folder = SU_INVALID;
    SULayerFolderCreate(&folder);
    SULayerFolderSetName(folder, node.at("name").text().c_str());
    SUModelAddLayerFolder(context.model, folder);
    if (SUIsValid(parent)) SULayerFolderAddLayerFolder(parent, folder);
    if (const auto visible = node.get("visible")) {
      SULayerFolderSetVisibility(folder, visible->flag());
    }
    if (const auto layers = node.get("layers")) {
      for (std::size_t k = 0; k < layers->size(); ++k) {
        readLayer(context, layers->item(k), folder);
      }
    }
    if (const auto folders = node.get("folders")) readFolders(context, *folders, folder);
  }
}

}  // namespace

void readLayers(SceneContext& context, const SceneNode& root) {
  SULayerRef first = SU_INVALID;
  SUModelGetDefaultLayer(context.model, &first);
  context.layers["Layer0"] = first;
  if (const auto layers = root.get("layers")) {
    for (std::size_t i = 0; i < layers->size(); ++i) {
      readLayer(context, layers->item(i), SU_INVALID);
    }
  }
  if (const auto folders = root.get("folders")) readFolders(context, *folders, SU_INVALID);
}

void readMaterials(SceneContext& context, const SceneNode& materials) {
  materials.each([&](const std::string& name, const SceneNode& node) {
    SUMaterialRef material = SU_INVALID;
    SUMaterialCreate(&material);
    SUMaterialSetName(material, name.c_str());
    expect(SUModelAddMaterials(context.model, 1, &material), node, "the material cannot be added");
    context.materials[name] = material;
    if (node.isString() || node.isArray()) {
      const SUColor color = node.color();
      SUMaterialSetColor(material, &color);
      return;
    }
    node.allow({"color", "opacity", "use_opacity", "texture", "colorize", "tint", "workflow",
                "metallic", "roughness", "normal", "attributes", "pid"});
    readAppearance(context, node, material);
    readPbr(context, node, material);
    if (const auto attributes = node.get("attributes")) {
      readAttributes(*attributes, SUMaterialToEntity(material));
    }
    readPersistentId(node, "pid", SUMaterialToEntity(material));
  });
}

}  // namespace modelhost
