// Instances, groups, images, definitions and the list of definitions.
#include <cstring>

#include "Binding.h"

namespace modelhost_ruby {

namespace {

SUComponentInstanceRef instanceOf(VALUE self) {
  return unwrapAs<SUComponentInstanceRef>(self, classes.instance);
}
SUComponentDefinitionRef definitionOf(VALUE self) {
  return unwrapAs<SUComponentDefinitionRef>(self, classes.definition);
}

VALUE instanceName(VALUE self) {
  const auto instance = instanceOf(self);
  return readText([&](SUStringRef* s) { return SUComponentInstanceGetName(instance, s); },
                  "no name");
}

VALUE setInstanceName(VALUE self, VALUE value) {
  const char* text = StringValueCStr(value);
  check(SUComponentInstanceSetName(instanceOf(self), text), "it cannot be named");
  return value;
}

VALUE instanceDefinition(VALUE self) {
  SUComponentDefinitionRef ref = SU_INVALID;
  check(SUComponentInstanceGetDefinition(instanceOf(self), &ref), "no definition");
  return wrap(classes.definition, ref.ptr, modelOf(self));
}

VALUE transformation(VALUE self) {
  SUTransformation t{};
  check(SUComponentInstanceGetTransform(instanceOf(self), &t), "no transformation");
  return transformationTo(t);
}

VALUE setTransformation(VALUE self, VALUE value) {
  const SUTransformation t = transformationFrom(value);
  check(SUComponentInstanceSetTransform(instanceOf(self), &t), "it cannot be moved");
  return value;
}

// transform!(t): moves it as it stands, t after its own transformation.
VALUE transform(VALUE self, VALUE value) {
  const VALUE by = transformationTo(transformationFrom(value));
  setTransformation(self, rb_funcall(by, rb_intern("*"), 1, transformation(self)));
  return self;
}

VALUE groupEntities(VALUE self) {
  SUEntitiesRef ref = SU_INVALID;
  check(SUGroupGetEntities(unwrapAs<SUGroupRef>(self, classes.group), &ref), "no entities");
  return wrap(classes.entities, ref.ptr, modelOf(self));
}

VALUE imageSize(VALUE self) {
  double width = 0;
  double height = 0;
  check(SUImageGetDimensions(unwrapAs<SUImageRef>(self, classes.image), &width, &height),
        "no size");
  return rb_ary_new_from_args(2, rb_float_new(width), rb_float_new(height));
}

VALUE imagePath(VALUE self) {
  const auto image = unwrapAs<SUImageRef>(self, classes.image);
  return readText([&](SUStringRef* s) { return SUImageGetFileName(image, s); }, "no name");
}

VALUE definitionName(VALUE self) {
  const auto definition = definitionOf(self);
  return readText([&](SUStringRef* s) { return SUComponentDefinitionGetName(definition, s); },
                  "no name");
}

VALUE setDefinitionName(VALUE self, VALUE value) {
  const char* text = StringValueCStr(value);
  check(SUComponentDefinitionSetName(definitionOf(self), text), "it cannot be named");
  return value;
}

VALUE definitionEntities(VALUE self) {
  SUEntitiesRef ref = SU_INVALID;
  check(SUComponentDefinitionGetEntities(definitionOf(self), &ref), "no entities");
  return wrap(classes.entities, ref.ptr, modelOf(self));
}

VALUE definitionInstances(VALUE self) {
  const auto definition = definitionOf(self);
  size_t count = 0;
  check(SUComponentDefinitionGetNumInstances(definition, &count), "no instances");
  return readList<SUComponentInstanceRef>(
      count,
      [&](size_t len, SUComponentInstanceRef* out, size_t* got) {
        return SUComponentDefinitionGetInstances(definition, len, out, got);
      },
      modelOf(self));
}

VALUE isManifold(VALUE self) {
  bool manifold = false;
  check(SUComponentDefinitionIsManifold(definitionOf(self), &manifold), "not known");
  return flagTo(manifold);
}

VALUE behavior(VALUE self) {
  return wrap(classes.behavior, definitionOf(self).ptr, modelOf(self));
}

SUComponentDefinitionRef behaviorOwner(VALUE self) {
  return unwrapAs<SUComponentDefinitionRef>(self, classes.behavior);
}

template <bool SUComponentBehavior::*flag>
VALUE behaviorFlag(VALUE self) {
  SUComponentBehavior value{};
  check(SUComponentDefinitionGetBehavior(behaviorOwner(self), &value), "not known");
  return flagTo(value.*flag);
}

template <bool SUComponentBehavior::*flag>
VALUE setBehaviorFlag(VALUE self, VALUE to) {
  SUComponentBehavior value{};
  check(SUComponentDefinitionGetBehavior(behaviorOwner(self), &value), "not known");
  value.*flag = flagFrom(to);
  check(SUComponentDefinitionSetBehavior(behaviorOwner(self), &value), "not possible");
  return to;
}

SUModelRef listModel(VALUE self) {
  return modelRefOf(modelOf(self));
}

VALUE addDefinition(VALUE self, VALUE name) {
  const char* text = StringValueCStr(name);
  const SUModelRef model = listModel(self);
  SUComponentDefinitionRef ref = SU_INVALID;
  check(SUComponentDefinitionCreate(&ref), "no definition can be made");
  SUComponentDefinitionSetName(ref, text);
  check(SUModelAddComponentDefinitions(model, 1, &ref), "it cannot be added");
  return wrap(classes.definition, ref.ptr, modelOf(self));
}

VALUE allDefinitions(VALUE self) {
  const SUModelRef model = listModel(self);
  size_t count = 0;
  check(SUModelGetNumComponentDefinitions(model, &count), "no definitions");
  return readList<SUComponentDefinitionRef>(
      count,
      [&](size_t len, SUComponentDefinitionRef* out, size_t* got) {
        return SUModelGetComponentDefinitions(model, len, out, got);
      },
      modelOf(self));
}

VALUE removeDefinition(VALUE self, VALUE definition) {
  listModel(self);
  check(modelhost_remove({definitionOf(definition).ptr}), "it cannot be removed");
  return Qnil;
}

}  // namespace

void defineComponents() {
  const VALUE instance = classes.instance;
  method<&instanceName>(instance, "name");
  method<&setInstanceName>(instance, "name=");
  method<&instanceDefinition>(instance, "definition");
  method<&transformation>(instance, "transformation");
  method<&setTransformation>(instance, "transformation=");
  method<&transform>(instance, "transform!");
  method<&groupEntities>(classes.group, "entities");
  method<&imageSize>(classes.image, "dimensions");
  method<&imagePath>(classes.image, "path");
  const VALUE definition = classes.definition;
  method<&definitionName>(definition, "name");
  method<&setDefinitionName>(definition, "name=");
  method<&definitionEntities>(definition, "entities");
  method<&definitionInstances>(definition, "instances");
  method<&isManifold>(definition, "manifold?");
  method<&behavior>(definition, "behavior");
  const VALUE flags = classes.behavior;
  method<&behaviorFlag<&SUComponentBehavior::component_always_face_camera>>(flags,
                                                                            "always_face_camera?");
  method<&setBehaviorFlag<&SUComponentBehavior::component_always_face_camera>>(
      flags, "always_face_camera=");
  method<&behaviorFlag<&SUComponentBehavior::component_cuts_opening>>(flags, "cuts_opening?");
  method<&setBehaviorFlag<&SUComponentBehavior::component_cuts_opening>>(flags, "cuts_opening=");
  defineList(classes.definitions);
  method<&addDefinition>(classes.definitions, "add");
  method<&allDefinitions>(classes.definitions, "to_a");
  method<&removeDefinition>(classes.definitions, "remove");
}

}  // namespace modelhost_ruby
