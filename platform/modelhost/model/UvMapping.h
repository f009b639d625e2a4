// How a texture lies on a plane.
#pragma once

#include <SketchUpAPI/geometry.h>

#include <optional>
#include <span>

#include "model/Geometry.h"

namespace modelhost {

// Size of one tile of a texture in the model.
struct TileSize {
  double width = 1;
  double height = 1;
};

// (u, v, q) as linear functions of a point on the plane; what is seen at the point is the texture
// at (u / q, v / q).
class UvMapping {
 public:
  // Upright on the plane's own axes, the tile's corner at the origin.
  static UvMapping planar(const SUVector3D& normal, const TileSize& tile);
  // Through 1 to 4 pairs of points (of which only what is in the plane counts) and texture
  // coordinates: 1 shifts the planar mapping, 2 scale and turn it too, 3 give any affine mapping,
  // 4 a projective one. None when the points do not determine it.
  static std::optional<UvMapping> through(std::span<const SUPoint3D> points,
                                          std::span<const SUPoint2D> uvs, const SUVector3D& normal,
                                          const TileSize& tile);
  // The unit square over a rectangle of the plane's own axes.
  static UvMapping overRectangle(const Axes& axes, const SUPoint2D& low, const SUPoint2D& high);

  // The same on a plane from which `back` leads to this one's.
  UvMapping after(const SUTransformation& back) const;

  SUUVQ at(const SUPoint3D& p) const;
  bool affine() const;

 private:
  // Rows u, v, q over (x, y, z, 1).
  double rows_[3][4] = {};
};

}  // namespace modelhost
