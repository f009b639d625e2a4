// Edits of several elements at once, and recording. What starts with an underscore serves the
// host's own names, which are made in Ruby.
#include "Binding.h"

namespace modelhost_ruby {

namespace {

SUComponentInstanceRef instanceOf(VALUE self) {
  return unwrapAs<SUComponentInstanceRef>(self, classes.instance);
}

VALUE explode(VALUE self) {
  if (modelhost_explode(instanceOf(self)) != SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "an image, or what is flattened, cannot be taken apart");
  }
  return Qtrue;
}

VALUE move(VALUE self, VALUE to) {
  const SUTransformation t = transformationFrom(to);
  check(modelhost_move(instanceOf(self), &t), "it cannot be moved");
  return self;
}

VALUE makeUnique(VALUE self) {
  check(modelhost_make_unique(instanceOf(self)), "it cannot be made unique");
  return self;
}

// Calls use(count, elements) with the elements of an argument list, or of its one array.
template <class Use>
void withElements(VALUE list, Use use) {
  const VALUE array = rb_convert_type(list, T_ARRAY, "Array", "to_a");
  const long n = RARRAY_LEN(array);
  VALUE holder = 0;
  SUEntityRef* elements = ALLOCV_N(SUEntityRef, holder, n + 1);
  for (long i = 0; i < n; ++i) elements[i] = entityOf(rb_ary_entry(array, i));
  const SUResult result = use(static_cast<size_t>(n), elements);
  ALLOCV_END(holder);
  check(result, "an entity is not among these entities");
}

VALUE group(VALUE self, VALUE list) {
  SUGroupRef ref = SU_INVALID;
  withElements(list, [&](size_t len, const SUEntityRef* elements) {
    return modelhost_group(entitiesOf(self), len, elements, &ref);
  });
  return wrap(classes.group, ref.ptr, modelOf(self));
}

VALUE transform(VALUE self, VALUE by, VALUE list) {
  const SUTransformation t = transformationFrom(by);
  withElements(list, [&](size_t len, const SUEntityRef* elements) {
    return modelhost_transform(entitiesOf(self), len, elements, &t);
  });
  return Qtrue;
}

// The definition that holds these entities; nil for the root of a model.
VALUE owner(VALUE self) {
  SUComponentDefinitionRef ref = SU_INVALID;
  if (modelhost_get_owner(entitiesOf(self), &ref) != SU_ERROR_NONE) return Qnil;
  return wrap(classes.definition, ref.ptr, modelOf(self));
}

VALUE parentEntities(VALUE self) {
  SUEntitiesRef ref = SU_INVALID;
  if (SUEntityGetParentEntities(entityOf(self), &ref) != SU_ERROR_NONE) return Qnil;
  return wrap(classes.entities, ref.ptr, modelOf(self));
}

VALUE isPresent(VALUE self) {
  size_t count = 0;
  return flagTo(SUEntitiesGetNumFaces({handleIn(self)}, &count) == SU_ERROR_NONE);
}

VALUE definitionType(VALUE self) {
  SUComponentType type = SUComponentType_Normal;
  check(SUComponentDefinitionGetType(unwrapAs<SUComponentDefinitionRef>(self, classes.definition),
                                     &type),
        "not known");
  const char* name = type == SUComponentType_Normal  ? "component"
                     : type == SUComponentType_Group ? "group"
                                                     : "image";
  return ID2SYM(rb_intern(name));
}

SUTextureRef textureOf(VALUE self) {
  SUTextureRef texture = SU_INVALID;
  SUMaterialGetTexture(unwrapAs<SUMaterialRef>(self, classes.material), &texture);
  return texture;
}

// [file name, width, height, columns, rows]: the size is that of a tile; nil without a texture.
VALUE texture(VALUE self) {
  const SUTextureRef ref = textureOf(self);
  size_t columns = 0;
  size_t rows = 0;
  double s = 0;
  double t = 0;
  if (SUTextureGetDimensions(ref, &columns, &rows, &s, &t) != SU_ERROR_NONE) return Qnil;
  const VALUE name =
      readText([&](SUStringRef* text) { return SUTextureGetFileName(ref, text); }, "no name");
  return rb_ary_new_from_args(5, name, rb_float_new(1 / s), rb_float_new(1 / t), SIZET2NUM(columns),
                              SIZET2NUM(rows));
}

VALUE setTextureSize(VALUE self, VALUE width, VALUE height) {
  const double w = rb_num2dbl(width);
  const double h = rb_num2dbl(height);
  if (!(w > 0 && h > 0)) rb_raise(rb_eArgError, "the size is above 0");
  check(SUTextureSetDimensions(textureOf(self), 1 / w, 1 / h), "there is no texture");
  return Qnil;
}

// The texts that get(len, strings, count) puts into strings made here.
template <class Get>
VALUE readTexts(size_t count, Get get) {
  VALUE holder = 0;
  SUStringRef* strings = ALLOCV_N(SUStringRef, holder, static_cast<long>(count + 1));
  for (size_t i = 0; i < count; ++i) {
    strings[i] = SUStringRef SU_INVALID;
    SUStringCreate(&strings[i]);
  }
  size_t got = 0;
  if (count > 0) get(count, strings, &got);
  const VALUE list = rb_ary_new();
  for (size_t i = 0; i < count; ++i) {
    size_t length = 0;
    SUStringGetUTF8Length(strings[i], &length);
    const VALUE text = rb_utf8_str_new(nullptr, static_cast<long>(length + 1));
    SUStringGetUTF8(strings[i], length + 1, RSTRING_PTR(text), &length);
    rb_str_set_len(text, static_cast<long>(length));
    SUStringRelease(&strings[i]);
    rb_ary_push(list, text);
  }
  ALLOCV_END(holder);
  return list;
}

VALUE optionKeys(VALUE self) {
  const auto options = unwrapAs<SURenderingOptionsRef>(self, classes.options);
  size_t count = 0;
  SURenderingOptionsGetNumKeys(options, &count);
  return readTexts(count, [&](size_t len, SUStringRef* out, size_t* got) {
    return SURenderingOptionsGetKeys(options, len, out, got);
  });
}

VALUE removeFolder(VALUE self, VALUE folder) {
  modelRefOf(modelOf(self));
  check(modelhost_remove({unwrap(folder, classes.folder)}), "it cannot be removed");
  return Qtrue;
}

VALUE allDefinitions(VALUE self) {
  const SUModelRef model = modelRefOf(self);
  size_t count = 0;
  check(modelhost_get_num_definitions(model, &count), "no definitions");
  return readList<SUComponentDefinitionRef>(
      count,
      [&](size_t len, SUComponentDefinitionRef* out, size_t* got) {
        return modelhost_get_definitions(model, len, out, got);
      },
      self);
}

VALUE countDefinitions(VALUE self) {
  size_t count = 0;
  check(modelhost_get_num_definitions(modelRefOf(self), &count), "no definitions");
  return SIZET2NUM(count);
}

VALUE findPersistentId(VALUE self, VALUE id) {
  SUEntityRef entity = SU_INVALID;
  modelhost_find_persistent_id(modelRefOf(self), NUM2LL(id), &entity);
  return wrapEntity(entity, self);
}

VALUE findId(VALUE self, VALUE id) {
  SUEntityRef entity = SU_INVALID;
  modelhost_find_id(modelRefOf(self), NUM2INT(id), &entity);
  return wrapEntity(entity, self);
}

VALUE setPath(VALUE self, VALUE path) {
  check(modelhost_set_path(modelRefOf(self), StringValueCStr(path)), "no path can be set");
  return path;
}

VALUE setCamera(VALUE self, VALUE eye, VALUE target, VALUE up, VALUE fov) {
  const SUPoint3D direction = pointFrom(up);
  const ModelHostCamera camera{pointFrom(eye), pointFrom(target),
                               SUVector3D{direction.x, direction.y, direction.z}, rb_num2dbl(fov)};
  check(modelhost_set_camera(modelRefOf(self), &camera), "no camera can be set");
  return Qnil;
}

VALUE record(VALUE self) {
  check(modelhost_record(modelRefOf(self)), "the model cannot be recorded");
  return self;
}

VALUE pauseRecording(VALUE self, VALUE pause) {
  check(modelhost_pause_recording(modelRefOf(self), RTEST(pause)), "the model is not recorded");
  return pause;
}

VALUE commit(VALUE self, VALUE join) {
  bool changed = false;
  check(modelhost_commit(modelRefOf(self), RTEST(join), &changed), "the model is not recorded");
  return flagTo(changed);
}

VALUE abortOperation(VALUE self) {
  check(modelhost_abort(modelRefOf(self)), "the model is not recorded");
  return Qnil;
}

VALUE undo(VALUE self) {
  return flagTo(modelhost_undo(modelRefOf(self)) == SU_ERROR_NONE);
}

VALUE redo(VALUE self) {
  return flagTo(modelhost_redo(modelRefOf(self)) == SU_ERROR_NONE);
}

VALUE kindName(SURefType type) {
  const auto name = [](const char* text) { return ID2SYM(rb_intern(text)); };
  switch (type) {
    case SURefType_ComponentDefinition:
      return name("definition");
    case SURefType_Material:
      return name("material");
    case SURefType_Layer:
      return name("layer");
    case SURefType_LayerFolder:
      return name("folder");
    case SURefType_AttributeDictionary:
      return name("dictionary");
    default:
      return name("element");
  }
}

// [event, kind, entity, id, entities] for each change; nil when nothing has happened.
VALUE takeChanges(VALUE self) {
  const SUModelRef model = modelRefOf(self);
  size_t count = 0;
  check(modelhost_get_num_changes(model, &count), "the model is not recorded");
  if (count == 0) return Qnil;
  VALUE holder = 0;
  ModelHostChange* changes = ALLOCV_N(ModelHostChange, holder, static_cast<long>(count));
  modelhost_take_changes(model, count, changes, &count);
  const VALUE list = rb_ary_new();
  for (size_t i = 0; i < count; ++i) {
    const ModelHostChange& change = changes[i];
    const char* event = change.event == ModelHostEvent_Added     ? "added"
                        : change.event == ModelHostEvent_Changed ? "changed"
                                                                 : "removed";
    const VALUE entity = wrap(classOf(change.type), change.entity.ptr, self);
    const VALUE among =
        SUIsInvalid(change.among) ? Qnil : wrap(classes.entities, change.among.ptr, self);
    rb_ary_push(list, rb_ary_new_from_args(5, ID2SYM(rb_intern(event)), kindName(change.type),
                                           entity, INT2NUM(change.id), among));
  }
  ALLOCV_END(holder);
  return list;
}

VALUE attributeKeys(VALUE self, VALUE name) {
  const SUAttributeDictionaryRef dictionary = findDictionary(self, StringValueCStr(name));
  size_t count = 0;
  SUAttributeDictionaryGetNumKeys(dictionary, &count);
  return readTexts(count, [&](size_t len, SUStringRef* out, size_t* got) {
    return SUAttributeDictionaryGetKeys(dictionary, len, out, got);
  });
}

VALUE deleteModelAttribute(VALUE self, VALUE name, VALUE key) {
  const SUAttributeDictionaryRef dictionary = findDictionary(self, StringValueCStr(name));
  return flagTo(modelhost_delete_attribute(dictionary, StringValueCStr(key)) == SU_ERROR_NONE);
}

SULayerFolderRef folderOf(VALUE self) {
  return unwrapAs<SULayerFolderRef>(self, classes.folder);
}

// Into another folder, or with nil to the top.
VALUE putInto(VALUE self, VALUE other) {
  const SUResult result = NIL_P(other)
                              ? modelhost_folder_to_top(folderOf(self))
                              : SULayerFolderAddLayerFolder(folderOf(other), folderOf(self));
  if (result != SU_ERROR_NONE) rb_raise(rb_eArgError, "the folder would lie inside itself");
  return other;
}

VALUE renameFolder(VALUE self, VALUE name) {
  check(SULayerFolderSetName(folderOf(self), StringValueCStr(name)), "it cannot be named");
  return name;
}

VALUE folderParent(VALUE self) {
  SULayerFolderRef ref = SU_INVALID;
  if (SULayerFolderGetParentLayerFolder(folderOf(self), &ref) != SU_ERROR_NONE) return Qnil;
  return wrapEntity({ref.ptr}, modelOf(self));
}

VALUE layersIn(VALUE self) {
  const SULayerFolderRef folder = folderOf(self);
  size_t count = 0;
  SULayerFolderGetNumLayers(folder, &count);
  return readList<SULayerRef>(
      count,
      [&](size_t len, SULayerRef* out, size_t* got) {
        return SULayerFolderGetLayers(folder, len, out, got);
      },
      modelOf(self));
}

VALUE foldersIn(VALUE self) {
  const SULayerFolderRef folder = folderOf(self);
  size_t count = 0;
  SULayerFolderGetNumLayerFolders(folder, &count);
  return readList<SULayerFolderRef>(
      count,
      [&](size_t len, SULayerFolderRef* out, size_t* got) {
        return SULayerFolderGetLayerFolders(folder, len, out, got);
      },
      modelOf(self));
}

// The number that stands for something, also once it is gone.
VALUE handleNumber(VALUE self) {
  return ULL2NUM(reinterpret_cast<std::uintptr_t>(handleIn(self)));
}

VALUE modelObject(VALUE self) {
  return modelOf(self);
}

}  // namespace

void defineEdits() {
  method<&explode>(classes.instance, "_explode");
  method<&makeUnique>(classes.instance, "make_unique");
  const VALUE entities = classes.entities;
  method<&move>(classes.instance, "_move");
  method<&parentEntities>(classes.entity, "_among");
  method<&definitionType>(classes.definition, "_type");
  method<&texture>(classes.material, "_texture");
  method<&setTextureSize>(classes.material, "_set_texture_size");
  method<&optionKeys>(classes.options, "keys");
  method<&owner>(entities, "_owner");
  method<&isPresent>(entities, "valid?");
  method<&group>(entities, "_group");
  method<&transform>(entities, "_transform");
  method<&handleNumber>(entities, "_handle");
  method<&handleNumber>(classes.entity, "_handle");
  for (const VALUE klass : {entities, classes.entity, classes.definitions, classes.materials,
                            classes.layers, classes.options, classes.behavior}) {
    method<&modelObject>(klass, "_model");
  }
  method<&dictionaryNames>(classes.entity, "_dictionary_names");
  method<&attributeKeys>(classes.entity, "_attribute_keys");
  method<&dictionaryNames>(classes.model, "_dictionary_names");
  method<&attributeKeys>(classes.model, "_attribute_keys");
  method<&deleteModelAttribute>(classes.model, "delete_attribute");
  method<&folderParent>(classes.folder, "folder");
  method<&layersIn>(classes.folder, "layers");
  method<&foldersIn>(classes.folder, "folders");
  method<&putInto>(classes.folder, "_put_into");
  method<&renameFolder>(classes.folder, "_rename");
  method<&removeFolder>(classes.layers, "remove_folder");
  const VALUE model = classes.model;
  method<&allDefinitions>(model, "_definitions");
  method<&countDefinitions>(model, "_count_definitions");
  method<&findPersistentId>(model, "_find_persistent_id");
  method<&findId>(model, "_find_id");
  method<&setPath>(model, "_path=");
  method<&setCamera>(model, "_set_camera");
  method<&record>(model, "_record");
  method<&pauseRecording>(model, "_pause_recording");
  method<&commit>(model, "_commit");
  method<&abortOperation>(model, "_abort");
  method<&undo>(model, "_undo");
  method<&redo>(model, "_redo");
  method<&takeChanges>(model, "_take_changes");
}

}  // namespace modelhost_ruby
