#pragma once

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "app/SceneTypes.h"

// The little vector arithmetic that the outputs need.

namespace kvapp {

struct Bounds {
  Vector3 low = {std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
                 std::numeric_limits<float>::max()};
  Vector3 high = {std::numeric_limits<float>::lowest(), std::numeric_limits<float>::lowest(),
                  std::numeric_limits<float>::lowest()};

  bool Empty() const { return low[0] > high[0]; }
  void Add(const Vector3& point) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low[axis] = std::min(low[axis], point[axis]);
      high[axis] = std::max(high[axis], point[axis]);
    }
  }
};

Vector3 Subtract(const Vector3& a, const Vector3& b);
Vector3 Cross(const Vector3& a, const Vector3& b);
double Length(const Vector3& vector);
// `otherwise` when the vector has no direction.
Vector3 Normalized(const Vector3& vector, const Vector3& otherwise);

Vector3 TransformPoint(const Matrix& matrix, const Vector3& point);
// By the inverse transpose, not normalised; by the matrix itself where that has no inverse.
Vector3 TransformNormal(const Matrix& matrix, const Vector3& normal);
// Of the upper left block.
double Determinant(const Matrix& matrix);

// Quaternion x, y, z, w.
using Quaternion = std::array<double, 4>;
// Of the rotation whose columns are the three given unit vectors, at right angles to each other.
Quaternion RotationOf(const Vector3& x, const Vector3& y, const Vector3& z);
// A rotation that turns -Z to the direction; +Y goes to the side of `up`.
Quaternion RotationTowards(const Vector3& direction, const Vector3& up);

struct Decomposed {
  Vector3 translation;
  Quaternion rotation;
  Vector3 scale;
};
// Empty for a matrix that shears or flattens, which is no product of the three.
std::optional<Decomposed> Decompose(const Matrix& matrix);

}  // namespace kvapp
