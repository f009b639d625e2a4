#include "model/Triangulate.h"

#include <GL/glu.h>

#include <cstdint>
#include <memory>
#include <utility>

namespace modelhost {

namespace {

struct Collector {
  Triangulation result;
  // Indexes of the triangle that is being received.
  std::vector<std::size_t> pending;
};

// The tessellator carries an index where it thinks it carries a pointer.
void* tokenOf(std::size_t index) {
  return reinterpret_cast<void*>(index);
}

void onVertex(void* token, void* context) {
  auto& collector = *static_cast<Collector*>(context);
  collector.pending.push_back(reinterpret_cast<std::uintptr_t>(token));
  if (collector.pending.size() < 3) return;
  collector.result.triangles.push_back(
      {collector.pending[0], collector.pending[1], collector.pending[2]});
  collector.pending.clear();
}

// Asking for this makes the tessellator give separate triangles, no strips or fans.
void onEdgeFlag(GLboolean, void*) {}

void onCombine(GLdouble place[3], void* [4], GLfloat[4], void** token, void* context) {
  auto& points = static_cast<Collector*>(context)->result.points;
  *token = tokenOf(points.size());
  points.push_back({place[0], place[1], place[2]});
}

using Callback = void (*)();
template <class F>
void setCallback(GLUtesselator* tess, GLenum which, F f) {
  gluTessCallback(tess, which, reinterpret_cast<Callback>(f));
}

void orient(Triangulation& mesh, const SUVector3D& normal) {
  SUVector3D sum{0, 0, 0};
  for (const auto& [a, b, c] : mesh.triangles) {
    sum = sum + cross(mesh.points[b] - mesh.points[a], mesh.points[c] - mesh.points[a]);
  }
  if (dot(sum, normal) >= 0) return;
  for (auto& triangle : mesh.triangles) std::swap(triangle[1], triangle[2]);
}

}  // namespace

Triangulation triangulate(std::span<const std::vector<SUPoint3D>> outlines,
                          const SUVector3D& normal) {
  Collector collector;
  auto& points = collector.result.points;
  for (const auto& outline : outlines) points.insert(points.end(), outline.begin(), outline.end());
  if (points.empty()) return {};

  const std::unique_ptr<GLUtesselator, decltype(&gluDeleteTess)> tess(gluNewTess(), &gluDeleteTess);
  setCallback(tess.get(), GLU_TESS_VERTEX_DATA, &onVertex);
  setCallback(tess.get(), GLU_TESS_EDGE_FLAG_DATA, &onEdgeFlag);
  setCallback(tess.get(), GLU_TESS_COMBINE_DATA, &onCombine);
  gluTessProperty(tess.get(), GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_ODD);
  gluTessNormal(tess.get(), normal.x, normal.y, normal.z);

  // Relative to the first point: the tessellator compares in single precision in places.
  const SUPoint3D origin = points[0];
  gluTessBeginPolygon(tess.get(), &collector);
  std::size_t index = 0;
  for (const auto& outline : outlines) {
    gluTessBeginContour(tess.get());
    for (const SUPoint3D& p : outline) {
      // The tessellator copies the coordinates.
      GLdouble place[3] = {p.x - origin.x, p.y - origin.y, p.z - origin.z};
      gluTessVertex(tess.get(), place, tokenOf(index++));
    }
    gluTessEndContour(tess.get());
  }
  const std::size_t given = points.size();
  gluTessEndPolygon(tess.get());
  for (std::size_t i = given; i < points.size(); ++i) {
    points[i] = points[i] + SUVector3D{origin.x, origin.y, origin.z};
  }
  orient(collector.result, normal);
  return std::move(collector.result);
}

}  // namespace modelhost
