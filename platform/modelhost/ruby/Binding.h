// What the files of the Ruby binding share.
//
// Ruby errors unwind with longjmp, which skips destructors. So the functions of the binding keep
// only plain values and handles; memory they need comes from Ruby's collector (ALLOCV_N); what
// must be released is released under rb_ensure. C++ exceptions are caught by Method before they
// can reach Ruby's frames.
#pragma once

#include <ruby.h>
#include <ruby/encoding.h>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <initializer_list>

#include "../ModelHost.h"

namespace modelhost_ruby {

// Classes of the module; set once at load.
struct Classes {
  VALUE module, model, entities, entity, drawingElement, face, edge, instance, group, image,
      definition, definitions, behavior, material, materials, layer, layers, folder, options,
      transformation;
};
extern Classes classes;

// A method that lets no C++ exception out. `fn` takes self and the arguments, or (argc, argv,
// self) for any number of them.
template <auto fn>
struct Method;

template <class... Arguments, VALUE (*fn)(Arguments...)>
struct Method<fn> {
  static constexpr int kArity = static_cast<int>(sizeof...(Arguments)) - 1;
  static VALUE call(Arguments... arguments) {
    char why[200];
    try {
      return fn(arguments...);
    } catch (const std::exception& error) {
      std::snprintf(why, sizeof why, "%s", error.what());
    }
    rb_raise(rb_eRuntimeError, "%s", why);
  }
};

template <VALUE (*fn)(int, VALUE*, VALUE)>
struct Method<fn> {
  static constexpr int kArity = -1;
  static VALUE call(int argc, VALUE* argv, VALUE self) {
    char why[200];
    try {
      return fn(argc, argv, self);
    } catch (const std::exception& error) {
      std::snprintf(why, sizeof why, "%s", error.what());
    }
    rb_raise(rb_eRuntimeError, "%s", why);
  }
};

template <auto fn>
void method(VALUE klass, const char* name) {
  rb_define_method(klass, name, &Method<fn>::call, Method<fn>::kArity);
}

template <auto fn>
void singletonMethod(VALUE object, const char* name) {
  rb_define_singleton_method(object, name, &Method<fn>::call, Method<fn>::kArity);
}

// Handles.

// A Ruby object of `klass` around a handle; it keeps the Ruby object `model` alive.
VALUE wrap(VALUE klass, void* handle, VALUE model);
// Of the class that the entity's kind has; nil for a null handle.
VALUE wrapEntity(SUEntityRef entity, VALUE model);
VALUE classOf(SURefType type);
// The handle in an object of `klass`; TypeError for anything else, RuntimeError when what it
// stood for is gone.
void* unwrap(VALUE object, VALUE klass);
// The handle in an object, whether it stands for anything or not.
void* handleIn(VALUE object);
// The Ruby object of the model that `object` is part of.
VALUE modelOf(VALUE object);

template <class Ref>
Ref unwrapAs(VALUE object, VALUE klass) {
  return Ref{unwrap(object, klass)};
}
inline SUEntityRef entityOf(VALUE self) {
  return unwrapAs<SUEntityRef>(self, classes.entity);
}
inline SUDrawingElementRef elementOf(VALUE self) {
  return unwrapAs<SUDrawingElementRef>(self, classes.drawingElement);
}
inline SUEntitiesRef entitiesOf(VALUE self) {
  return unwrapAs<SUEntitiesRef>(self, classes.entities);
}
inline SUModelRef modelRefOf(VALUE self) {
  return unwrapAs<SUModelRef>(self, classes.model);
}
// A material, or a null handle for nil.
SUMaterialRef materialOrNone(VALUE value);

// Raises a RuntimeError that says what could not be done, unless `result` is success.
void check(SUResult result, const char* what);

// Values.

SUPoint3D pointFrom(VALUE value);
VALUE pointTo(const SUPoint3D& point);
VALUE vectorTo(const SUVector3D& vector);
// The points of an argument list: points, or one array of points.
VALUE pointArray(int argc, VALUE* argv);
// Copies an array of points into `out`, which has room for all of them.
void copyPoints(VALUE array, SUPoint3D* out);
// [r, g, b], [r, g, b, a], 0xrrggbb or "#rrggbb".
SUColor colorFrom(VALUE value);
VALUE colorTo(const SUColor& color);
VALUE boundsTo(const SUBoundingBox3D& box);
SUTransformation transformationFrom(VALUE value);
VALUE transformationTo(const SUTransformation& transformation);
bool flagFrom(VALUE value);
inline VALUE flagTo(bool flag) {
  return flag ? Qtrue : Qfalse;
}
VALUE textTo(const char* bytes, size_t length);

// The text that get(SUStringRef*) gives.
template <class Get>
VALUE readText(Get get, const char* what) {
  SUStringRef string = SU_INVALID;
  SUStringCreate(&string);
  const SUResult result = get(&string);
  size_t length = 0;
  SUStringGetUTF8Length(string, &length);
  VALUE holder = 0;
  char* bytes = ALLOCV_N(char, holder, static_cast<long>(length + 1));
  SUStringGetUTF8(string, length + 1, bytes, &length);
  SUStringRelease(&string);
  check(result, what);
  const VALUE text = textTo(bytes, length);
  ALLOCV_END(holder);
  return text;
}

// An array of the wrapped handles that get(len, out, count) gives.
template <class Ref, class Get>
VALUE readList(size_t count, Get get, VALUE model) {
  VALUE holder = 0;
  Ref* refs = ALLOCV_N(Ref, holder, static_cast<long>(count + 1));
  size_t got = 0;
  if (count > 0) check(get(count, refs, &got), "the list cannot be read");
  const VALUE array = rb_ary_new_capa(static_cast<long>(got));
  for (size_t i = 0; i < got; ++i) rb_ary_push(array, wrapEntity({refs[i].ptr}, model));
  ALLOCV_END(holder);
  return array;
}

// Of an entity or a model. Null when there is none of that name; nothing is made.
SUAttributeDictionaryRef findDictionary(VALUE owner, const char* wanted);
VALUE dictionaryNames(VALUE owner);
// Attributes; `dictionary` may be null, which reads as nil.
VALUE readAttribute(SUAttributeDictionaryRef dictionary, const char* key);
void writeAttribute(SUAttributeDictionaryRef dictionary, const char* key, VALUE value);
VALUE valueTo(SUTypedValueRef value);
// Calls store(context, typed value) with a typed value made of `value`, and releases it.
void withTypedValue(VALUE value, void (*store)(void*, SUTypedValueRef), void* context);

// Gives the class of a list of named things each, [] (name or number), length and size; it has
// to_a already.
void defineList(VALUE klass);

// Each defines its classes and methods.
void defineModel();
void defineEntities();
void defineEntity();
void defineFace();
void defineComponents();
void defineMaterials();
void defineLayers();
void defineTransformation();
void defineModes();
void defineEdits();

}  // namespace modelhost_ruby
