#include "import/Shapes.h"
#include "model/Turn.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace modelhost {

namespace {

using Ring = std::vector<std::uint32_t>;

std::uint32_t addPoint(PolygonMesh& mesh, const SUPoint3D& p) {
  mesh.points.push_back(p);
  return static_cast<std::uint32_t>(mesh.points.size() - 1);
}

void addPolygon(PolygonMesh& mesh, Ring corners) {
  mesh.polygons.emplace_back().corners = std::move(corners);
}

Ring addRing(PolygonMesh& mesh, const SUPoint3D& center, double radius, std::size_t sides) {
  Ring ring;
  for (std::size_t i = 0; i < sides; ++i) {
    const Turn turn(2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(sides));
    ring.push_back(
        addPoint(mesh, {center.x + radius * turn.cos, center.y + radius * turn.sin, center.z}));
  }
  return ring;
}

// Walls between two rings of one size; a ring of one point makes triangles.
void addWalls(PolygonMesh& mesh, const Ring& low, const Ring& high) {
  const std::size_t n = std::max(low.size(), high.size());
  for (std::size_t i = 0; i < n; ++i) {
    const std::size_t next = (i + 1) % n;
    Ring wall{low[i % low.size()]};
    if (low.size() > 1) wall.push_back(low[next]);
    wall.push_back(high[next % high.size()]);
    if (high.size() > 1) wall.push_back(high[i]);
    addPolygon(mesh, std::move(wall));
  }
}

Ring reversed(Ring ring) {
  std::reverse(ring.begin(), ring.end());
  return ring;
}

}  // namespace

void addBox(PolygonMesh& mesh, const SUPoint3D& low, const SUPoint3D& high) {
  const std::vector<SUPoint3D> floor{
      low, {high.x, low.y, low.z}, {high.x, high.y, low.z}, {low.x, high.y, low.z}};
  addExtrusion(mesh, {floor}, {0, 0, high.z - low.z});
}

void addExtrusion(PolygonMesh& mesh, const std::vector<std::vector<SUPoint3D>>& outlines,
                  const SUVector3D& by) {
  Polygon bottom;
  Polygon top;
  for (std::size_t k = 0; k < outlines.size(); ++k) {
    std::vector<SUPoint3D> outline = outlines[k];
    // The outer outline runs so that its front faces the way it is moved; holes the other way.
    if ((dot(areaVector(outline), by) < 0) == (k == 0)) {
      std::reverse(outline.begin(), outline.end());
    }
    Ring low;
    Ring high;
    for (const SUPoint3D& p : outline) {
      low.push_back(addPoint(mesh, p));
      high.push_back(addPoint(mesh, p + by));
    }
    addWalls(mesh, low, high);
    if (k == 0) {
      bottom.corners = reversed(low);
      top.corners = high;
    } else {
      bottom.holes.push_back(reversed(low));
      top.holes.push_back(high);
    }
  }
  mesh.polygons.push_back(std::move(bottom));
  mesh.polygons.push_back(std::move(top));
}

void addCylinder(PolygonMesh& mesh, const SUPoint3D& foot, double radius, double top, double height,
                 std::size_t sides) {
  const SUPoint3D head{foot.x, foot.y, foot.z + height};
  const Ring low = addRing(mesh, foot, radius, sides);
  const Ring high = top > 0 ? addRing(mesh, head, top, sides) : Ring{addPoint(mesh, head)};
  addWalls(mesh, low, high);
  addPolygon(mesh, reversed(low));
  if (high.size() > 1) addPolygon(mesh, high);
}

void addSphere(PolygonMesh& mesh, const SUPoint3D& center, double radius, std::size_t sides) {
  const std::size_t rings = std::max<std::size_t>(sides / 2, 2);
  Ring below{addPoint(mesh, {center.x, center.y, center.z - radius})};
  for (std::size_t i = 1; i <= rings; ++i) {
    const Turn turn(std::numbers::pi * (static_cast<double>(i) / static_cast<double>(rings) - 0.5));
    const SUPoint3D middle{center.x, center.y, center.z + radius * turn.sin};
    const Ring above =
        i == rings ? Ring{addPoint(mesh, middle)} : addRing(mesh, middle, radius * turn.cos, sides);
    addWalls(mesh, below, above);
    below = above;
  }
}

}  // namespace modelhost
