#include <cstring>

#include "Binding.h"

namespace modelhost_ruby {

namespace {

VALUE newModel(VALUE klass) {
  SUModelRef model = SU_INVALID;
  check(SUModelCreate(&model), "the model cannot be made");
  return wrap(klass, model.ptr, Qnil);
}

// ModelHost.load(path): what had to be left out of the file is the model's `warning`.
VALUE load(VALUE, VALUE pathValue) {
  const char* path = StringValueCStr(pathValue);
  SUModelRef model = SU_INVALID;
  SUStringRef message = SU_INVALID;
  SUStringCreate(&message);
  const SUResult result = modelhost_load(path, &model, &message);
  size_t length = 0;
  SUStringGetUTF8Length(message, &length);
  VALUE holder = 0;
  char* text = ALLOCV_N(char, holder, static_cast<long>(length + 1));
  SUStringGetUTF8(message, length + 1, text, &length);
  SUStringRelease(&message);
  const VALUE words = textTo(text, length);
  ALLOCV_END(holder);
  if (result != SU_ERROR_NONE) rb_raise(rb_eRuntimeError, "%" PRIsVALUE, words);
  const VALUE object = wrap(classes.model, model.ptr, Qnil);
  rb_ivar_set(object, rb_intern("@warning"), length > 0 ? words : Qnil);
  return object;
}

VALUE warning(VALUE self) {
  return rb_ivar_get(self, rb_intern("@warning"));
}

// A model lives until it is closed: scripts hand its number to others, who know nothing of Ruby's
// collector.
VALUE closeModel(VALUE self) {
  SUModelRef model = modelRefOf(self);
  check(SUModelRelease(&model), "the model cannot be closed");
  return Qnil;
}

// The active model's object, which Ruby asks back.
VALUE activeModel = Qnil;

// ModelHost.active = model, or nil
VALUE setActive(VALUE, VALUE model) {
  const SUModelRef ref = NIL_P(model) ? SUModelRef SU_INVALID : modelRefOf(model);
  check(modelhost_set_active_model(ref), "the model cannot be made the active one");
  return activeModel = model;
}

VALUE active(VALUE) {
  SUModelRef ref = SU_INVALID;
  return SUApplicationGetActiveModel(&ref) == SU_ERROR_NONE ? activeModel : Qnil;
}

VALUE handle(VALUE self) {
  return ULL2NUM(reinterpret_cast<std::uintptr_t>(modelRefOf(self).ptr));
}

VALUE path(VALUE self) {
  const SUModelRef model = modelRefOf(self);
  return readText([&](SUStringRef* s) { return SUModelGetPath(model, s); }, "no path");
}

VALUE name(VALUE self) {
  const SUModelRef model = modelRefOf(self);
  return readText([&](SUStringRef* s) { return SUModelGetName(model, s); }, "no name");
}

VALUE setName(VALUE self, VALUE value) {
  check(SUModelSetName(modelRefOf(self), StringValueCStr(value)), "the name cannot be set");
  return value;
}

VALUE title(VALUE self) {
  const SUModelRef model = modelRefOf(self);
  return readText([&](SUStringRef* s) { return SUModelGetTitle(model, s); }, "no title");
}

VALUE entities(VALUE self) {
  SUEntitiesRef ref = SU_INVALID;
  check(SUModelGetEntities(modelRefOf(self), &ref), "no entities");
  return wrap(classes.entities, ref.ptr, self);
}

// Lists of the model: the handle is the model's own.
template <VALUE Classes::*klass>
VALUE listOf(VALUE self) {
  return wrap(classes.*klass, modelRefOf(self).ptr, self);
}

VALUE renderingOptions(VALUE self) {
  SURenderingOptionsRef ref = SU_INVALID;
  check(SUModelGetRenderingOptions(modelRefOf(self), &ref), "no rendering options");
  return wrap(classes.options, ref.ptr, self);
}

VALUE bounds(VALUE self) {
  SUEntitiesRef ref = SU_INVALID;
  SUBoundingBox3D box{};
  check(SUModelGetEntities(modelRefOf(self), &ref), "no entities");
  check(SUEntitiesGetBoundingBox(ref, &box), "no bounds");
  return boundsTo(box);
}

VALUE camera(VALUE self) {
  ModelHostCamera camera{};
  if (modelhost_get_camera(modelRefOf(self), &camera) != SU_ERROR_NONE) return Qnil;
  const VALUE hash = rb_hash_new();
  const auto put = [&](const char* key, VALUE value) {
    rb_hash_aset(hash, ID2SYM(rb_intern(key)), value);
  };
  put("eye", pointTo(camera.eye));
  put("target", pointTo(camera.target));
  put("up", vectorTo(camera.up));
  put("fov", rb_float_new(camera.field_of_view));
  return hash;
}

SUAttributeDictionaryRef dictionaryOf(VALUE self, VALUE dictionaryName) {
  SUAttributeDictionaryRef ref = SU_INVALID;
  check(SUModelGetAttributeDictionary(modelRefOf(self), StringValueCStr(dictionaryName), &ref),
        "no dictionary");
  return ref;
}

VALUE getAttribute(VALUE self, VALUE dictionary, VALUE key) {
  const char* name = StringValueCStr(dictionary);
  return readAttribute(findDictionary(self, name), StringValueCStr(key));
}

VALUE setAttribute(VALUE self, VALUE dictionary, VALUE key, VALUE value) {
  const char* name = StringValueCStr(key);
  writeAttribute(dictionaryOf(self, dictionary), name, value);
  return value;
}

SURenderingOptionsRef optionsOf(VALUE self) {
  return unwrapAs<SURenderingOptionsRef>(self, classes.options);
}

struct OptionTarget {
  SURenderingOptionsRef options;
  const char* key;
};

VALUE getOption(VALUE self, VALUE keyValue) {
  const char* key = StringValueCStr(keyValue);
  const SURenderingOptionsRef options = optionsOf(self);
  SUTypedValueRef value = SU_INVALID;
  SUTypedValueCreate(&value);
  VALUE result = Qnil;
  if (SURenderingOptionsGetValue(options, key, &value) == SU_ERROR_NONE) result = valueTo(value);
  SUTypedValueRelease(&value);
  return result;
}

VALUE setOption(VALUE self, VALUE keyValue, VALUE value) {
  OptionTarget target{optionsOf(self), StringValueCStr(keyValue)};
  // An option that holds a colour takes colours in every form.
  const VALUE current = getOption(self, keyValue);
  if (RB_TYPE_P(current, T_ARRAY)) {
    const VALUE typed = rb_hash_new();
    rb_hash_aset(typed, ID2SYM(rb_intern("color")), value);
    value = typed;
  }
  withTypedValue(
      value,
      [](void* context, SUTypedValueRef typed) {
        const auto* to = static_cast<OptionTarget*>(context);
        SURenderingOptionsSetValue(to->options, to->key, typed);
      },
      &target);
  return value;
}

}  // namespace

void defineModel() {
  singletonMethod<&load>(classes.module, "load");
  rb_gc_register_address(&activeModel);
  singletonMethod<&setActive>(classes.module, "active=");
  singletonMethod<&active>(classes.module, "active");
  singletonMethod<&newModel>(classes.model, "new");
  const VALUE klass = classes.model;
  method<&closeModel>(klass, "close");
  method<&handle>(klass, "handle");
  method<&warning>(klass, "warning");
  method<&path>(klass, "path");
  method<&name>(klass, "name");
  method<&setName>(klass, "name=");
  method<&title>(klass, "title");
  method<&entities>(klass, "entities");
  method<&listOf<&Classes::definitions>>(klass, "definitions");
  method<&listOf<&Classes::materials>>(klass, "materials");
  method<&listOf<&Classes::layers>>(klass, "layers");
  method<&renderingOptions>(klass, "rendering_options");
  method<&bounds>(klass, "bounds");
  method<&camera>(klass, "camera");
  method<&getAttribute>(klass, "get_attribute");
  method<&setAttribute>(klass, "set_attribute");
  method<&getOption>(classes.options, "[]");
  method<&setOption>(classes.options, "[]=");
}

}  // namespace modelhost_ruby
