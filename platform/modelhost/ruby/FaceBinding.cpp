#include "Binding.h"

namespace modelhost_ruby {

namespace {

SUFaceRef faceOf(VALUE self) {
  return unwrapAs<SUFaceRef>(self, classes.face);
}
SUEdgeRef edgeOf(VALUE self) {
  return unwrapAs<SUEdgeRef>(self, classes.edge);
}

VALUE normal(VALUE self) {
  SUVector3D n{};
  check(SUFaceGetNormal(faceOf(self), &n), "no normal");
  return vectorTo(n);
}

VALUE plane(VALUE self) {
  SUPlane3D p{};
  check(SUFaceGetPlane(faceOf(self), &p), "no plane");
  return rb_ary_new_from_args(4, rb_float_new(p.a), rb_float_new(p.b), rb_float_new(p.c),
                              rb_float_new(p.d));
}

VALUE area(VALUE self) {
  double value = 0;
  check(SUFaceGetArea(faceOf(self), nullptr, &value), "no area");
  return rb_float_new(value);
}

VALUE pointsOf(SULoopRef loop) {
  size_t count = 0;
  SULoopGetNumVertices(loop, &count);
  VALUE holder = 0;
  SUVertexRef* vertices = ALLOCV_N(SUVertexRef, holder, static_cast<long>(count + 1));
  SULoopGetVertices(loop, count, vertices, &count);
  const VALUE points = rb_ary_new();
  for (size_t i = 0; i < count; ++i) {
    SUPoint3D p{};
    SUVertexGetPosition(vertices[i], &p);
    rb_ary_push(points, pointTo(p));
  }
  ALLOCV_END(holder);
  return points;
}

// The outer outline.
VALUE points(VALUE self) {
  SULoopRef loop = SU_INVALID;
  check(SUFaceGetOuterLoop(faceOf(self), &loop), "no outline");
  return pointsOf(loop);
}

VALUE holes(VALUE self) {
  const SUFaceRef face = faceOf(self);
  size_t count = 0;
  SUFaceGetNumInnerLoops(face, &count);
  VALUE holder = 0;
  SULoopRef* loops = ALLOCV_N(SULoopRef, holder, static_cast<long>(count + 1));
  SUFaceGetInnerLoops(face, count, loops, &count);
  const VALUE outlines = rb_ary_new();
  for (size_t i = 0; i < count; ++i) rb_ary_push(outlines, pointsOf(loops[i]));
  ALLOCV_END(holder);
  return outlines;
}

VALUE edges(VALUE self) {
  const SUFaceRef face = faceOf(self);
  size_t count = 0;
  check(SUFaceGetNumEdges(face, &count), "no edges");
  return readList<SUEdgeRef>(
      count,
      [&](size_t len, SUEdgeRef* out, size_t* got) { return SUFaceGetEdges(face, len, out, got); },
      modelOf(self));
}

VALUE addHole(int argc, VALUE* argv, VALUE self) {
  const SUFaceRef face = faceOf(self);
  const VALUE array = pointArray(argc, argv);
  const long n = RARRAY_LEN(array);
  VALUE holder = 0;
  SUPoint3D* corners = ALLOCV_N(SUPoint3D, holder, n + 1);
  copyPoints(array, corners);
  SULoopInputRef loop = SU_INVALID;
  SULoopInputCreate(&loop);
  for (long i = 0; i < n; ++i) SULoopInputAddVertexIndex(loop, static_cast<size_t>(i));
  const SUResult result = SUFaceAddInnerLoop(face, corners, &loop);
  SULoopInputRelease(&loop);
  ALLOCV_END(holder);
  if (result != SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "the hole is not in the plane of the face or has no area");
  }
  return self;
}

VALUE addOpening(int argc, VALUE* argv, VALUE self) {
  const SUFaceRef face = faceOf(self);
  const VALUE array = pointArray(argc, argv);
  const long n = RARRAY_LEN(array);
  VALUE holder = 0;
  SUPoint3D* corners = ALLOCV_N(SUPoint3D, holder, n + 1);
  copyPoints(array, corners);
  check(modelhost_face_add_opening(face, static_cast<size_t>(n), corners), "no opening");
  ALLOCV_END(holder);
  return self;
}

VALUE clearOpenings(VALUE self) {
  check(modelhost_face_clear_openings(faceOf(self)), "no openings");
  return self;
}

VALUE reverse(VALUE self) {
  check(SUFaceReverse(faceOf(self)), "the face cannot be turned");
  return self;
}

VALUE backMaterial(VALUE self) {
  SUMaterialRef ref = SU_INVALID;
  if (SUFaceGetBackMaterial(faceOf(self), &ref) != SU_ERROR_NONE) return Qnil;
  return wrap(classes.material, ref.ptr, modelOf(self));
}

VALUE setBackMaterial(VALUE self, VALUE value) {
  const SUMaterialRef ref = materialOrNone(value);
  check(SUFaceSetBackMaterial(faceOf(self), ref), "it cannot be painted");
  return value;
}

// position_material(material, [point, [u, v], …], front = true): one to four pairs.
VALUE positionMaterial(int argc, VALUE* argv, VALUE self) {
  rb_check_arity(argc, 2, 3);
  const SUFaceRef face = faceOf(self);
  const auto material = unwrapAs<SUMaterialRef>(argv[0], classes.material);
  Check_Type(argv[1], T_ARRAY);
  const long n = RARRAY_LEN(argv[1]);
  if (n < 2 || n > 8 || n % 2 != 0) rb_raise(rb_eArgError, "1 to 4 pairs of a point and [u, v]");
  SUPoint3D corners[4] = {};
  SUPoint2D uvs[4] = {};
  for (long i = 0; i < n / 2; ++i) {
    corners[i] = pointFrom(rb_ary_entry(argv[1], 2 * i));
    const VALUE uv = rb_convert_type(rb_ary_entry(argv[1], 2 * i + 1), T_ARRAY, "Array", "to_a");
    uvs[i] = {rb_num2dbl(rb_ary_entry(uv, 0)), rb_num2dbl(rb_ary_entry(uv, 1))};
  }
  const bool front = argc < 3 || RTEST(argv[2]);
  if (SUFacePositionMaterial(face, front, material, static_cast<size_t>(n / 2), corners, uvs) !=
      SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "these points do not fix how the texture lies");
  }
  return self;
}

// uv_at(point, front = true): [u, v, q]
VALUE uvAt(int argc, VALUE* argv, VALUE self) {
  rb_check_arity(argc, 1, 2);
  const SUFaceRef face = faceOf(self);
  const SUPoint3D point = pointFrom(argv[0]);
  const bool front = argc < 2 || RTEST(argv[1]);
  SUUVHelperRef helper = SU_INVALID;
  check(SUFaceGetUVHelper(face, front, !front, SU_INVALID, &helper), "no coordinates");
  SUUVQ uvq{};
  if (front) {
    SUUVHelperGetFrontUVQ(helper, &point, &uvq);
  } else {
    SUUVHelperGetBackUVQ(helper, &point, &uvq);
  }
  SUUVHelperRelease(&helper);
  return rb_ary_new_from_args(3, rb_float_new(uvq.u), rb_float_new(uvq.v), rb_float_new(uvq.q));
}

VALUE movedBy(VALUE outline, const SUVector3D& by) {
  const VALUE moved = rb_ary_new();
  for (long i = 0; i < RARRAY_LEN(outline); ++i) {
    const SUPoint3D p = pointFrom(rb_ary_entry(outline, i));
    rb_ary_push(moved, pointTo({p.x + by.x, p.y + by.y, p.z + by.z}));
  }
  return moved;
}

// Walls from an outline to its copy; `material` may be nil.
void addWalls(VALUE entities, VALUE low, VALUE high, VALUE material) {
  const long n = RARRAY_LEN(low);
  for (long i = 0; i < n; ++i) {
    const long next = (i + 1) % n;
    const VALUE wall = rb_ary_new_from_args(4, rb_ary_entry(low, i), rb_ary_entry(low, next),
                                            rb_ary_entry(high, next), rb_ary_entry(high, i));
    const VALUE face = rb_funcall(entities, rb_intern("add_face"), 1, wall);
    rb_funcall(face, rb_intern("material="), 1, material);
  }
}

// pushpull(distance): makes a solid of the face; distances below 0 go behind it.
VALUE pushPull(VALUE self, VALUE distance) {
  const double d = rb_num2dbl(distance);
  if (d == 0) return Qnil;
  SUVector3D n{};
  check(SUFaceGetNormal(faceOf(self), &n), "no normal");
  const SUVector3D by{n.x * d, n.y * d, n.z * d};
  const VALUE entities = rb_funcall(self, rb_intern("_among"), 0);
  const VALUE material = rb_funcall(self, rb_intern("material"), 0);
  // Walls face outwards when the outline runs about the way it is moved.
  const VALUE outlines = rb_ary_concat(rb_ary_new_from_args(1, points(self)), holes(self));
  const VALUE end = rb_ary_new();
  for (long i = 0; i < RARRAY_LEN(outlines); ++i) {
    VALUE low = rb_ary_entry(outlines, i);
    if (d < 0) low = rb_ary_reverse(low);
    const VALUE high = movedBy(low, by);
    addWalls(entities, low, high, material);
    rb_ary_push(end, high);
  }
  const VALUE lid = rb_funcall(entities, rb_intern("add_face"), 1, rb_ary_entry(end, 0));
  for (long i = 1; i < RARRAY_LEN(end); ++i) {
    rb_funcall(lid, rb_intern("add_hole"), 1, rb_ary_entry(end, i));
  }
  rb_funcall(lid, rb_intern("material="), 1, material);
  if (d > 0) reverse(self);
  return lid;
}

template <auto get>
VALUE edgeEnd(VALUE self) {
  SUVertexRef vertex = SU_INVALID;
  SUPoint3D p{};
  check(get(edgeOf(self), &vertex), "no end");
  check(SUVertexGetPosition(vertex, &p), "no position");
  return pointTo(p);
}

template <auto get>
VALUE edgeFlag(VALUE self) {
  bool flag = false;
  check(get(edgeOf(self), &flag), "not known");
  return flagTo(flag);
}

template <auto set>
VALUE setEdgeFlag(VALUE self, VALUE value) {
  check(set(edgeOf(self), flagFrom(value)), "not possible");
  return value;
}

VALUE setEdgeColor(VALUE self, VALUE value) {
  const SUColor color = colorFrom(value);
  check(SUEdgeSetColor(edgeOf(self), &color), "not possible");
  return value;
}

VALUE edgeFaces(VALUE self) {
  const SUEdgeRef edge = edgeOf(self);
  size_t count = 0;
  check(SUEdgeGetNumFaces(edge, &count), "no faces");
  return readList<SUFaceRef>(
      count,
      [&](size_t len, SUFaceRef* out, size_t* got) { return SUEdgeGetFaces(edge, len, out, got); },
      modelOf(self));
}

}  // namespace

void defineFace() {
  const VALUE face = classes.face;
  method<&normal>(face, "normal");
  method<&plane>(face, "plane");
  method<&area>(face, "area");
  method<&points>(face, "points");
  method<&holes>(face, "holes");
  method<&edges>(face, "edges");
  method<&addHole>(face, "add_hole");
  method<&addOpening>(face, "add_opening");
  method<&clearOpenings>(face, "clear_openings");
  method<&reverse>(face, "reverse!");
  method<&backMaterial>(face, "back_material");
  method<&setBackMaterial>(face, "back_material=");
  method<&positionMaterial>(face, "position_material");
  method<&uvAt>(face, "uv_at");
  method<&pushPull>(face, "pushpull");
  const VALUE edge = classes.edge;
  method<&edgeEnd<&SUEdgeGetStartVertex>>(edge, "start");
  method<&edgeEnd<&SUEdgeGetEndVertex>>(edge, "end");
  method<&edgeFlag<&SUEdgeGetSmooth>>(edge, "smooth?");
  method<&setEdgeFlag<&SUEdgeSetSmooth>>(edge, "smooth=");
  method<&edgeFlag<&SUEdgeGetSoft>>(edge, "soft?");
  method<&setEdgeFlag<&SUEdgeSetSoft>>(edge, "soft=");
  method<&setEdgeColor>(edge, "color=");
  method<&edgeFaces>(edge, "faces");
}

}  // namespace modelhost_ruby
