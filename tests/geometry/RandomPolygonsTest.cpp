// The own triangulation against another triangulator, over polygons of every kind that a model may
// hold.
#include <GL/glu.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "ScriptedHost.h"
#include "geometry/Tessellation.h"

namespace quellix {
namespace {

using Ring = std::vector<glm::dvec2>;

constexpr int kPolygons = 24000;
constexpr double kPi = 3.14159265358979323846;

enum Kind { kStar, kSliver, kCollinear, kRepeated, kKeyhole, kCrossing, kKinds };
const char* const kKindNames[kKinds] = {"star",     "sliver",  "collinear",
                                        "repeated", "keyhole", "crossing"};

struct Polygon {
  Kind kind;
  Ring outline;
  std::vector<Ring> holes;
  std::vector<Ring> openings;
};

class Generator {
 public:
  explicit Generator(std::uint32_t seed) : random(seed) {}

  double Between(double low, double high) {
    return low + (high - low) * static_cast<double>(random() >> 5) / (1 << 27);
  }
  int Below(int limit) { return static_cast<int>(random() % static_cast<std::uint32_t>(limit)); }

  Polygon Make(Kind kind) {
    Polygon polygon{kind, {}, {}, {}};
    const int corners = kind == kKeyhole ? 12 + Below(20) : 3 + Below(38);
    polygon.outline = Star({0, 0}, corners, 6, 10);
    // From 12 corners on, no side comes nearer to the middle than the holes reach.
    if (corners >= 12 && kind != kKeyhole && kind != kCrossing) AddHoles(polygon);
    switch (kind) {
      case kSliver: {
        const double flat = std::pow(10.0, -Between(2, 4));
        Scale(polygon, flat);
        break;
      }
      case kCollinear:
        polygon.outline = WithMidpoints(polygon.outline);
        break;
      case kRepeated: {
        const auto at = polygon.outline.begin() + Below(corners);
        polygon.outline.insert(at, *at);
        break;
      }
      case kKeyhole:
        AddKeyhole(polygon.outline);
        break;
      case kCrossing:
        std::shuffle(polygon.outline.begin(), polygon.outline.end(), random);
        break;
      default:
        break;
    }
    return polygon;
  }

 private:
  Ring Star(const glm::dvec2& middle, int corners, double low, double high) {
    Ring ring;
    for (int i = 0; i < corners; ++i) {
      const double angle = 2 * kPi * (i + Between(0.0, 0.6)) / corners;
      const double radius = Between(low, high);
      ring.push_back(middle + radius * glm::dvec2(std::cos(angle), std::sin(angle)));
    }
    return ring;
  }
  void AddHoles(Polygon& polygon) {
    for (int quadrant = 0; quadrant < 4; ++quadrant) {
      const int what = Below(4);
      if (what < 2) continue;
      const glm::dvec2 middle(quadrant % 2 == 0 ? 1.4 : -1.4, quadrant / 2 == 0 ? 1.4 : -1.4);
      Ring hole = Star(middle, 3 + Below(6), 0.3, 1.2);
      if (Below(2) == 0) std::reverse(hole.begin(), hole.end());
      (what == 2 ? polygon.holes : polygon.openings).push_back(std::move(hole));
    }
  }
  static void Scale(Polygon& polygon, double y) {
    for (glm::dvec2& p : polygon.outline) p.y *= y;
    for (std::vector<Ring>* rings : {&polygon.holes, &polygon.openings}) {
      for (Ring& ring : *rings) {
        for (glm::dvec2& p : ring) p.y *= y;
      }
    }
  }
  Ring WithMidpoints(const Ring& ring) {
    Ring more;
    for (std::size_t i = 0; i < ring.size(); ++i) {
      const glm::dvec2& next = ring[(i + 1) % ring.size()];
      const int pieces = 1 + Below(4);
      for (int k = 0; k < pieces; ++k) {
        more.push_back(ring[i] + (next - ring[i]) * (static_cast<double>(k) / pieces));
      }
    }
    return more;
  }
  // Inwards to a ring round the middle, around it, and back the same way.
  void AddKeyhole(Ring& outline) {
    const glm::dvec2 gate = outline.front();
    const double turn = std::atan2(gate.y, gate.x);
    const int corners = 4 + Below(5);
    Ring inside;
    for (int i = 0; i <= corners; ++i) {
      const double angle = turn - 2 * kPi * (i % corners) / corners;
      inside.push_back(2.0 * glm::dvec2(std::cos(angle), std::sin(angle)));
    }
    inside.push_back(gate);
    outline.insert(outline.begin() + 1, inside.begin(), inside.end());
  }

  std::mt19937 random;
};

// The other triangulator, which takes every ring as a contour of an odd-even fill.
class Reference {
 public:
  Reference() : tess(gluNewTess()) {
    gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_ODD);
    gluTessNormal(tess, 0, 0, 1);
    using Function = void (*)();
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<Function>(OnVertex));
    gluTessCallback(tess, GLU_TESS_COMBINE_DATA, reinterpret_cast<Function>(OnCombine));
    // With this one every primitive is a list of triangles.
    gluTessCallback(tess, GLU_TESS_EDGE_FLAG_DATA, reinterpret_cast<Function>(OnEdgeFlag));
  }
  ~Reference() { gluDeleteTess(tess); }
  Reference(const Reference&) = delete;
  Reference& operator=(const Reference&) = delete;

  double Area(const Polygon& polygon) {
    points.clear();
    corners.clear();
    gluTessBeginPolygon(tess, this);
    Add(polygon.outline);
    for (const Ring& ring : polygon.holes) Add(ring);
    for (const Ring& ring : polygon.openings) Add(ring);
    gluTessEndPolygon(tess);
    double area = 0.0;
    for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
      const auto& [a, b, c] = std::tie(corners[i], corners[i + 1], corners[i + 2]);
      area += std::abs((b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x)) / 2;
    }
    return area;
  }

 private:
  void Add(const Ring& ring) {
    gluTessBeginContour(tess);
    for (const glm::dvec2& p : ring) {
      points.push_back({p.x, p.y, 0});
      gluTessVertex(tess, points.back().data(), points.back().data());
    }
    gluTessEndContour(tess);
  }
  static void OnVertex(void* vertex, void* self) {
    const auto* p = static_cast<const double*>(vertex);
    static_cast<Reference*>(self)->corners.push_back({p[0], p[1]});
  }
  static void OnCombine(GLdouble at[3], void* [4], GLfloat[4], void** out, void* self) {
    auto& points = static_cast<Reference*>(self)->points;
    points.push_back({at[0], at[1], at[2]});
    *out = points.back().data();
  }
  static void OnEdgeFlag(GLboolean, void*) {}

  GLUtesselator* tess;
  std::deque<std::array<double, 3>> points;
  Ring corners;
};

// A plane in space, by its axes.
struct Plane {
  glm::dvec3 origin, x, y;

  static Plane Random(Generator& random) {
    const auto direction = [&] {
      return glm::normalize(
          glm::dvec3(random.Between(-1, 1), random.Between(-1, 1), random.Between(0.1, 1)));
    };
    const glm::dvec3 normal = direction();
    const glm::dvec3 x = glm::normalize(glm::cross(normal, glm::dvec3(normal.y, normal.z, -1.0)));
    return {glm::dvec3(random.Between(-50, 50)), x, glm::cross(normal, x)};
  }
  glm::dvec3 At(const glm::dvec2& p) const { return origin + p.x * x + p.y * y; }
  std::vector<glm::dvec3> At(const Ring& ring) const {
    std::vector<glm::dvec3> points;
    for (const glm::dvec2& p : ring) points.push_back(At(p));
    return points;
  }
};

bool Tessellate(const Polygon& polygon, const Plane& plane, TessMesh& mesh) {
  scripted::Host host;
  std::vector<std::vector<glm::dvec3>> holes;
  for (const Ring& hole : polygon.holes) holes.push_back(plane.At(hole));
  scripted::Face* face = host.AddFace(plane.At(polygon.outline), holes);
  const glm::dvec3 normal = glm::cross(plane.x, plane.y);
  face->plane = glm::dvec4(normal, 0.0);
  for (const Ring& opening : polygon.openings) face->openings.push_back(plane.At(opening));
  FaceCollector collector;
  return TessellateFace(collector, collector.CollectSmoothingGroup(face->ref()), mesh);
}

std::size_t Points(const std::vector<Ring>& rings) {
  std::size_t points = 0;
  for (const Ring& ring : rings) points += ring.size();
  return points;
}

TEST(TessellateFace, AgreesWithAnotherTriangulator) {
  Generator random(20);
  Reference reference;
  int compared = 0;
  for (int number = 0; number < kPolygons; ++number) {
    const auto kind = static_cast<Kind>(number % kKinds);
    const Polygon polygon = random.Make(kind);
    const Plane plane = Plane::Random(random);
    SCOPED_TRACE(std::string(kKindNames[kind]) + " " + std::to_string(number));
    TessMesh mesh;
    const bool made = Tessellate(polygon, plane, mesh);
    for (const std::uint32_t index : mesh.indexes) ASSERT_LT(index, mesh.positions.size());
    if (kind == kCrossing) continue;
    ASSERT_TRUE(made);

    const glm::dvec3 normal = glm::cross(plane.x, plane.y);
    double area = 0.0;
    double along = 0.0;
    for (std::size_t i = 0; i < mesh.indexes.size(); i += 3) {
      const Point& a = mesh.positions[mesh.indexes[i]];
      const Point cross = glm::cross(mesh.positions[mesh.indexes[i + 1]] - a,
                                     mesh.positions[mesh.indexes[i + 2]] - a);
      area += glm::length(cross) / 2;
      along += glm::dot(cross, normal) / 2;
    }
    const double wanted = reference.Area(polygon);
    ASSERT_NEAR(area, wanted, 1e-6 * wanted);
    ASSERT_NEAR(along, wanted, 1e-6 * wanted) << "triangles look the other way";
    if (kind == kStar || kind == kSliver) {
      const std::size_t rings = polygon.holes.size() + polygon.openings.size();
      const std::size_t points =
          polygon.outline.size() + Points(polygon.holes) + Points(polygon.openings);
      ASSERT_EQ(mesh.indexes.size() / 3, points + 2 * rings - 2);
    }
    ++compared;
  }
  EXPECT_EQ(compared, kPolygons / kKinds * (kKinds - 1));
}

}  // namespace
}  // namespace quellix
