#include "model/UvMapping.h"

#include <algorithm>
#include <array>
#include <utility>

namespace modelhost {

namespace {

// Solves `a` x = `b` in place by elimination with pivoting; false when `a` is singular.
template <std::size_t n>
bool solve(std::array<std::array<double, n>, n>& a, std::array<double, n>& b) {
  for (std::size_t c = 0; c < n; ++c) {
    std::size_t best = c;
    for (std::size_t r = c + 1; r < n; ++r) {
      if (std::abs(a[r][c]) > std::abs(a[best][c])) best = r;
    }
    if (!(std::abs(a[best][c]) > 1e-12)) return false;
    std::swap(a[c], a[best]);
    std::swap(b[c], b[best]);
    for (std::size_t r = 0; r < n; ++r) {
      if (r == c) continue;
      const double f = a[r][c] / a[c][c];
      for (std::size_t k = c; k < n; ++k) a[r][k] -= f * a[c][k];
      b[r] -= f * b[c];
    }
  }
  for (std::size_t c = 0; c < n; ++c) b[c] /= a[c][c];
  return true;
}

using Matrix3 = std::array<std::array<double, 3>, 3>;

// Similarity in lengths on the texture, so that the picture keeps its proportions.
std::optional<Matrix3> similarity(std::span<const SUPoint2D> p, std::span<const SUPoint2D> uv,
                                  const TileSize& tile) {
  const double dx = p[1].x - p[0].x;
  const double dy = p[1].y - p[0].y;
  const double du = (uv[1].x - uv[0].x) * tile.width;
  const double dv = (uv[1].y - uv[0].y) * tile.height;
  const double square = dx * dx + dy * dy;
  if (!(square > 0) || !(du * du + dv * dv > 0)) return std::nullopt;
  const double c = (dx * du + dy * dv) / square;
  const double s = (dx * dv - dy * du) / square;
  const double a = c / tile.width;
  const double b = -s / tile.width;
  const double d = s / tile.height;
  const double e = c / tile.height;
  return Matrix3{{{a, b, uv[0].x - a * p[0].x - b * p[0].y},
                  {d, e, uv[0].y - d * p[0].x - e * p[0].y},
                  {0, 0, 1}}};
}

std::optional<Matrix3> affineThrough(std::span<const SUPoint2D> p, std::span<const SUPoint2D> uv) {
  Matrix3 result{{{0, 0, 0}, {0, 0, 0}, {0, 0, 1}}};
  for (std::size_t row = 0; row < 2; ++row) {
    Matrix3 a{};
    std::array<double, 3> b{};
    for (std::size_t i = 0; i < 3; ++i) {
      a[i] = {p[i].x, p[i].y, 1};
      b[i] = row == 0 ? uv[i].x : uv[i].y;
    }
    if (!solve(a, b)) return std::nullopt;
    result[row] = b;
  }
  return result;
}

std::optional<Matrix3> projectiveThrough(std::span<const SUPoint2D> p,
                                         std::span<const SUPoint2D> uv) {
  std::array<std::array<double, 8>, 8> a{};
  std::array<double, 8> b{};
  for (std::size_t i = 0; i < 4; ++i) {
    const auto [x, y] = p[i];
    const auto [u, v] = uv[i];
    a[2 * i] = {x, y, 1, 0, 0, 0, -u * x, -u * y};
    a[2 * i + 1] = {0, 0, 0, x, y, 1, -v * x, -v * y};
    b[2 * i] = u;
    b[2 * i + 1] = v;
  }
  if (!solve(a, b)) return std::nullopt;
  Matrix3 m{{{b[0], b[1], b[2]}, {b[3], b[4], b[5]}, {b[6], b[7], 1}}};
  // The horizon of a distorted texture may not cross the quad that defines it.
  for (std::size_t i = 0; i < 4; ++i) {
    if (!(m[2][0] * p[i].x + m[2][1] * p[i].y + 1 > 1e-9)) return std::nullopt;
  }
  if (std::abs(m[2][0]) + std::abs(m[2][1]) < 1e-9) m[2] = {0, 0, 1};
  return m;
}

}  // namespace

UvMapping UvMapping::planar(const SUVector3D& normal, const TileSize& tile) {
  const Axes axes = axesOf(normal);
  UvMapping mapping;
  const SUVector3D u = axes.x * (1.0 / tile.width);
  const SUVector3D v = axes.y * (1.0 / tile.height);
  std::ranges::copy(std::array{u.x, u.y, u.z, 0.0}, mapping.rows_[0]);
  std::ranges::copy(std::array{v.x, v.y, v.z, 0.0}, mapping.rows_[1]);
  mapping.rows_[2][3] = 1;
  return mapping;
}

UvMapping UvMapping::overRectangle(const Axes& axes, const SUPoint2D& low, const SUPoint2D& high) {
  UvMapping mapping;
  const double width = high.x - low.x;
  const double height = high.y - low.y;
  const SUVector3D u = axes.x * (1.0 / width);
  const SUVector3D v = axes.y * (1.0 / height);
  std::ranges::copy(std::array{u.x, u.y, u.z, -low.x / width}, mapping.rows_[0]);
  std::ranges::copy(std::array{v.x, v.y, v.z, -low.y / height}, mapping.rows_[1]);
  mapping.rows_[2][3] = 1;
  return mapping;
}

std::optional<UvMapping> UvMapping::through(std::span<const SUPoint3D> points,
                                            std::span<const SUPoint2D> uvs,
                                            const SUVector3D& normal, const TileSize& tile) {
  if (points.empty() || points.size() > 4 || points.size() != uvs.size()) return std::nullopt;
  if (points.size() == 1) {
    UvMapping mapping = planar(normal, tile);
    const SUUVQ there = mapping.at(points[0]);
    mapping.rows_[0][3] = uvs[0].x - there.u;
    mapping.rows_[1][3] = uvs[0].y - there.v;
    return mapping;
  }
  // In the plane's axes, about the first point and in units of the points' spread: the equations
  // are then well conditioned whatever the size and place of the face.
  const Axes axes = axesOf(normal);
  double spread = 0;
  for (const SUPoint3D& p : points) spread = std::max(spread, length(p - points[0]));
  if (!(spread > 0) || !std::isfinite(spread)) return std::nullopt;
  std::array<SUPoint2D, 4> flat{};
  for (std::size_t i = 0; i < points.size(); ++i) {
    const SUVector3D d = (points[i] - points[0]) * (1.0 / spread);
    flat[i] = {dot(d, axes.x), dot(d, axes.y)};
  }
  const std::span<const SUPoint2D> p(flat.data(), points.size());
  const auto m = points.size() == 2
                     ? similarity(p, uvs, {tile.width / spread, tile.height / spread})
                 : points.size() == 3 ? affineThrough(p, uvs)
                                      : projectiveThrough(p, uvs);
  if (!m) return std::nullopt;
  UvMapping mapping;
  const SUPoint3D& origin = points[0];
  for (std::size_t row = 0; row < 3; ++row) {
    const SUVector3D g = (axes.x * (*m)[row][0] + axes.y * (*m)[row][1]) * (1.0 / spread);
    std::ranges::copy(std::array{g.x, g.y, g.z, (*m)[row][2] - dot(origin, g)}, mapping.rows_[row]);
  }
  return mapping;
}

UvMapping UvMapping::after(const SUTransformation& back) const {
  UvMapping result;
  for (int row = 0; row < 3; ++row) {
    for (int c = 0; c < 4; ++c) {
      double sum = 0;
      for (int k = 0; k < 4; ++k) sum += rows_[row][k] * back.values[c * 4 + k];
      result.rows_[row][c] = sum;
    }
  }
  return result;
}

SUUVQ UvMapping::at(const SUPoint3D& p) const {
  const auto row = [&](int r) {
    return rows_[r][0] * p.x + rows_[r][1] * p.y + rows_[r][2] * p.z + rows_[r][3];
  };
  return {row(0), row(1), row(2)};
}

bool UvMapping::affine() const {
  return rows_[2][0] == 0 && rows_[2][1] == 0 && rows_[2][2] == 0;
}

}  // namespace modelhost
