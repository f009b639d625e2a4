#include "Binding.h"

#include <cstring>

namespace modelhost_ruby {

Classes classes;

namespace {

struct Box {
  void* handle;
  VALUE model;
};

void markBox(void* data) {
  rb_gc_mark(static_cast<Box*>(data)->model);
}

const rb_data_type_t kBoxType = {"ModelHost handle",
                                 {markBox, RUBY_DEFAULT_FREE, nullptr, nullptr, {nullptr}},
                                 nullptr,
                                 nullptr,
                                 RUBY_TYPED_FREE_IMMEDIATELY};

Box* boxOf(VALUE object) {
  return static_cast<Box*>(rb_check_typeddata(object, &kBoxType));
}

bool alive(void* handle, VALUE klass) {
  if (klass == classes.entities) {
    size_t count = 0;
    return SUEntitiesGetNumFaces({handle}, &count) == SU_ERROR_NONE;
  }
  if (klass == classes.options) {
    size_t count = 0;
    return SURenderingOptionsGetNumKeys({handle}, &count) == SU_ERROR_NONE;
  }
  if (klass == classes.model) {
    size_t count = 0;
    return SUModelGetNumLayers({handle}, &count) == SU_ERROR_NONE;
  }
  return SUEntityGetType({handle}) != SURefType_Unknown;
}
}  // namespace

VALUE classOf(SURefType type) {
  switch (type) {
    case SURefType_Face:
      return classes.face;
    case SURefType_Edge:
      return classes.edge;
    case SURefType_ComponentInstance:
      return classes.instance;
    case SURefType_Group:
      return classes.group;
    case SURefType_Image:
      return classes.image;
    case SURefType_ComponentDefinition:
      return classes.definition;
    case SURefType_Material:
      return classes.material;
    case SURefType_Layer:
      return classes.layer;
    case SURefType_LayerFolder:
      return classes.folder;
    default:
      return classes.entity;
  }
}

VALUE wrap(VALUE klass, void* handle, VALUE model) {
  Box* box = nullptr;
  const VALUE object = TypedData_Make_Struct(klass, Box, &kBoxType, box);
  box->handle = handle;
  box->model = model;
  // The model itself is its own.
  if (NIL_P(model)) box->model = object;
  return object;
}

VALUE wrapEntity(SUEntityRef entity, VALUE model) {
  if (SUIsInvalid(entity)) return Qnil;
  return wrap(classOf(SUEntityGetType(entity)), entity.ptr, model);
}

void* unwrap(VALUE object, VALUE klass) {
  if (!RTEST(rb_obj_is_kind_of(object, klass))) {
    rb_raise(rb_eTypeError, "wrong argument type %" PRIsVALUE " (expected %" PRIsVALUE ")",
             rb_obj_class(object), klass);
  }
  void* handle = boxOf(object)->handle;
  if (!alive(handle, klass)) {
    rb_raise(rb_eRuntimeError, "this %" PRIsVALUE " is gone from the model", rb_obj_class(object));
  }
  return handle;
}

void* handleIn(VALUE object) {
  return boxOf(object)->handle;
}

VALUE modelOf(VALUE object) {
  return boxOf(object)->model;
}

SUMaterialRef materialOrNone(VALUE value) {
  if (NIL_P(value)) return SU_INVALID;
  return unwrapAs<SUMaterialRef>(value, classes.material);
}

void check(SUResult result, const char* what) {
  if (result == SU_ERROR_NONE) return;
  rb_raise(rb_eRuntimeError, "%s (result %d)", what, static_cast<int>(result));
}

SUPoint3D pointFrom(VALUE value) {
  const VALUE array = rb_convert_type(value, T_ARRAY, "Array", "to_a");
  if (RARRAY_LEN(array) != 3) {
    rb_raise(rb_eArgError, "a point has 3 coordinates, this has %ld", RARRAY_LEN(array));
  }
  return {rb_num2dbl(rb_ary_entry(array, 0)), rb_num2dbl(rb_ary_entry(array, 1)),
          rb_num2dbl(rb_ary_entry(array, 2))};
}

VALUE pointTo(const SUPoint3D& point) {
  return rb_ary_new_from_args(3, rb_float_new(point.x), rb_float_new(point.y),
                              rb_float_new(point.z));
}

VALUE vectorTo(const SUVector3D& vector) {
  return pointTo({vector.x, vector.y, vector.z});
}

VALUE pointArray(int argc, VALUE* argv) {
  // One array whose first element is an array is a list of points.
  if (argc == 1 && RB_TYPE_P(argv[0], T_ARRAY) &&
      (RARRAY_LEN(argv[0]) == 0 || !RB_FLOAT_TYPE_P(rb_ary_entry(argv[0], 0))) &&
      !RB_INTEGER_TYPE_P(rb_ary_entry(argv[0], 0))) {
    return argv[0];
  }
  return rb_ary_new_from_values(argc, argv);
}

void copyPoints(VALUE array, SUPoint3D* out) {
  for (long i = 0; i < RARRAY_LEN(array); ++i) out[i] = pointFrom(rb_ary_entry(array, i));
}

namespace {

SUByte byteFrom(VALUE value) {
  const long part = NUM2LONG(value);
  if (part < 0 || part > 255) rb_raise(rb_eArgError, "parts of a colour are from 0 to 255");
  return static_cast<SUByte>(part);
}

SUColor colorFromBits(unsigned long rgb) {
  return {static_cast<SUByte>(rgb >> 16 & 0xff), static_cast<SUByte>(rgb >> 8 & 0xff),
          static_cast<SUByte>(rgb & 0xff), 255};
}

}  // namespace

SUColor colorFrom(VALUE value) {
  if (RB_TYPE_P(value, T_ARRAY) && (RARRAY_LEN(value) == 3 || RARRAY_LEN(value) == 4)) {
    const bool withAlpha = RARRAY_LEN(value) == 4;
    return {byteFrom(rb_ary_entry(value, 0)), byteFrom(rb_ary_entry(value, 1)),
            byteFrom(rb_ary_entry(value, 2)),
            withAlpha ? byteFrom(rb_ary_entry(value, 3)) : SUByte{255}};
  }
  if (RB_INTEGER_TYPE_P(value)) return colorFromBits(NUM2ULONG(value));
  if (RB_TYPE_P(value, T_STRING)) {
    const char* text = StringValueCStr(value);
    if (text[0] == '#' && std::strlen(text) == 7 &&
        std::strspn(text + 1, "0123456789abcdefABCDEF") == 6) {
      return colorFromBits(std::strtoul(text + 1, nullptr, 16));
    }
  }
  rb_raise(rb_eArgError, "a colour is [r, g, b], [r, g, b, a], 0xrrggbb or \"#rrggbb\"");
}

VALUE colorTo(const SUColor& color) {
  return rb_ary_new_from_args(4, INT2FIX(color.red), INT2FIX(color.green), INT2FIX(color.blue),
                              INT2FIX(color.alpha));
}

VALUE boundsTo(const SUBoundingBox3D& box) {
  return rb_ary_new_from_args(2, pointTo(box.min_point), pointTo(box.max_point));
}

bool flagFrom(VALUE value) {
  return RTEST(value);
}

VALUE textTo(const char* bytes, size_t length) {
  return rb_utf8_str_new(bytes, static_cast<long>(length));
}

}  // namespace modelhost_ruby

extern "C" __attribute__((visibility("default"))) void Init_modelhost(void) {
  using namespace modelhost_ruby;
  classes.module = rb_define_module("ModelHost");
  const auto define = [](const char* name, VALUE super) {
    const VALUE klass = rb_define_class_under(classes.module, name, super);
    rb_undef_alloc_func(klass);
    return klass;
  };
  classes.model = define("Model", rb_cObject);
  classes.entities = define("Entities", rb_cObject);
  classes.entity = define("Entity", rb_cObject);
  classes.drawingElement = define("DrawingElement", classes.entity);
  classes.face = define("Face", classes.drawingElement);
  classes.edge = define("Edge", classes.drawingElement);
  classes.instance = define("ComponentInstance", classes.drawingElement);
  classes.group = define("Group", classes.instance);
  classes.image = define("Image", classes.instance);
  classes.definition = define("ComponentDefinition", classes.drawingElement);
  classes.behavior = define("Behavior", rb_cObject);
  classes.definitions = define("Definitions", rb_cObject);
  classes.material = define("Material", classes.entity);
  classes.materials = define("Materials", rb_cObject);
  classes.layer = define("Layer", classes.entity);
  classes.layers = define("Layers", rb_cObject);
  classes.folder = define("LayerFolder", classes.entity);
  classes.options = define("RenderingOptions", rb_cObject);
  classes.transformation = define("Transformation", rb_cObject);
  defineModel();
  defineEntities();
  defineEntity();
  defineFace();
  defineComponents();
  defineMaterials();
  defineLayers();
  defineTransformation();
  defineModes();
  defineEdits();
}
