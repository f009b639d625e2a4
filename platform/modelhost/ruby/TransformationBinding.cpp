#include <cmath>
#include <cstring>

#include "Binding.h"

namespace modelhost_ruby {

namespace {

const rb_data_type_t kType = {"ModelHost::Transformation",
                              {nullptr, RUBY_DEFAULT_FREE, nullptr, nullptr, {nullptr}},
                              nullptr,
                              nullptr,
                              RUBY_TYPED_FREE_IMMEDIATELY};

constexpr SUTransformation kIdentity = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

SUTransformation product(const SUTransformation& a, const SUTransformation& b) {
  SUTransformation result{};
  for (int c = 0; c < 4; ++c) {
    for (int r = 0; r < 4; ++r) {
      for (int k = 0; k < 4; ++k) {
        result.values[c * 4 + r] += a.values[k * 4 + r] * b.values[c * 4 + k];
      }
    }
  }
  return result;
}

SUTransformation moved(const SUPoint3D& by) {
  SUTransformation t = kIdentity;
  t.values[12] = by.x;
  t.values[13] = by.y;
  t.values[14] = by.z;
  return t;
}

// `t` about a point instead of the origin.
SUTransformation about(const SUPoint3D& p, const SUTransformation& t) {
  return product(moved(p), product(t, moved({-p.x, -p.y, -p.z})));
}

VALUE newTransformation(int argc, VALUE* argv, VALUE) {
  rb_check_arity(argc, 0, 1);
  return transformationTo(argc == 0 ? kIdentity : transformationFrom(argv[0]));
}

VALUE translation(VALUE, VALUE by) {
  return transformationTo(moved(pointFrom(by)));
}

// rotation(point, axis, angle in radians)
VALUE rotation(VALUE, VALUE point, VALUE axisValue, VALUE angleValue) {
  const SUPoint3D center = pointFrom(point);
  const SUPoint3D axis = pointFrom(axisValue);
  const double angle = rb_num2dbl(angleValue);
  const double size = std::hypot(axis.x, axis.y, axis.z);
  if (!(size > 0)) rb_raise(rb_eArgError, "the axis has no direction");
  const double x = axis.x / size;
  const double y = axis.y / size;
  const double z = axis.z / size;
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  const double k = 1 - c;
  const SUTransformation turn = {
      {c + x * x * k, y * x * k + z * s, z * x * k - y * s, 0, x * y * k - z * s, c + y * y * k,
       z * y * k + x * s, 0, x * z * k + y * s, y * z * k - x * s, c + z * z * k, 0, 0, 0, 0, 1}};
  return transformationTo(about(center, turn));
}

// scaling(s), scaling(x, y, z), scaling(point, s), scaling(point, x, y, z)
VALUE scaling(int argc, VALUE* argv, VALUE) {
  rb_check_arity(argc, 1, 4);
  const bool centered = RB_TYPE_P(argv[0], T_ARRAY);
  const SUPoint3D center = centered ? pointFrom(argv[0]) : SUPoint3D{0, 0, 0};
  const int first = centered ? 1 : 0;
  const int factors = argc - first;
  if (factors != 1 && factors != 3) rb_raise(rb_eArgError, "one factor or three are wanted");
  double s[3] = {};
  for (int i = 0; i < 3; ++i) s[i] = rb_num2dbl(argv[first + (factors == 3 ? i : 0)]);
  const SUTransformation scale = {{s[0], 0, 0, 0, 0, s[1], 0, 0, 0, 0, s[2], 0, 0, 0, 0, 1}};
  return transformationTo(about(center, scale));
}

// A transformation, or a point, which is transformed.
VALUE multiply(VALUE self, VALUE other) {
  const SUTransformation t = transformationFrom(self);
  if (RB_TYPE_P(other, T_ARRAY) && RARRAY_LEN(other) == 3) {
    const SUTransformation p = product(t, moved(pointFrom(other)));
    return pointTo({p.values[12], p.values[13], p.values[14]});
  }
  return transformationTo(product(t, transformationFrom(other)));
}

VALUE toArray(VALUE self) {
  const SUTransformation t = transformationFrom(self);
  const VALUE array = rb_ary_new_capa(16);
  for (const double value : t.values) rb_ary_push(array, rb_float_new(value));
  return array;
}

VALUE origin(VALUE self) {
  const SUTransformation t = transformationFrom(self);
  return pointTo({t.values[12], t.values[13], t.values[14]});
}

VALUE equal(VALUE self, VALUE other) {
  if (!RTEST(rb_obj_is_kind_of(other, classes.transformation))) return Qfalse;
  const SUTransformation a = transformationFrom(self);
  const SUTransformation b = transformationFrom(other);
  return flagTo(std::memcmp(&a, &b, sizeof a) == 0);
}

}  // namespace

SUTransformation transformationFrom(VALUE value) {
  if (RTEST(rb_obj_is_kind_of(value, classes.transformation))) {
    return *static_cast<SUTransformation*>(rb_check_typeddata(value, &kType));
  }
  const VALUE array = rb_convert_type(value, T_ARRAY, "Array", "to_a");
  if (RARRAY_LEN(array) != 16) {
    rb_raise(rb_eArgError, "a transformation has 16 numbers, this has %ld", RARRAY_LEN(array));
  }
  SUTransformation t{};
  for (int i = 0; i < 16; ++i) t.values[i] = rb_num2dbl(rb_ary_entry(array, i));
  return t;
}

VALUE transformationTo(const SUTransformation& transformation) {
  SUTransformation* data = nullptr;
  const VALUE object =
      TypedData_Make_Struct(classes.transformation, SUTransformation, &kType, data);
  *data = transformation;
  return object;
}

void defineTransformation() {
  const VALUE klass = classes.transformation;
  singletonMethod<&newTransformation>(klass, "new");
  singletonMethod<&translation>(klass, "translation");
  singletonMethod<&rotation>(klass, "rotation");
  singletonMethod<&scaling>(klass, "scaling");
  method<&multiply>(klass, "*");
  method<&toArray>(klass, "to_a");
  method<&origin>(klass, "origin");
  method<&equal>(klass, "==");
}

}  // namespace modelhost_ruby
