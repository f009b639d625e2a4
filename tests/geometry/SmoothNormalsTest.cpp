#include <cmath>

#include <gtest/gtest.h>

#include "ScriptedHost.h"
#include "geometry/Tessellation.h"

namespace quellix {
namespace {

constexpr double kPi = 3.14159265358979323846;

Point NormalAt(FaceCollector& collector, scripted::Face* face, scripted::Vertex* vertex) {
  return SmoothVertexNormal(collector, collector.CollectSmoothingGroup(face->ref()), {vertex});
}

void ExpectNear(const Point& got, const Point& wanted, double tolerance = 1e-12) {
  EXPECT_NEAR(glm::distance(got, wanted), 0.0, tolerance)
      << "got " << got.x << " " << got.y << " " << got.z << ", wanted " << wanted.x << " "
      << wanted.y << " " << wanted.z;
}

// Two squares that meet at the ridge a-b under a right angle, and a triangle on the ridge's far
// side for a third face at the same edge.
struct Roof {
  scripted::Vertex* a;
  scripted::Vertex* b;
  scripted::Vertex* low;
  scripted::Face* flat;
  scripted::Face* wall;

  explicit Roof(scripted::Host& host) {
    a = host.AddVertex({0, 0, 0});
    b = host.AddVertex({1, 0, 0});
    low = host.AddVertex({0, 0, -1});
    flat = host.AddFace({a, b, host.AddVertex({1, 1, 0}), host.AddVertex({0, 1, 0})});  // +z
    wall = host.AddFace({b, a, low, host.AddVertex({1, 0, -1})});                       // -y
  }
};

TEST(SmoothVertexNormal, AcrossSmoothAndHardEdges) {
  scripted::Host host;
  Roof roof(host);
  const Point up(0, 0, 1);
  const Point out(0, -1, 0);
  FaceCollector hard;
  ExpectNear(NormalAt(hard, roof.flat, roof.a), up);
  ExpectNear(NormalAt(hard, roof.wall, roof.a), out);

  host.MakeSmooth(roof.a, roof.b);
  FaceCollector smooth;
  ExpectNear(NormalAt(smooth, roof.flat, roof.a), (up + out) / std::sqrt(2.0));
  ExpectNear(NormalAt(smooth, roof.wall, roof.b), (up + out) / std::sqrt(2.0));
  ExpectNear(NormalAt(smooth, roof.wall, roof.low), out);  // the smooth edge does not touch it

  // The wall looks inwards: it counts turned around for the flat face, and the other way about.
  roof.wall->plane = {0, 1, 0, 0};
  FaceCollector perpendicular;
  ExpectNear(NormalAt(perpendicular, roof.flat, roof.a), (up - out) / std::sqrt(2.0));
  roof.wall->plane = {0, 0.8, -0.6, 0};
  FaceCollector flipped;
  ExpectNear(NormalAt(flipped, roof.flat, roof.a), glm::normalize(Point(0, -0.8, 1.6)));
  ExpectNear(NormalAt(flipped, roof.wall, roof.a), glm::normalize(Point(0, 0.8, -1.6)));

  roof.wall->planeFails = true;
  FaceCollector alone;
  ExpectNear(NormalAt(alone, roof.flat, roof.a), up);
}

TEST(SmoothVertexNormal, WeighsByCornerAngleAlsoAtAnEdgeOfThreeFaces) {
  scripted::Host host;
  Roof roof(host);
  host.MakeSmooth(roof.a, roof.b);
  // A triangle straight up from the ridge; its corner at a has 45 degrees.
  scripted::Face* fin = host.AddFace({roof.a, roof.b, host.AddVertex({1, 0, 1})});  // -y
  FaceCollector collector;
  const Point wanted =
      glm::normalize(Point(0, 0, 1) * (kPi / 2) + Point(0, -1, 0) * (kPi / 2 + kPi / 4));
  ExpectNear(NormalAt(collector, roof.flat, roof.a), wanted);
  ExpectNear(NormalAt(collector, fin, roof.a), wanted);
}

TEST(SmoothVertexNormal, IsTheFacesOwnWhereNoCornerHasAnAngle) {
  scripted::Host host;
  Roof roof(host);
  host.MakeSmooth(roof.a, roof.b);
  // Corner b folds back on itself in both faces.
  roof.flat->loops[0].vertices[2]->position = {0.5, 0, 0};
  roof.wall->loops[0].vertices[3]->position = {0.5, 0, 0};
  FaceCollector collector;
  ExpectNear(NormalAt(collector, roof.flat, roof.b), Point(0, 0, 1));
  ExpectNear(NormalAt(collector, roof.wall, roof.b), Point(0, -1, 0));
}

// Sides with smooth edges between them, hard against the cap.
TEST(SmoothVertexNormal, CreasedCylinder) {
  constexpr int kSides = 12;
  scripted::Host host;
  std::vector<scripted::Vertex*> low, high;
  for (int i = 0; i < kSides; ++i) {
    const double angle = 2 * kPi * i / kSides;
    low.push_back(host.AddVertex({std::cos(angle), std::sin(angle), 0}));
    high.push_back(host.AddVertex({std::cos(angle), std::sin(angle), 3}));
  }
  std::vector<scripted::Face*> sides;
  for (std::size_t i = 0; i < kSides; ++i) {
    const std::size_t next = (i + 1) % kSides;
    sides.push_back(host.AddFace({low[i], low[next], high[next], high[i]}));
    host.MakeSmooth(low[i], high[i]);
  }
  scripted::Face* cap = host.AddFace(high);
  FaceCollector collector;
  for (std::size_t i = 0; i < kSides; ++i) {
    const Point outwards(high[i]->position.x, high[i]->position.y, 0);
    ExpectNear(NormalAt(collector, sides[i], high[i]), outwards);
    ExpectNear(NormalAt(collector, sides[(i + kSides - 1) % kSides], high[i]), outwards);
    ExpectNear(NormalAt(collector, cap, high[i]), Point(0, 0, 1));
  }
}

struct Cone {
  scripted::Vertex* apex;
  std::vector<scripted::Face*> faces;

  Cone(scripted::Host& host, std::size_t sides, double height) {
    apex = host.AddVertex({0, 0, height});
    std::vector<scripted::Vertex*> rim;
    for (std::size_t i = 0; i < sides; ++i) {
      const double angle = 2 * kPi * static_cast<double>(i) / static_cast<double>(sides);
      rim.push_back(host.AddVertex({std::cos(angle), std::sin(angle), 0}));
    }
    for (std::size_t i = 0; i < sides; ++i) {
      faces.push_back(host.AddFace({rim[i], rim[(i + 1) % sides], apex}));
      host.MakeSmooth(rim[i], apex);
    }
  }
};

// Small and large fans are summed in different ways; both must give what symmetry demands.
TEST(SmoothVertexNormal, ApexOfACone) {
  for (const std::size_t sides : {4u, 64u, 65u, 66u, 1000u, 4000u}) {
    SCOPED_TRACE(sides);
    scripted::Host host;
    // Flat: all normals on one side of each other.
    Cone flat(host, sides, 0.5);
    FaceCollector collector;
    for (scripted::Face* face : flat.faces) {
      ExpectNear(NormalAt(collector, face, flat.apex), Point(0, 0, 1));
    }
    // Steep: the far half turns around, and what is left points where the face itself does.
    Cone steep(host, sides, 50.0);
    collector.Clear();
    for (scripted::Face* face : steep.faces) {
      const Point got = NormalAt(collector, face, steep.apex);
      const Point own(face->plane);
      EXPECT_NEAR(glm::length(got), 1.0, 1e-12);
      EXPECT_NEAR(got.x * own.y - got.y * own.x, 0.0, 1e-2) << "in the face's own direction";
      EXPECT_GT(glm::dot(got, own), 0.99);
    }
  }
}

// Which face asks first must not matter, nor how often.
TEST(SmoothVertexNormal, LargeFansDoNotDependOnTheOrderOfAsking) {
  scripted::Host host;
  Cone cone(host, 300, 20.0);
  FaceCollector forwards;
  FaceCollector backwards;
  std::vector<Point> first(cone.faces.size());
  for (std::size_t i = 0; i < cone.faces.size(); ++i) {
    first[i] = NormalAt(forwards, cone.faces[i], cone.apex);
  }
  for (std::size_t i = cone.faces.size(); i-- > 0;) {
    EXPECT_EQ(NormalAt(backwards, cone.faces[i], cone.apex), first[i]);
    EXPECT_EQ(NormalAt(forwards, cone.faces[i], cone.apex), first[i]);
  }
}

}  // namespace
}  // namespace quellix
