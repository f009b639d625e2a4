#include <SketchUpAPI/model/layer.h>
#include <SketchUpAPI/model/layer_folder.h>

#include "core/Args.h"
#include "model/Model.h"

using namespace modelhost;

SUEntityRef SULayerToEntity(SULayerRef layer) {
  MODELHOST_CALL_INFALLIBLE(SULayerToEntity);
  return convert<SUEntityRef>(layer);
}

SULayerRef SULayerFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SULayerFromEntity);
  return convert<SULayerRef>(entity);
}

SUResult SULayerCreate(SULayerRef* out_layer) {
  MODELHOST_CALL(SULayerCreate);
  return create(out_layer);
}

SUResult SULayerRelease(SULayerRef* layer) {
  MODELHOST_CALL(SULayerRelease);
  return releaseIf(layer, [](const Layer& l) { return l.model() == nullptr && !l.folder; });
}

SUResult SULayerGetName(SULayerRef layer, SUStringRef* name) {
  MODELHOST_CALL(SULayerGetName);
  return giveText(layer, name, [](const Layer& l) -> std::string_view { return l.name; });
}

SUResult SULayerSetName(SULayerRef layer, const char* name) {
  MODELHOST_CALL(SULayerSetName);
  Layer* l = find(layer);
  if (l == nullptr) return SU_ERROR_INVALID_INPUT;
  if (name == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (l->model() != nullptr) {
    return l->model()->rename(*l, name) ? SU_ERROR_NONE : SU_ERROR_DUPLICATE;
  }
  l->name = name;
  return SU_ERROR_NONE;
}

SUResult SULayerGetVisibility(SULayerRef layer, bool* visible) {
  MODELHOST_CALL(SULayerGetVisibility);
  return give(layer, visible, [](const Layer& l) { return l.visible; });
}

SUResult SULayerSetVisibility(SULayerRef layer, bool visible) {
  MODELHOST_CALL(SULayerSetVisibility);
  return change(layer, [&](Layer& l) { l.visible = visible; });
}

SUResult SULayerGetMaterial(SULayerRef layer, SUMaterialRef* material) {
  MODELHOST_CALL(SULayerGetMaterial);
  return giveRef(layer, material, [](const Layer& l) { return l.material.get(); });
}

SUResult SULayerGetParentLayerFolder(SULayerRef layer, SULayerFolderRef* folder) {
  MODELHOST_CALL(SULayerGetParentLayerFolder);
  return giveRef(layer, folder, [](const Layer& l) { return l.folder; });
}

SUEntityRef SULayerFolderToEntity(SULayerFolderRef folder) {
  MODELHOST_CALL_INFALLIBLE(SULayerFolderToEntity);
  return convert<SUEntityRef>(folder);
}

SULayerFolderRef SULayerFolderFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SULayerFolderFromEntity);
  return convert<SULayerFolderRef>(entity);
}

SUResult SULayerFolderCreate(SULayerFolderRef* out_folder) {
  MODELHOST_CALL(SULayerFolderCreate);
  return create(out_folder);
}

SUResult SULayerFolderRelease(SULayerFolderRef* folder) {
  MODELHOST_CALL(SULayerFolderRelease);
  return releaseIf(folder, [](const LayerFolder& f) {
    return f.model() == nullptr && !f.parent && f.layers.empty() && f.folders.empty();
  });
}

SUResult SULayerFolderGetName(SULayerFolderRef folder, SUStringRef* name) {
  MODELHOST_CALL(SULayerFolderGetName);
  return giveText(folder, name, [](const LayerFolder& f) -> std::string_view { return f.name; });
}

SUResult SULayerFolderSetName(SULayerFolderRef folder, const char* name) {
  MODELHOST_CALL(SULayerFolderSetName);
  return changeFrom(folder, name, [&](LayerFolder& f, char) { f.name = name; });
}

SUResult SULayerFolderGetVisibility(SULayerFolderRef folder, bool* visible) {
  MODELHOST_CALL(SULayerFolderGetVisibility);
  return give(folder, visible, [](const LayerFolder& f) { return f.visible; });
}

SUResult SULayerFolderSetVisibility(SULayerFolderRef folder, bool visible) {
  MODELHOST_CALL(SULayerFolderSetVisibility);
  return change(folder, [&](LayerFolder& f) { f.visible = visible; });
}

SUResult SULayerFolderGetParentLayerFolder(SULayerFolderRef folder, SULayerFolderRef* parent) {
  MODELHOST_CALL(SULayerFolderGetParentLayerFolder);
  return giveRef(folder, parent, [](const LayerFolder& f) { return f.parent; });
}

// Folders and what is sorted into them are of one model, so that they go together.
SUResult SULayerFolderAddLayer(SULayerFolderRef folder, SULayerRef layer) {
  MODELHOST_CALL(SULayerFolderAddLayer);
  LayerFolder* f = find(folder);
  Layer* l = find(layer);
  if (f == nullptr || l == nullptr || f->model() != l->model() || !f->model()) {
    return SU_ERROR_INVALID_INPUT;
  }
  willChange(*l);
  if (l->folder != nullptr) {
    willChange(*l->folder);
    std::erase(l->folder->layers, l);
  }
  willChange(*f);
  l->folder = f;
  f->layers.push_back(l);
  return SU_ERROR_NONE;
}

SUResult SULayerFolderRemoveLayer(SULayerFolderRef folder, SULayerRef layer) {
  MODELHOST_CALL(SULayerFolderRemoveLayer);
  LayerFolder* f = find(folder);
  Layer* l = find(layer);
  if (f == nullptr || l == nullptr || l->folder != f) return SU_ERROR_INVALID_INPUT;
  willChange(*l);
  willChange(*f);
  std::erase(f->layers, l);
  l->folder = nullptr;
  return SU_ERROR_NONE;
}

SUResult SULayerFolderAddLayerFolder(SULayerFolderRef folder, SULayerFolderRef child) {
  MODELHOST_CALL(SULayerFolderAddLayerFolder);
  LayerFolder* f = find(folder);
  LayerFolder* c = find(child);
  if (f == nullptr || c == nullptr || f->model() != c->model() || !f->model()) {
    return SU_ERROR_INVALID_INPUT;
  }
  if (f->isWithin(*c)) return SU_ERROR_INVALID_ARGUMENT;
  willChange(*c);
  willChange(*f);
  if (c->parent != nullptr) {
    willChange(*c->parent);
    std::erase(c->parent->folders, c);
  }
  c->parent = f;
  f->folders.push_back(c);
  return SU_ERROR_NONE;
}

SUResult SULayerFolderGetNumLayers(SULayerFolderRef folder, size_t* count) {
  MODELHOST_CALL(SULayerFolderGetNumLayers);
  return give(folder, count, [](const LayerFolder& f) { return f.layers.size(); });
}

SUResult SULayerFolderGetLayers(SULayerFolderRef folder, size_t len, SULayerRef layers[],
                                size_t* count) {
  MODELHOST_CALL(SULayerFolderGetLayers);
  return giveList(
      folder, len, layers, count, [](const LayerFolder& f) -> const auto& { return f.layers; });
}

SUResult SULayerFolderGetNumLayerFolders(SULayerFolderRef folder, size_t* count) {
  MODELHOST_CALL(SULayerFolderGetNumLayerFolders);
  return give(folder, count, [](const LayerFolder& f) { return f.folders.size(); });
}

SUResult SULayerFolderGetLayerFolders(SULayerFolderRef folder, size_t len,
                                      SULayerFolderRef folders[], size_t* count) {
  MODELHOST_CALL(SULayerFolderGetLayerFolders);
  return giveList(
      folder, len, folders, count, [](const LayerFolder& f) -> const auto& { return f.folders; });
}
