#include "app/VectorMath.h"

#include <cmath>

namespace kvapp {

namespace {

// How far from right angles the columns of a matrix may be, as a cosine.
constexpr double kShear = 1e-4;
constexpr double kSmallestScale = 1e-9;

double Dot(const Vector3& a, const Vector3& b) {
  return double{a[0]} * b[0] + double{a[1]} * b[1] + double{a[2]} * b[2];
}

Vector3 Column(const Matrix& matrix, std::size_t column) {
  return {matrix[column * 4], matrix[column * 4 + 1], matrix[column * 4 + 2]};
}

Vector3 Scaled(const Vector3& vector, double factor) {
  return {static_cast<float>(vector[0] * factor), static_cast<float>(vector[1] * factor),
          static_cast<float>(vector[2] * factor)};
}

}  // namespace

Vector3 Subtract(const Vector3& a, const Vector3& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

Vector3 Cross(const Vector3& a, const Vector3& b) {
  const auto term = [&](std::size_t i, std::size_t j) {
    return static_cast<float>(double{a[i]} * b[j] - double{a[j]} * b[i]);
  };
  return {term(1, 2), term(2, 0), term(0, 1)};
}

double Length(const Vector3& vector) {
  return std::sqrt(Dot(vector, vector));
}

Vector3 Normalized(const Vector3& vector, const Vector3& otherwise) {
  const double length = Length(vector);
  return length > 1e-12 ? Scaled(vector, 1 / length) : otherwise;
}

Vector3 TransformPoint(const Matrix& m, const Vector3& p) {
  Vector3 result;
  for (std::size_t row = 0; row < 3; ++row) {
    result[row] = m[row] * p[0] + m[4 + row] * p[1] + m[8 + row] * p[2] + m[12 + row];
  }
  return result;
}

double Determinant(const Matrix& matrix) {
  const double factors[] = {matrix[0], matrix[4], matrix[8]};
  const auto minor = [&](std::size_t a, std::size_t b) {
    return double{matrix[a * 4 + 1]} * matrix[b * 4 + 2] -
           double{matrix[b * 4 + 1]} * matrix[a * 4 + 2];
  };
  return factors[0] * minor(1, 2) - factors[1] * minor(0, 2) + factors[2] * minor(0, 1);
}

Vector3 TransformNormal(const Matrix& matrix, const Vector3& normal) {
  const Vector3 x = Column(matrix, 0), y = Column(matrix, 1), z = Column(matrix, 2);
  const double determinant = Determinant(matrix);
  const bool invertible = std::abs(determinant) > 1e-12;
  const Vector3 a = invertible ? Cross(y, z) : x;
  const Vector3 b = invertible ? Cross(z, x) : y;
  const Vector3 c = invertible ? Cross(x, y) : z;
  const double sign = invertible && determinant < 0 ? -1 : 1;
  Vector3 result;
  for (std::size_t row = 0; row < 3; ++row) {
    result[row] =
        static_cast<float>(sign * (double{a[row]} * normal[0] + double{b[row]} * normal[1] +
                                   double{c[row]} * normal[2]));
  }
  return result;
}

Quaternion RotationOf(const Vector3& x, const Vector3& y, const Vector3& z) {
  const double trace = double{x[0]} + y[1] + z[2];
  Quaternion q;
  if (trace > 0) {
    const double s = std::sqrt(trace + 1) * 2;
    q = {(y[2] - z[1]) / s, (z[0] - x[2]) / s, (x[1] - y[0]) / s, s / 4};
  } else if (x[0] > y[1] && x[0] > z[2]) {
    const double s = std::sqrt(1.0 + x[0] - y[1] - z[2]) * 2;
    q = {s / 4, (x[1] + y[0]) / s, (z[0] + x[2]) / s, (y[2] - z[1]) / s};
  } else if (y[1] > z[2]) {
    const double s = std::sqrt(1.0 + y[1] - x[0] - z[2]) * 2;
    q = {(x[1] + y[0]) / s, s / 4, (y[2] + z[1]) / s, (z[0] - x[2]) / s};
  } else {
    const double s = std::sqrt(1.0 + z[2] - x[0] - y[1]) * 2;
    q = {(z[0] + x[2]) / s, (y[2] + z[1]) / s, s / 4, (x[1] - y[0]) / s};
  }
  const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  for (double& value : q) value /= length;
  return q;
}

Quaternion RotationTowards(const Vector3& direction, const Vector3& up) {
  const Vector3 z = Normalized(Scaled(direction, -1), {0, 0, 1});
  Vector3 x = Cross(up, z);
  if (Length(x) < 1e-6) x = Cross(std::abs(z[2]) < 0.9f ? Vector3{0, 0, 1} : Vector3{0, 1, 0}, z);
  x = Normalized(x, {1, 0, 0});
  return RotationOf(x, Cross(z, x), z);
}

std::optional<Decomposed> Decompose(const Matrix& matrix) {
  std::array<Vector3, 3> columns;
  std::array<double, 3> lengths;
  for (std::size_t i = 0; i < 3; ++i) {
    columns[i] = Column(matrix, i);
    lengths[i] = Length(columns[i]);
    if (lengths[i] < kSmallestScale) return std::nullopt;
    columns[i] = Scaled(columns[i], 1 / lengths[i]);
  }
  if (std::abs(Dot(columns[0], columns[1])) > kShear ||
      std::abs(Dot(columns[0], columns[2])) > kShear ||
      std::abs(Dot(columns[1], columns[2])) > kShear) {
    return std::nullopt;
  }
  if (Determinant(matrix) < 0) {
    lengths[0] = -lengths[0];
    columns[0] = Scaled(columns[0], -1);
  }
  return Decomposed{{matrix[12], matrix[13], matrix[14]},
                    RotationOf(columns[0], columns[1], columns[2]),
                    {static_cast<float>(lengths[0]), static_cast<float>(lengths[1]),
                     static_cast<float>(lengths[2])}};
}

}  // namespace kvapp
