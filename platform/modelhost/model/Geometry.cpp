#include "model/Geometry.h"

#include <algorithm>

namespace modelhost {

namespace {

double extentOf(std::span<const SUPoint3D> polygon) {
  Box box;
  for (const SUPoint3D& p : polygon) box.add(p);
  return length(box.get().max_point - box.get().min_point);
}

}  // namespace

SUVector3D areaVector(std::span<const SUPoint3D> polygon) {
  SUVector3D sum{0, 0, 0};
  // Relative to the first point, so that a polygon far from the origin keeps its precision.
  for (std::size_t i = 1; i + 1 < polygon.size(); ++i) {
    sum = sum + cross(polygon[i] - polygon[0], polygon[i + 1] - polygon[0]);
  }
  return sum;
}

std::optional<SUPlane3D> planeOf(std::span<const SUPoint3D> polygon) {
  if (polygon.size() < 3) return std::nullopt;
  const SUVector3D area = areaVector(polygon);
  const double size = length(area);
  const double extent = extentOf(polygon);
  // A sliver whose width is lost in rounding has no direction to speak of.
  if (!(size > 1e-10 * extent * extent) || !std::isfinite(size)) return std::nullopt;
  const SUVector3D n = area * (1.0 / size);
  double sum = 0;
  for (const SUPoint3D& p : polygon) sum += dot(p - polygon[0], n);
  const double offset = dot(polygon[0], n) + sum / static_cast<double>(polygon.size());
  return SUPlane3D{n.x, n.y, n.z, -offset};
}

double planarTolerance(std::span<const SUPoint3D> polygon) {
  const double extent = extentOf(polygon);
  return std::max(std::min(1e-3, 1e-4 * extent), 1e-6 * extent);
}

bool isPlanar(std::span<const SUPoint3D> polygon, const SUPlane3D& plane) {
  const double tolerance = planarTolerance(polygon);
  return std::all_of(polygon.begin(), polygon.end(), [&](const SUPoint3D& p) {
    return std::abs(dot(p, normalOf(plane)) + plane.d) <= tolerance;
  });
}

Axes axesOf(const SUVector3D& normal) {
  const SUVector3D up{0, 0, 1};
  const SUVector3D side = cross(up, normal);
  const SUVector3D x = length(side) < 1e-3 ? SUVector3D{1, 0, 0} : unit(side);
  // On a floor, x is turned into the plane; elsewhere it lies in it already.
  const SUVector3D y = unit(cross(normal, x));
  return {cross(y, normal), y};
}

SUTransformation identity() {
  return {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
}

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

double determinant(const SUTransformation& t) {
  return dot(column(t, 0), cross(column(t, 1), column(t, 2)));
}

std::optional<SUTransformation> inverse(const SUTransformation& t) {
  // Where the fourth row scales, it scales all of it.
  const double w = t.values[15] != 0 ? t.values[15] : 1;
  const SUVector3D x = column(t, 0) * (1 / w);
  const SUVector3D y = column(t, 1) * (1 / w);
  const SUVector3D z = column(t, 2) * (1 / w);
  const SUVector3D at = column(t, 3) * (1 / w);
  const double size = dot(x, cross(y, z));
  if (!(std::abs(size) > 1e-30) || !std::isfinite(size)) return std::nullopt;
  const SUVector3D rows[3] = {cross(y, z) * (1 / size), cross(z, x) * (1 / size),
                              cross(x, y) * (1 / size)};
  SUTransformation result = identity();
  for (int r = 0; r < 3; ++r) {
    result.values[r] = rows[r].x;
    result.values[4 + r] = rows[r].y;
    result.values[8 + r] = rows[r].z;
    result.values[12 + r] = -dot(rows[r], at);
  }
  return result;
}

SUPoint3D apply(const SUTransformation& t, const SUPoint3D& p) {
  const double* m = t.values;
  const SUPoint3D q{m[0] * p.x + m[4] * p.y + m[8] * p.z + m[12],
                    m[1] * p.x + m[5] * p.y + m[9] * p.z + m[13],
                    m[2] * p.x + m[6] * p.y + m[10] * p.z + m[14]};
  const double w = m[3] * p.x + m[7] * p.y + m[11] * p.z + m[15];
  return w == 1.0 || w == 0.0 ? q : SUPoint3D{q.x / w, q.y / w, q.z / w};
}

SUVector3D column(const SUTransformation& t, int index) {
  return {t.values[index * 4], t.values[index * 4 + 1], t.values[index * 4 + 2]};
}

bool isFinite(const SUTransformation& t) {
  return std::all_of(std::begin(t.values), std::end(t.values),
                     [](double value) { return std::isfinite(value); });
}

void Box::add(const SUPoint3D& p) {
  if (empty_) {
    box_ = {p, p};
    empty_ = false;
    return;
  }
  box_.min_point = {std::min(box_.min_point.x, p.x), std::min(box_.min_point.y, p.y),
                    std::min(box_.min_point.z, p.z)};
  box_.max_point = {std::max(box_.max_point.x, p.x), std::max(box_.max_point.y, p.y),
                    std::max(box_.max_point.z, p.z)};
}

void Box::add(const Box& other, const SUTransformation& placed) {
  if (other.empty_) return;
  const SUPoint3D& lo = other.box_.min_point;
  const SUPoint3D& hi = other.box_.max_point;
  for (int corner = 0; corner < 8; ++corner) {
    add(apply(placed, {(corner & 1) != 0 ? hi.x : lo.x, (corner & 2) != 0 ? hi.y : lo.y,
                       (corner & 4) != 0 ? hi.z : lo.z}));
  }
}

}  // namespace modelhost
