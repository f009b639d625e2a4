#include "Binding.h"

namespace modelhost_ruby {

namespace {

// Adds a face that has just been made.
VALUE adopt(VALUE self, SUEntitiesRef entities, SUFaceRef face) {
  check(SUEntitiesAddFaces(entities, 1, &face), "the face cannot be added");
  return wrap(classes.face, face.ptr, modelOf(self));
}

VALUE addFace(int argc, VALUE* argv, VALUE self) {
  const SUEntitiesRef entities = entitiesOf(self);
  const VALUE array = pointArray(argc, argv);
  const long n = RARRAY_LEN(array);
  if (n < 3) rb_raise(rb_eArgError, "a face has at least 3 points, this has %ld", n);
  VALUE holder = 0;
  SUPoint3D* points = ALLOCV_N(SUPoint3D, holder, n);
  copyPoints(array, points);
  SUFaceRef face = SU_INVALID;
  const SUResult result = SUFaceCreateSimple(&face, points, static_cast<size_t>(n));
  ALLOCV_END(holder);
  if (result != SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "the points are not in one plane or enclose no area");
  }
  return adopt(self, entities, face);
}

// Edges from each point to the next.
VALUE addEdges(int argc, VALUE* argv, VALUE self) {
  const SUEntitiesRef entities = entitiesOf(self);
  const VALUE array = pointArray(argc, argv);
  const long n = RARRAY_LEN(array);
  if (n < 2) rb_raise(rb_eArgError, "edges have at least 2 points, these have %ld", n);
  VALUE holder = 0;
  SUPoint3D* points = ALLOCV_N(SUPoint3D, holder, n);
  copyPoints(array, points);
  const VALUE edges = rb_ary_new();
  for (long i = 0; i + 1 < n; ++i) {
    SUEdgeRef edge = SU_INVALID;
    if (SUEdgeCreate(&edge, &points[i], &points[i + 1]) != SU_ERROR_NONE) {
      rb_raise(rb_eArgError, "an edge joins two different points");
    }
    check(SUEntitiesAddEdges(entities, 1, &edge), "the edge cannot be added");
    rb_ary_push(edges, wrap(classes.edge, edge.ptr, modelOf(self)));
  }
  ALLOCV_END(holder);
  return edges;
}

VALUE addGroup(VALUE self) {
  const SUEntitiesRef entities = entitiesOf(self);
  SUGroupRef group = SU_INVALID;
  check(SUGroupCreate(&group), "the group cannot be made");
  check(SUEntitiesAddGroup(entities, group), "the group cannot be added");
  return wrap(classes.group, group.ptr, modelOf(self));
}

// add_instance(definition, transformation = identity)
VALUE addInstance(int argc, VALUE* argv, VALUE self) {
  rb_check_arity(argc, 1, 2);
  const SUEntitiesRef entities = entitiesOf(self);
  const auto definition = unwrapAs<SUComponentDefinitionRef>(argv[0], classes.definition);
  SUComponentInstanceRef instance = SU_INVALID;
  if (argc > 1) {
    const SUTransformation transform = transformationFrom(argv[1]);
    check(SUComponentDefinitionCreateInstance(definition, &instance), "no instance can be made");
    SUComponentInstanceSetTransform(instance, &transform);
  } else {
    check(SUComponentDefinitionCreateInstance(definition, &instance), "no instance can be made");
  }
  const SUResult result = SUEntitiesAddInstance(entities, instance, nullptr);
  if (result != SU_ERROR_NONE) {
    SUComponentInstanceRelease(&instance);
    rb_raise(rb_eArgError, result == SU_ERROR_INVALID_ARGUMENT
                               ? "the component would lie inside itself"
                               : "the component is of another model");
  }
  return wrapEntity({instance.ptr}, modelOf(self));
}

// add_image(path, point, width, height = in proportion)
VALUE addImage(int argc, VALUE* argv, VALUE self) {
  rb_check_arity(argc, 3, 4);
  const SUEntitiesRef entities = entitiesOf(self);
  const char* path = StringValueCStr(argv[0]);
  const SUPoint3D at = pointFrom(argv[1]);
  const double width = rb_num2dbl(argv[2]);
  const double height = argc > 3 ? rb_num2dbl(argv[3]) : 0;
  if (!(width > 0) || height < 0) rb_raise(rb_eArgError, "the size is above 0");
  SUImageRef image = SU_INVALID;
  if (SUImageCreateFromFile(&image, path) != SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "%s cannot be read as a picture", path);
  }
  size_t columns = 1;
  size_t rows = 1;
  SUImageGetPixelDimensions(image, &columns, &rows);
  const double x = width / static_cast<double>(columns);
  const double y = height > 0 ? height / static_cast<double>(rows) : x;
  const SUTransformation transform = {{x, 0, 0, 0, 0, y, 0, 0, 0, 0, 1, 0, at.x, at.y, at.z, 1}};
  SUImageSetTransform(image, &transform);
  check(SUEntitiesAddImage(entities, image), "the image cannot be added");
  return wrap(classes.image, image.ptr, modelOf(self));
}

struct Fill {
  SUGeometryInputRef input;
  SUEntitiesRef entities;
  VALUE points;
  VALUE faces;
  SUMaterialInput material;
  bool smooth;
};

void addFaceInput(const Fill& fill, VALUE ring, long pointCount) {
  Check_Type(ring, T_ARRAY);
  const long n = RARRAY_LEN(ring);
  for (long i = 0; i < n; ++i) {
    const long index = NUM2LONG(rb_ary_entry(ring, i));
    if (index < 0 || index >= pointCount) rb_raise(rb_eIndexError, "there is no point %ld", index);
  }
  SULoopInputRef loop = SU_INVALID;
  SULoopInputCreate(&loop);
  for (long i = 0; i < n; ++i) {
    SULoopInputAddVertexIndex(loop, static_cast<size_t>(FIX2LONG(rb_ary_entry(ring, i))));
  }
  for (long i = 0; fill.smooth && i < n; ++i) {
    SULoopInputEdgeSetSmooth(loop, static_cast<size_t>(i), true);
    SULoopInputEdgeSetSoft(loop, static_cast<size_t>(i), true);
  }
  size_t face = 0;
  SUGeometryInputAddFace(fill.input, &loop, &face);
  if (SUIsValid(fill.material.material)) {
    SUGeometryInputFaceSetFrontMaterial(fill.input, face, &fill.material);
    SUGeometryInputFaceSetBackMaterial(fill.input, face, &fill.material);
  }
}

VALUE runFill(VALUE argument) {
  const Fill& fill = *reinterpret_cast<Fill*>(argument);
  const long n = RARRAY_LEN(fill.points);
  for (long i = 0; i < n; ++i) {
    const SUPoint3D p = pointFrom(rb_ary_entry(fill.points, i));
    SUGeometryInputAddVertex(fill.input, &p);
  }
  for (long i = 0; i < RARRAY_LEN(fill.faces); ++i) {
    addFaceInput(fill, rb_ary_entry(fill.faces, i), n);
  }
  if (SUEntitiesFill(fill.entities, fill.input, true) != SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "a face is not in one plane or encloses no area");
  }
  return Qnil;
}

VALUE releaseFill(VALUE argument) {
  SUGeometryInputRelease(&reinterpret_cast<Fill*>(argument)->input);
  return Qnil;
}

// fill(points, faces, material = nil, smooth = false): many faces at once, each a list of the
// numbers of its points.
VALUE fillFaces(int argc, VALUE* argv, VALUE self) {
  rb_check_arity(argc, 2, 4);
  Check_Type(argv[0], T_ARRAY);
  Check_Type(argv[1], T_ARRAY);
  Fill fill{SU_INVALID, entitiesOf(self), argv[0], argv[1], {}, argc > 3 && RTEST(argv[3])};
  if (argc > 2) fill.material.material = materialOrNone(argv[2]);
  SUGeometryInputCreate(&fill.input);
  rb_ensure(&runFill, reinterpret_cast<VALUE>(&fill), &releaseFill, reinterpret_cast<VALUE>(&fill));
  return self;
}

template <class Ref, auto getCount, auto getList>
VALUE list(VALUE self) {
  const SUEntitiesRef entities = entitiesOf(self);
  size_t count = 0;
  check(getCount(entities, &count), "the list cannot be read");
  return readList<Ref>(
      count, [&](size_t len, Ref* out, size_t* got) { return getList(entities, len, out, got); },
      modelOf(self));
}

SUResult countEdges(SUEntitiesRef entities, size_t* count) {
  return SUEntitiesGetNumEdges(entities, false, count);
}
SUResult getEdges(SUEntitiesRef entities, size_t len, SUEdgeRef out[], size_t* count) {
  return SUEntitiesGetEdges(entities, false, len, out, count);
}

constexpr auto kFaces = &list<SUFaceRef, &SUEntitiesGetNumFaces, &SUEntitiesGetFaces>;
constexpr auto kEdges = &list<SUEdgeRef, &countEdges, &getEdges>;
constexpr auto kGroups = &list<SUGroupRef, &SUEntitiesGetNumGroups, &SUEntitiesGetGroups>;
constexpr auto kImages = &list<SUImageRef, &SUEntitiesGetNumImages, &SUEntitiesGetImages>;
constexpr auto kInstances =
    &list<SUComponentInstanceRef, &SUEntitiesGetNumInstances, &SUEntitiesGetInstances>;

VALUE toArray(VALUE self) {
  const VALUE all = kInstances(self);
  for (const VALUE more : {kGroups(self), kImages(self), kFaces(self), kEdges(self)}) {
    rb_ary_concat(all, more);
  }
  return all;
}

VALUE each(VALUE self) {
  RETURN_ENUMERATOR(self, 0, nullptr);
  const VALUE all = toArray(self);
  for (long i = 0; i < RARRAY_LEN(all); ++i) rb_yield(rb_ary_entry(all, i));
  return self;
}

VALUE length(VALUE self) {
  return LONG2NUM(RARRAY_LEN(toArray(self)));
}

VALUE eraseEntities(int argc, VALUE* argv, VALUE self) {
  const SUEntitiesRef entities = entitiesOf(self);
  const VALUE array =
      argc == 1 && RB_TYPE_P(argv[0], T_ARRAY) ? argv[0] : rb_ary_new_from_values(argc, argv);
  const long n = RARRAY_LEN(array);
  VALUE holder = 0;
  SUEntityRef* doomed = ALLOCV_N(SUEntityRef, holder, n + 1);
  for (long i = 0; i < n; ++i) doomed[i] = entityOf(rb_ary_entry(array, i));
  check(SUEntitiesErase(entities, static_cast<size_t>(n), doomed),
        "an entity is not among these entities");
  ALLOCV_END(holder);
  return self;
}

VALUE clear(VALUE self) {
  check(SUEntitiesClear(entitiesOf(self)), "the entities cannot be cleared");
  return self;
}

VALUE bounds(VALUE self) {
  SUBoundingBox3D box{};
  check(SUEntitiesGetBoundingBox(entitiesOf(self), &box), "no bounds");
  return boundsTo(box);
}

}  // namespace

void defineEntities() {
  const VALUE klass = classes.entities;
  rb_include_module(klass, rb_mEnumerable);
  method<&addFace>(klass, "add_face");
  method<&addEdges>(klass, "add_edges");
  method<&addEdges>(klass, "add_line");
  method<&addGroup>(klass, "add_group");
  method<&addInstance>(klass, "add_instance");
  method<&addImage>(klass, "add_image");
  method<&fillFaces>(klass, "fill");
  method<kFaces>(klass, "faces");
  method<kEdges>(klass, "edges");
  method<kGroups>(klass, "groups");
  method<kImages>(klass, "images");
  method<kInstances>(klass, "instances");
  method<&toArray>(klass, "to_a");
  method<&each>(klass, "each");
  method<&length>(klass, "length");
  method<&length>(klass, "size");
  method<&eraseEntities>(klass, "erase_entities");
  method<&clear>(klass, "clear!");
  method<&bounds>(klass, "bounds");
}

}  // namespace modelhost_ruby
