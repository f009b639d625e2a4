// Small vector arithmetic over the API's own point types, all in double precision.
#pragma once

#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/transformation.h>

#include <cmath>
#include <optional>
#include <span>
#include <vector>

namespace modelhost {

inline SUVector3D operator-(const SUPoint3D& a, const SUPoint3D& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline SUPoint3D operator+(const SUPoint3D& a, const SUVector3D& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline SUVector3D operator+(const SUVector3D& a, const SUVector3D& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline SUVector3D operator*(const SUVector3D& a, double s) {
  return {a.x * s, a.y * s, a.z * s};
}
inline SUVector3D operator-(const SUVector3D& a) {
  return {-a.x, -a.y, -a.z};
}
inline double dot(const SUVector3D& a, const SUVector3D& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline double dot(const SUPoint3D& a, const SUVector3D& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline SUVector3D cross(const SUVector3D& a, const SUVector3D& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(const SUVector3D& a) {
  return std::sqrt(dot(a, a));
}
// `a` must not be null.
inline SUVector3D unit(const SUVector3D& a) {
  return a * (1.0 / length(a));
}
inline bool isFinite(const SUPoint3D& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}
inline SUVector3D normalOf(const SUPlane3D& plane) {
  return {plane.a, plane.b, plane.c};
}

// Twice the area of a polygon as a vector along its normal.
SUVector3D areaVector(std::span<const SUPoint3D> polygon);
// The plane of a polygon that is counter-clockwise about its normal; none for one without area.
std::optional<SUPlane3D> planeOf(std::span<const SUPoint3D> polygon);
// How far a point may lie off the plane of a polygon of this extent.
double planarTolerance(std::span<const SUPoint3D> polygon);
bool isPlanar(std::span<const SUPoint3D> polygon, const SUPlane3D& plane);

// Two unit vectors in the plane of `normal`: seen from its front, `x` points right and `y` up. On
// a wall `y` is upwards, on a floor `x` is the model's x axis.
struct Axes {
  SUVector3D x;
  SUVector3D y;
};
Axes axesOf(const SUVector3D& normal);

SUTransformation identity();
SUTransformation product(const SUTransformation& a, const SUTransformation& b);
// None for one that flattens.
std::optional<SUTransformation> inverse(const SUTransformation& t);
// Below 0 for one that mirrors.
double determinant(const SUTransformation& t);
SUPoint3D apply(const SUTransformation& t, const SUPoint3D& p);
SUVector3D column(const SUTransformation& t, int index);
bool isFinite(const SUTransformation& t);

// A box that starts empty.
class Box {
 public:
  void add(const SUPoint3D& p);
  void add(const Box& other, const SUTransformation& placed);
  bool empty() const { return empty_; }
  // Zero size at the origin when empty.
  const SUBoundingBox3D& get() const { return box_; }

 private:
  bool empty_ = true;
  SUBoundingBox3D box_{};
};

}  // namespace modelhost
