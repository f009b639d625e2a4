#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "ScriptedHost.h"
#include "geometry/FanWalk.h"
#include "geometry/Tessellation.h"

namespace quellix {
namespace {

constexpr double kPi = 3.14159265358979323846;

Point NormalAt(FaceCollector& collector, scripted::Face* face, scripted::Vertex* vertex) {
  const std::uint32_t index = collector.CollectSmoothingGroup(face->ref());
  std::size_t corner = 0;
  collector.Face(index).ForEachCornerAt({vertex}, [&](std::size_t found) { corner = found; });
  return SmoothVertexNormal(collector, index, corner);
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

// Four vertices around a fifth, with a triangle over each side but one; all inner edges are smooth.
struct OpenPyramid {
  scripted::Vertex* top;
  std::vector<scripted::Vertex*> rim;
  std::vector<scripted::Face*> faces;  // the last one is beside the gap

  explicit OpenPyramid(scripted::Host& host) {
    top = host.AddVertex({0, 0, 0.5});
    for (const glm::dvec3& place :
         {Point(1, 0, 0), Point(0, 1, 0), Point(-1, 0, 0), Point(0, -1, 0)}) {
      rim.push_back(host.AddVertex(place));
      host.MakeSmooth(top, rim.back());
    }
    for (const auto& [from, to] : {std::pair(2, 3), std::pair(3, 0), std::pair(0, 1)}) {
      faces.push_back(host.AddFace({rim[std::size_t(from)], rim[std::size_t(to)], top}));
    }
  }
  Point Sum() const {
    Point sum(0.0);
    for (const scripted::Face* face : faces) sum += Point(face->plane);
    return glm::normalize(sum);
  }
};

// The host lists a face at the edges of an inner loop that could not be read. The turn comes to the
// middle face over such an edge of the first one, and there are more beyond the middle one's own.
TEST(SmoothVertexNormal, GoesOnBehindTheEdgeOfALoopThatWasLeftOut) {
  for (const std::size_t gapSide : {std::size_t{1}, std::size_t{2}}) {
    scripted::Host host;
    OpenPyramid pyramid(host);
    scripted::Face* middle = pyramid.faces[1];
    // The turn reaches it to the left of the gap, and to the right.
    scripted::Vertex* beside = pyramid.rim[gapSide];
    host.AddLoop(middle, {pyramid.top, beside, host.AddVertex({0, 0, 2})});
    middle->loops[1].vertices.resize(2);
    FaceCollector collector;
    ExpectNear(NormalAt(collector, middle, pyramid.top), pyramid.Sum());
    FaceCollector other;
    ExpectNear(NormalAt(other, pyramid.faces[0], pyramid.top), pyramid.Sum());
  }
}

// Between the first two faces the host names only one of them, whichever that is.
TEST(SmoothVertexNormal, FollowsAnEdgeThatNamesOnlyTheFaceBeyondIt) {
  scripted::Host host;
  OpenPyramid pyramid(host);
  host.EdgeBetween(pyramid.top, pyramid.rim[3])->faces = {pyramid.faces[1]};
  FaceCollector collector;
  ExpectNear(NormalAt(collector, pyramid.faces[0], pyramid.top), pyramid.Sum());
  ExpectNear(NormalAt(collector, pyramid.faces[1], pyramid.top),
             glm::normalize(Point(pyramid.faces[1]->plane) + Point(pyramid.faces[2]->plane)));
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

std::vector<std::uint32_t> Walked(FaceCollector& collector, std::uint32_t face,
                                  SUVertexRef su_vertex) {
  std::vector<std::uint32_t> met;
  WalkFan(
      collector, face, su_vertex,
      [&](std::uint32_t next) {
        if (std::find(met.begin(), met.end(), next) != met.end()) return false;
        met.push_back(next);
        return true;
      },
      [](const FanFace&) { return true; });
  std::sort(met.begin(), met.end());
  return met;
}

// Squares in rows whose inner edges are smooth or not at random, a face beyond some of the edges as
// a third one, one that cannot be read, and one that comes to the same vertex twice.
TEST(TurnAround, GivesTheFacesOfTheWalkWhereverItGoesRound) {
  constexpr int kSide = 24;
  scripted::Host host;
  std::vector<scripted::Vertex*> grid;
  for (int i = 0; i < kSide * kSide; ++i) grid.push_back(host.AddVertex({i % kSide, i / kSide, 0}));
  const auto at = [&](int x, int y) { return grid[static_cast<std::size_t>(y * kSide + x)]; };
  std::vector<scripted::Face*> faces;
  for (int y = 0; y + 1 < kSide; ++y) {
    for (int x = 0; x + 1 < kSide; ++x) {
      faces.push_back(host.AddFace({at(x, y), at(x + 1, y), at(x + 1, y + 1), at(x, y + 1)}));
    }
  }
  std::mt19937 random(11);
  for (int i = 0; i < kSide * kSide; ++i) {
    const int x = i % kSide;
    const int y = i / kSide;
    if (x + 1 < kSide && random() % 3 != 0) host.MakeSmooth(at(x, y), at(x + 1, y));
    if (y + 1 < kSide && random() % 3 != 0) host.MakeSmooth(at(x, y), at(x, y + 1));
  }
  for (int k = 2; k < kSide - 1; k += 5) {
    faces.push_back(host.AddFace({at(k, k), at(k + 1, k), host.AddVertex({k, k, 1})}));
  }
  faces[40]->planeFails = true;
  faces.push_back(host.AddFace({at(9, 4), at(10, 4), host.AddVertex({10, 3, 1}), at(9, 4),
                                host.AddVertex({8, 3, 1}), host.AddVertex({8, 4, 1})}));

  FaceCollector collector;
  int round = 0;
  int notRound = 0;
  for (scripted::Face* scriptedFace : faces) {
    const FaceData& read = collector.CollectFaceData(scriptedFace->ref());
    if (!read.Valid()) continue;
    const std::uint32_t face = collector.FindFace(scriptedFace->ref());
    for (std::size_t corner = 0; corner < read.CornerCount(); ++corner) {
      std::vector<std::uint32_t> turned;
      const bool simple = TurnAround(collector, face, corner, [&](const FanFace& fanFace) {
        turned.push_back(collector.FindFace(fanFace.data->Handle()));
        EXPECT_TRUE(SUAreEqual(fanFace.data->Vertices()[fanFace.corner], read.Vertices()[corner]));
        return true;
      });
      ++(simple ? round : notRound);
      if (!simple) continue;
      std::sort(turned.begin(), turned.end());
      std::vector<std::uint32_t> walked = Walked(collector, face, read.Vertices()[corner]);
      // The walk also meets the one that cannot be read.
      std::erase_if(walked, [&](std::uint32_t met) { return !collector.Face(met).Valid(); });
      EXPECT_EQ(turned, walked) << "face " << face << ", corner " << corner;
    }
  }
  EXPECT_GT(round, 2000);
  EXPECT_GT(notRound, 10) << "three faces at an edge, and a vertex at two corners";
}

}  // namespace
}  // namespace quellix
