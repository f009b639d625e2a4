#include "geometry/Tessellation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "ScriptedHost.h"

namespace quellix {
namespace {

constexpr double kPi = 3.14159265358979323846;
using Points = std::vector<glm::dvec3>;

glm::dvec3 Cross(const TessMesh& mesh, std::size_t i) {
  const Point& a = mesh.positions[mesh.indexes[i]];
  return glm::cross(mesh.positions[mesh.indexes[i + 1]] - a,
                    mesh.positions[mesh.indexes[i + 2]] - a);
}

double SignedArea(const TessMesh& mesh, const glm::dvec3& normal) {
  double area = 0.0;
  for (std::size_t i = 0; i + 2 < mesh.indexes.size(); i += 3) {
    area += glm::dot(Cross(mesh, i), normal) / 2;
  }
  return area;
}

double UnsignedArea(const TessMesh& mesh) {
  double area = 0.0;
  for (std::size_t i = 0; i + 2 < mesh.indexes.size(); i += 3)
    area += glm::length(Cross(mesh, i)) / 2;
  return area;
}

bool Tessellate(scripted::Face* face, TessMesh& mesh) {
  FaceCollector collector;
  return TessellateFace(collector, collector.CollectSmoothingGroup(face->ref()), mesh);
}

// Coordinates (x, y) brought onto another plane, keeping handedness.
glm::dvec3 OnPlane(char plane, const glm::dvec3& p) {
  switch (plane) {
    case 'x':
      return {7, p.x, p.y};
    case 'y':
      return {p.y, 7, p.x};
    case 'd':  // normal (1, 1, 0) / sqrt 2: a tie of x and y
      return {-p.x / std::sqrt(2.0), p.x / std::sqrt(2.0), p.y};
    case 'e':  // normal (0, 1, 1) / sqrt 2: a tie of y and z
      return {p.x, -p.y / std::sqrt(2.0), p.y / std::sqrt(2.0)};
    case 't':  // normal (1, 1, 1) / sqrt 3: a tie of all
      return glm::dvec3(-p.x, p.x, 0) / std::sqrt(2.0) +
             glm::dvec3(-p.y, -p.y, 2 * p.y) / std::sqrt(6.0);
    default:
      return p;
  }
}

struct Shape {
  const char* what;
  Points outline;
  std::vector<Points> holes;
  std::vector<Points> openings;
  std::size_t triangles;
  double area;
};

const Shape kShapes[] = {
    {"triangle", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {}, {}, 1, 0.5},
    {"square", {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}}, {}, {}, 2, 4},
    {"straight corner", {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}}, {}, {}, 3, 4},
    {"L", {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 1, 0}, {1, 2, 0}, {0, 2, 0}}, {}, {}, 4, 3},
    {"hole",
     {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}},
     {{{1, 1, 0}, {1, 3, 0}, {3, 3, 0}, {3, 1, 0}}},
     {},
     8,
     12},
    {"hole turning like the outline",
     {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}},
     {{{1, 1, 0}, {3, 1, 0}, {3, 3, 0}, {1, 3, 0}}},
     {},
     8,
     12},
    {"hole and opening",
     {{0, 0, 0}, {6, 0, 0}, {6, 4, 0}, {0, 4, 0}},
     {{{1, 1, 0}, {1, 3, 0}, {2, 3, 0}, {2, 1, 0}}},
     {{{4, 1.25, 0}, {4, 3.25, 0}, {5, 3.25, 0}}},
     13,
     21},
    {"bridged outline (keyhole)",
     {{0, 0, 0},
      {4, 0, 0},
      {4, 4, 0},
      {0, 4, 0},
      {0, 0, 0},
      {1, 1, 0},
      {1, 3, 0},
      {3, 3, 0},
      {3, 1, 0},
      {1, 1, 0}},
     {},
     {},
     8,
     12},
};

TEST(TessellateFace, CoversTheFaceOnceAndTurnsAlongItsNormal) {
  for (const char plane : {'z', 'x', 'y', 'd', 'e', 't'}) {
    for (const bool reversed : {false, true}) {
      for (const Shape& shape : kShapes) {
        SCOPED_TRACE(std::string(shape.what) + " on plane " + plane +
                     (reversed ? ", reversed" : ""));
        const auto bring = [&](Points points) {
          for (glm::dvec3& p : points) p = OnPlane(plane, p);
          if (reversed) std::reverse(points.begin(), points.end());
          return points;
        };
        scripted::Host host;
        std::vector<Points> holes;
        for (const Points& hole : shape.holes) holes.push_back(bring(hole));
        scripted::Face* face = host.AddFace(bring(shape.outline), holes);
        for (const Points& opening : shape.openings) face->openings.push_back(bring(opening));
        TessMesh mesh;
        ASSERT_TRUE(Tessellate(face, mesh));
        const glm::dvec3 normal(face->plane);
        EXPECT_EQ(mesh.indexes.size(), 3 * shape.triangles);
        EXPECT_NEAR(SignedArea(mesh, normal), shape.area, 1e-9);
        EXPECT_NEAR(UnsignedArea(mesh), shape.area, 1e-9);
        ASSERT_EQ(mesh.normals.size(), mesh.positions.size());
        for (const Point& n : mesh.normals) EXPECT_NEAR(glm::distance(n, normal), 0, 1e-12);
      }
    }
  }
}

TEST(TessellateFace, FansConvexFacesAndKeepsTheRingOrder) {
  scripted::Host host;
  TessMesh mesh;
  ASSERT_TRUE(Tessellate(host.AddFace(kShapes[1].outline), mesh));
  EXPECT_EQ(mesh.indexes, (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3}));

  // The normal looks down although the outline turns left: the fan is turned.
  scripted::Face* down = host.AddFace(kShapes[0].outline);
  down->plane = {0, 0, -1, 0};
  ASSERT_TRUE(Tessellate(down, mesh));
  EXPECT_LT(Cross(mesh, 0).z, 0);

  scripted::Face* cut = host.AddFace(kShapes[6].outline, kShapes[6].holes);
  cut->openings = kShapes[6].openings;
  ASSERT_TRUE(Tessellate(cut, mesh));
  ASSERT_EQ(mesh.positions.size(), 11u);
  EXPECT_EQ(mesh.positions[4], kShapes[6].holes[0][0]);
  EXPECT_EQ(mesh.positions[8], kShapes[6].openings[0][0]);
}

TEST(TessellateFace, FailsWithoutTriangles) {
  scripted::Host host;
  TessMesh mesh;
  scripted::Face* bad = host.AddFace(kShapes[1].outline);
  bad->planeFails = true;
  EXPECT_FALSE(Tessellate(bad, mesh));
  EXPECT_TRUE(mesh.positions.empty());
  FaceCollector never;
  EXPECT_FALSE(TessellateFace(never, never.FindFace(bad->ref()), mesh));

  // There is a ring, but its corners turn both ways and enclose nothing.
  scripted::Face* line = host.AddFace(kShapes[1].outline);
  for (scripted::Vertex* vertex : line->loops[0].vertices) vertex->position.y = 0;
  host.AddLoop(line, line->loops[0].vertices);
  EXPECT_FALSE(Tessellate(line, mesh));
  EXPECT_TRUE(mesh.indexes.empty());
}

TEST(TessellateFace, SurvivesCoordinatesThatAreNoNumbers) {
  const double inf = std::numeric_limits<double>::infinity();
  for (const double bad : {std::nan(""), inf, -inf, 1e300}) {
    scripted::Host host;
    scripted::Face* face = host.AddFace(kShapes[4].outline, kShapes[4].holes);
    face->loops[0].vertices[1]->position.x = bad;
    TessMesh mesh;
    Tessellate(face, mesh);
    for (const std::uint32_t index : mesh.indexes) ASSERT_LT(index, mesh.positions.size());
  }
}

// Star-shaped outlines with holes on a circle inside, on random planes: the area is known.
TEST(TessellateFace, KeepsTheAreaOfRandomFacesWithHoles) {
  std::mt19937_64 random(20270101);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int round = 0; round < 2000; ++round) {
    const int corners = 5 + static_cast<int>(unit(random) * 40);
    const int holeCount = static_cast<int>(unit(random) * 4);
    const glm::dvec3 normal =
        glm::normalize(glm::dvec3(unit(random) - 0.5, unit(random) - 0.5, unit(random) - 0.45));
    const glm::dvec3 u = glm::normalize(glm::cross(normal, glm::dvec3(0.3, 0.5, 0.8)));
    const glm::dvec3 v = glm::cross(normal, u);
    double area = 0.0;
    const auto ring = [&](const glm::dvec2& centre, int count, double low, double high,
                          double sign) {
      Points points;
      std::vector<glm::dvec2> flat;
      for (int i = 0; i < count; ++i) {
        const double angle = 2 * kPi * i / count;
        const double radius = low + (high - low) * unit(random);
        flat.push_back(centre + radius * glm::dvec2(std::cos(angle), std::sin(angle)));
        points.push_back(flat.back().x * u + flat.back().y * v);
      }
      for (std::size_t i = 0; i < flat.size(); ++i) {
        const glm::dvec2& a = flat[i];
        const glm::dvec2& b = flat[(i + 1) % flat.size()];
        area += sign * (a.x * b.y - a.y * b.x) / 2;
      }
      return points;
    };
    const Points outline = ring({0, 0}, corners, 6, 10, 1);
    std::vector<Points> holes;
    for (int h = 0; h < holeCount; ++h) {
      const double angle = 2 * kPi * h / holeCount;
      holes.push_back(ring(2.0 * glm::dvec2(std::cos(angle), std::sin(angle)), 3 + h, 0.3, 1, -1));
    }
    scripted::Host host;
    TessMesh mesh;
    ASSERT_TRUE(Tessellate(host.AddFace(outline, holes), mesh));
    ASSERT_EQ(mesh.indexes.size() / 3, mesh.positions.size() + 2 * holes.size() - 2) << round;
    ASSERT_NEAR(SignedArea(mesh, normal), area, 1e-6 * area) << round;
  }
}

TEST(IsConvexRing, StraightAndReflexCorners) {
  const Point up(0, 0, 1);
  EXPECT_TRUE(IsConvexRing({}, up));
  EXPECT_TRUE(IsConvexRing(kShapes[2].outline, up)) << "a straight corner";
  EXPECT_FALSE(IsConvexRing(kShapes[1].outline, -up)) << "clockwise about the normal";
  EXPECT_FALSE(IsConvexRing(kShapes[3].outline, up)) << "an L";
  const Points barely = {{0, 0, 0}, {1, 1e-13, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};
  EXPECT_TRUE(IsConvexRing(barely, up)) << "within rounding";
}

}  // namespace
}  // namespace quellix
