#pragma once

#include <cmath>

namespace modelhost {

// Cosine and sine of an angle in radians, rounded to 2^-44. What the libraries of two systems give
// differs in the last bits, above all instead of 0; rounded, a model has the same points everywhere.
struct Turn {
  double cos;
  double sin;

  explicit Turn(double angle) : cos(rounded(std::cos(angle))), sin(rounded(std::sin(angle))) {}

 private:
  static double rounded(double value) {
    constexpr double kSteps = 0x1p44;
    return std::nearbyint(value * kSteps) / kSteps;
  }
};

}  // namespace modelhost
