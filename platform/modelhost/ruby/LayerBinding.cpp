#include "Binding.h"

namespace modelhost_ruby {

namespace {

SULayerRef layerOf(VALUE self) {
  return unwrapAs<SULayerRef>(self, classes.layer);
}
SULayerFolderRef folderOf(VALUE self) {
  return unwrapAs<SULayerFolderRef>(self, classes.folder);
}
SUModelRef listModel(VALUE self) {
  return modelRefOf(modelOf(self));
}

VALUE layerName(VALUE self) {
  const SULayerRef layer = layerOf(self);
  return readText([&](SUStringRef* s) { return SULayerGetName(layer, s); }, "no name");
}

VALUE setLayerName(VALUE self, VALUE value) {
  const char* text = StringValueCStr(value);
  if (SULayerSetName(layerOf(self), text) != SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "another layer is named %s", text);
  }
  return value;
}

VALUE layerVisible(VALUE self) {
  bool visible = true;
  check(SULayerGetVisibility(layerOf(self), &visible), "not known");
  return flagTo(visible);
}

VALUE setLayerVisible(VALUE self, VALUE value) {
  check(SULayerSetVisibility(layerOf(self), flagFrom(value)), "not possible");
  return value;
}

VALUE layerFolder(VALUE self) {
  SULayerFolderRef ref = SU_INVALID;
  if (SULayerGetParentLayerFolder(layerOf(self), &ref) != SU_ERROR_NONE) return Qnil;
  return wrap(classes.folder, ref.ptr, modelOf(self));
}

VALUE setLayerFolder(VALUE self, VALUE value) {
  const SULayerRef layer = layerOf(self);
  if (!NIL_P(value)) {
    check(SULayerFolderAddLayer(folderOf(value), layer), "it cannot be put there");
    return value;
  }
  SULayerFolderRef ref = SU_INVALID;
  if (SULayerGetParentLayerFolder(layer, &ref) == SU_ERROR_NONE) {
    SULayerFolderRemoveLayer(ref, layer);
  }
  return value;
}

VALUE folderName(VALUE self) {
  const SULayerFolderRef folder = folderOf(self);
  return readText([&](SUStringRef* s) { return SULayerFolderGetName(folder, s); }, "no name");
}

VALUE folderVisible(VALUE self) {
  bool visible = true;
  check(SULayerFolderGetVisibility(folderOf(self), &visible), "not known");
  return flagTo(visible);
}

VALUE setFolderVisible(VALUE self, VALUE value) {
  check(SULayerFolderSetVisibility(folderOf(self), flagFrom(value)), "not possible");
  return value;
}

VALUE addLayerToFolder(VALUE self, VALUE layer) {
  check(SULayerFolderAddLayer(folderOf(self), layerOf(layer)), "it cannot be put there");
  return self;
}

SULayerFolderRef makeFolder(SUModelRef model, VALUE name) {
  const char* text = StringValueCStr(name);
  SULayerFolderRef ref = SU_INVALID;
  check(SULayerFolderCreate(&ref), "no folder can be made");
  SULayerFolderSetName(ref, text);
  check(SUModelAddLayerFolder(model, ref), "the folder cannot be added");
  return ref;
}

VALUE addFolderToFolder(VALUE self, VALUE name) {
  const SULayerFolderRef parent = folderOf(self);
  const SULayerFolderRef ref = makeFolder(listModel(self), name);
  check(SULayerFolderAddLayerFolder(parent, ref), "the folder cannot be put there");
  return wrap(classes.folder, ref.ptr, modelOf(self));
}

VALUE addFolder(VALUE self, VALUE name) {
  return wrap(classes.folder, makeFolder(listModel(self), name).ptr, modelOf(self));
}

VALUE allFolders(VALUE self) {
  const SUModelRef model = listModel(self);
  size_t count = 0;
  check(SUModelGetNumLayerFolders(model, &count), "no folders");
  return readList<SULayerFolderRef>(
      count,
      [&](size_t len, SULayerFolderRef* out, size_t* got) {
        return SUModelGetLayerFolders(model, len, out, got);
      },
      modelOf(self));
}

VALUE allLayers(VALUE self) {
  const SUModelRef model = listModel(self);
  size_t count = 0;
  check(SUModelGetNumLayers(model, &count), "no layers");
  return readList<SULayerRef>(
      count,
      [&](size_t len, SULayerRef* out, size_t* got) {
        return SUModelGetLayers(model, len, out, got);
      },
      modelOf(self));
}

// add(name): the layer that has the name, if there is one.
VALUE addLayer(VALUE self, VALUE name) {
  const SUModelRef model = listModel(self);
  const char* text = StringValueCStr(name);
  const VALUE known = rb_funcall(self, rb_intern("[]"), 1, name);
  if (!NIL_P(known)) return known;
  SULayerRef ref = SU_INVALID;
  check(SULayerCreate(&ref), "no layer can be made");
  SULayerSetName(ref, text);
  check(SUModelAddLayers(model, 1, &ref), "the layer cannot be added");
  return wrap(classes.layer, ref.ptr, modelOf(self));
}

VALUE removeLayer(VALUE self, VALUE layer) {
  listModel(self);
  if (modelhost_remove({layerOf(layer).ptr}) != SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "the first layer cannot be removed");
  }
  return Qnil;
}

}  // namespace

void defineLayers() {
  const VALUE layer = classes.layer;
  method<&layerName>(layer, "name");
  method<&setLayerName>(layer, "name=");
  method<&layerVisible>(layer, "visible?");
  method<&setLayerVisible>(layer, "visible=");
  method<&layerFolder>(layer, "folder");
  method<&setLayerFolder>(layer, "folder=");
  const VALUE folder = classes.folder;
  method<&folderName>(folder, "name");
  method<&folderVisible>(folder, "visible?");
  method<&setFolderVisible>(folder, "visible=");
  method<&addLayerToFolder>(folder, "add_layer");
  method<&addFolderToFolder>(folder, "add_folder");
  defineList(classes.layers);
  method<&allLayers>(classes.layers, "to_a");
  method<&addLayer>(classes.layers, "add");
  method<&removeLayer>(classes.layers, "remove");
  method<&addFolder>(classes.layers, "add_folder");
  method<&allFolders>(classes.layers, "folders");
}

}  // namespace modelhost_ruby
