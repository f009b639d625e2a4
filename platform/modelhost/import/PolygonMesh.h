// Polygons as files hold them - possibly bent, degenerate, not welded - and their way into
// entities, which hold only flat faces with shared edges.
#pragma once

#include <SketchUpAPI/model/defs.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "model/Geometry.h"

namespace modelhost {

struct Polygon {
  // Indexes of points; counter-clockwise seen from the front.
  std::vector<std::uint32_t> corners;
  std::vector<std::vector<std::uint32_t>> holes;
  // Per corner of the outline, or empty.
  std::vector<SUPoint2D> uvs;
  std::vector<SUVector3D> normals;
  SUMaterialRef front = SU_INVALID;
  SUMaterialRef back = SU_INVALID;
};

struct PolygonMesh {
  std::vector<SUPoint3D> points;
  std::vector<Polygon> polygons;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> lines;
  // Where polygons have no normals: an edge between two faces is smooth when they bend by less
  // than this, in degrees. Below 0 no edge is.
  double smoothAngle = 35;
  // May be null.
  SULayerRef layer = SU_INVALID;
  bool hidden = false;
};

// Adds "2 things" to an enumeration; nothing for 0.
void addCount(std::string& text, std::size_t n, const std::string& one, const std::string& many);

// What could not be taken as it was.
struct MeshReport {
  std::size_t notFinite = 0;
  std::size_t degenerate = 0;
  std::string text() const;
};

// Adds the polygons. One that is bent, or on which the texture is, is cut into triangles with
// soft and smooth edges between them.
void addPolygons(SUEntitiesRef entities, const PolygonMesh& mesh, MeshReport& report);

}  // namespace modelhost
