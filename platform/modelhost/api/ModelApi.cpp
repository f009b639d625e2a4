#include <SketchUpAPI/model/model.h>

#include "core/Args.h"
#include "model/Model.h"

using namespace modelhost;

SUResult SUModelCreate(SUModelRef* out_model) {
  MODELHOST_CALL(SUModelCreate);
  return create(out_model);
}

SUResult SUModelRelease(SUModelRef* model) {
  MODELHOST_CALL(SUModelRelease);
  return release(model);
}

SUResult SUModelGetEntities(SUModelRef model, SUEntitiesRef* entities) {
  MODELHOST_CALL(SUModelGetEntities);
  return giveRef(model, entities, [](Model& m) { return &m.root(); });
}

SUResult SUModelGetName(SUModelRef model, SUStringRef* name) {
  MODELHOST_CALL(SUModelGetName);
  return giveText(model, name, [](const Model& m) -> std::string_view { return m.name; });
}

SUResult SUModelSetName(SUModelRef model, const char* name) {
  MODELHOST_CALL(SUModelSetName);
  return changeFrom(model, name, [&](Model& m, char) { m.name = name; });
}

SUResult SUModelGetPath(SUModelRef model, SUStringRef* path) {
  MODELHOST_CALL(SUModelGetPath);
  return giveText(model, path, [](const Model& m) -> std::string_view { return m.path; });
}

SUResult SUModelGetTitle(SUModelRef model, SUStringRef* title) {
  MODELHOST_CALL(SUModelGetTitle);
  return giveText(model, title, [](const Model& m) -> std::string_view { return m.title; });
}

SUResult SUModelGetNumLayers(SUModelRef model, size_t* count) {
  MODELHOST_CALL(SUModelGetNumLayers);
  return give(model, count, [](const Model& m) { return m.layers().size(); });
}

SUResult SUModelGetLayers(SUModelRef model, size_t len, SULayerRef layers[], size_t* count) {
  MODELHOST_CALL(SUModelGetLayers);
  return giveList(
      model, len, layers, count, [](const Model& m) -> const auto& { return m.layers(); });
}

SUResult SUModelGetDefaultLayer(SUModelRef model, SULayerRef* layer) {
  MODELHOST_CALL(SUModelGetDefaultLayer);
  return giveRef(model, layer, [](Model& m) { return &m.defaultLayer(); });
}

SUResult SUModelAddLayers(SUModelRef model, size_t len, const SULayerRef layers[]) {
  MODELHOST_CALL(SUModelAddLayers);
  Model* m = find(model);
  if (m == nullptr) return SU_ERROR_INVALID_INPUT;
  if (layers == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  for (size_t i = 0; i < len; ++i) {
    Layer* layer = find(layers[i]);
    if (layer == nullptr || layer->model() != nullptr) return SU_ERROR_INVALID_INPUT;
    if (m->findLayer(layer->name) != nullptr) return SU_ERROR_DUPLICATE;
    m->add(std::unique_ptr<Layer>(layer));
  }
  return SU_ERROR_NONE;
}

SUResult SUModelGetNumLayerFolders(SUModelRef model, size_t* count) {
  MODELHOST_CALL(SUModelGetNumLayerFolders);
  return give(model, count, [](const Model& m) { return m.folders().size(); });
}

SUResult SUModelGetLayerFolders(SUModelRef model, size_t len, SULayerFolderRef folders[],
                                size_t* count) {
  MODELHOST_CALL(SUModelGetLayerFolders);
  return giveList(
      model, len, folders, count, [](const Model& m) -> const auto& { return m.folders(); });
}

SUResult SUModelAddLayerFolder(SUModelRef model, SULayerFolderRef folder) {
  MODELHOST_CALL(SUModelAddLayerFolder);
  LayerFolder* f = find(folder);
  if (f == nullptr || f->model() != nullptr) return SU_ERROR_INVALID_INPUT;
  return change(model, [&](Model& m) { m.add(std::unique_ptr<LayerFolder>(f)); });
}

SUResult SUModelGetNumMaterials(SUModelRef model, size_t* count) {
  MODELHOST_CALL(SUModelGetNumMaterials);
  return give(model, count, [](const Model& m) { return m.materials().size(); });
}

SUResult SUModelGetMaterials(SUModelRef model, size_t len, SUMaterialRef materials[],
                             size_t* count) {
  MODELHOST_CALL(SUModelGetMaterials);
  return giveList(
      model, len, materials, count, [](const Model& m) -> const auto& { return m.materials(); });
}

SUResult SUModelAddMaterials(SUModelRef model, size_t len, const SUMaterialRef materials[]) {
  MODELHOST_CALL(SUModelAddMaterials);
  Model* m = find(model);
  if (m == nullptr) return SU_ERROR_INVALID_INPUT;
  if (materials == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  for (size_t i = 0; i < len; ++i) {
    Material* material = find(materials[i]);
    if (material == nullptr || material->listed) return SU_ERROR_INVALID_INPUT;
    if (m->findMaterial(material->name) != nullptr) return SU_ERROR_DUPLICATE;
    m->add(std::unique_ptr<Material>(material));
  }
  return SU_ERROR_NONE;
}

SUResult SUModelGetNumComponentDefinitions(SUModelRef model, size_t* count) {
  MODELHOST_CALL(SUModelGetNumComponentDefinitions);
  return give(model, count, [](const Model& m) { return m.definitions().size(); });
}

SUResult SUModelGetComponentDefinitions(SUModelRef model, size_t len,
                                        SUComponentDefinitionRef definitions[], size_t* count) {
  MODELHOST_CALL(SUModelGetComponentDefinitions);
  return giveList(
      model, len, definitions, count,
      [](const Model& m) -> const auto& { return m.definitions(); });
}

SUResult SUModelAddComponentDefinitions(SUModelRef model, size_t len,
                                        const SUComponentDefinitionRef definitions[]) {
  MODELHOST_CALL(SUModelAddComponentDefinitions);
  Model* m = find(model);
  if (m == nullptr) return SU_ERROR_INVALID_INPUT;
  if (definitions == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  for (size_t i = 0; i < len; ++i) {
    Definition* definition = find(definitions[i]);
    if (definition == nullptr || definition->model() != nullptr ||
        definition->type != SUComponentType_Normal) {
      return SU_ERROR_INVALID_INPUT;
    }
    m->add(std::unique_ptr<Definition>(definition));
  }
  return SU_ERROR_NONE;
}

SUResult SUModelGetRenderingOptions(SUModelRef model, SURenderingOptionsRef* options) {
  MODELHOST_CALL(SUModelGetRenderingOptions);
  return giveRef(model, options, [](Model& m) { return &m.options; });
}

SUResult SUModelGetAttributeDictionary(SUModelRef model, const char* name,
                                       SUAttributeDictionaryRef* dictionary) {
  MODELHOST_CALL(SUModelGetAttributeDictionary);
  if (name == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return giveRef(model, dictionary, [&](Model& m) {
    for (const auto& d : m.dictionaries) {
      if (d->name == name) return d.get();
    }
    m.dictionaries.push_back(std::make_unique<Dictionary>(name));
    m.adopt(*m.dictionaries.back());
    return m.dictionaries.back().get();
  });
}
