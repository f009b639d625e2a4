#include "geometry/FaceCollector.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <new>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "ScriptedHost.h"
#include "geometry/Tessellation.h"

namespace quellix {
namespace {

constexpr double kPi = 3.14159265358979323846;
const std::vector<glm::dvec3> kSquare = {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};

// A strip of squares along x; square i lies between vertex pairs i and i + 1.
struct Strip {
  std::vector<scripted::Vertex*> low, high;
  std::vector<scripted::Face*> faces;

  Strip(scripted::Host& host, int count) {
    for (int i = 0; i <= count; ++i) {
      low.push_back(host.AddVertex({i, 0, 0}));
      high.push_back(host.AddVertex({i, 1, 0}));
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
      faces.push_back(host.AddFace({low[i], low[i + 1], high[i + 1], high[i]}));
    }
  }
};

TEST(CollectFaceData, LeavesAFaceThatCannotBeReadNotValid) {
  struct Case {
    const char* what;
    void (*spoil)(scripted::Host&, scripted::Face&);
  };
  const Case cases[] = {
      {"plane fails", [](scripted::Host&, scripted::Face& f) { f.planeFails = true; }},
      {"plane without direction", [](scripted::Host&, scripted::Face& f) { f.plane = {}; }},
      {"no outer loop", [](scripted::Host&, scripted::Face& f) { f.loops.clear(); }},
      {"outer loop of two",
       [](scripted::Host&, scripted::Face& f) { f.loops[0].vertices.resize(2); }},
      {"fewer edges written than vertices",
       [](scripted::Host&, scripted::Face& f) { f.loops[0].edgesWritten = 3; }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    scripted::Host host;
    scripted::Face* face = host.AddFace(kSquare);
    c.spoil(host, *face);
    FaceCollector collector;
    EXPECT_FALSE(collector.CollectFaceData(face->ref()).Valid());
    EXPECT_EQ(collector.CollectSmoothingGroup(face->ref()), FaceCollector::kNone);
    std::vector<Point> points(1);
    EXPECT_FALSE(collector.GatherFacePoints(collector.FindFace(face->ref()), points));
    EXPECT_TRUE(points.empty());
    // It stays not valid, and is not asked for again, until the next export.
    EXPECT_EQ(host.Calls("SUFaceGetPlane"), 1);
    collector.Clear();
    EXPECT_EQ(collector.FindFaceData(face->ref()), nullptr);
    collector.CollectFaceData(face->ref());
    EXPECT_EQ(host.Calls("SUFaceGetPlane"), 2);
  }
}

TEST(CollectFaceData, NormalisesThePlaneAndLeavesBadInnerLoopsOut) {
  scripted::Host host;
  scripted::Face* face = host.AddFace(kSquare, {{{0.1, 0.1, 0}, {0.2, 0.1, 0}, {0.2, 0.2, 0}},
                                                {{1.1, 1.1, 0}, {1.2, 1.1, 0}, {1.2, 1.2, 0}}});
  face->loops[1].vertices.resize(2);
  face->plane = {0, 0, -5, 3};
  FaceCollector collector;
  const FaceData& data = collector.CollectFaceData(face->ref());
  ASSERT_TRUE(data.Valid());
  EXPECT_EQ(data.Normal(), Point(0, 0, -1));
  ASSERT_EQ(data.LoopCount(), 2u);
  EXPECT_EQ(data.Positions()[data.Loop(1).begin], Point(1.1, 1.1, 0));
  EXPECT_EQ(data.CornerCount(), 7u);
}

TEST(CollectFaceData, KeepsOpeningsWithThreePointsAndReleasesAll) {
  scripted::Host host;
  scripted::Face* face = host.AddFace(kSquare);
  face->openings = {
      {{0.1, 0.1, 0}, {0.2, 0.1, 0}, {0.2, 0.2, 0}, {0.1, 0.1, 9e-10}},  // the repeat goes
      {{0.5, 0.5, 0}, {0.6, 0.5, 0}, {0.5, 0.5, 0}},                     // two points are left
      {{0.7, 0.7, 0}, {0.8, 0.7, 0}},                                    // two from the start
      {{1, 1, 0}, {1.5, 1, 0}, {1.5, 1.5, 0}, {1, 1, 2e-9}},             // far enough apart
  };
  FaceCollector collector;
  const FaceData& data = collector.CollectFaceData(face->ref());
  ASSERT_EQ(data.Openings().size(), 2u);
  EXPECT_EQ(data.Openings()[0].size(), 3u);
  EXPECT_EQ(data.Openings()[1].size(), 4u);
  EXPECT_EQ(host.Outstanding(), 0);

  // Tessellation order: outer loop, inner loops, openings.
  std::vector<Point> points;
  ASSERT_TRUE(collector.GatherFacePoints(collector.FindFace(face->ref()), points));
  ASSERT_EQ(points.size(), 11u);
  EXPECT_EQ(points[0], kSquare[0]);
  EXPECT_EQ(points[4], Point(0.1, 0.1, 0));
  EXPECT_EQ(points[7], Point(1, 1, 0));
}

TEST(CollectFaceData, CornerAngles) {
  struct Case {
    const char* what;
    std::vector<glm::dvec3> outline;
    std::size_t corner;
    double angle;
  };
  const Case cases[] = {
      {"right angle", kSquare, 0, kPi / 2},
      {"straight corner", {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {1, 2, 0}}, 1, kPi},
      {"reflex corner", {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {1, 1, 0}, {0, 2, 0}}, 3, kPi / 2},
      {"edge without length", {{0, 0, 0}, {2, 0, 0}, {2, 0, 0}, {0, 2, 0}}, 1, 0.0},
      {"spike", {{0, 0, 0}, {4, 0, 0}, {2, 0, 0}, {2, 2, 0}}, 1, 0.0},
      {"equilateral", {{0, 0, 0}, {1, 0, 0}, {0.5, std::sqrt(0.75), 0}}, 2, kPi / 3},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    scripted::Host host;
    FaceCollector collector;
    const FaceData& data = collector.CollectFaceData(host.AddFace(c.outline)->ref());
    EXPECT_NEAR(data.AngleAt(c.corner), c.angle, 1e-12);
  }
}

// Two triangles of one outline that meet in a vertex: an hourglass. In the large variant each has
// so many corners more that vertices are searched, not scanned.
TEST(CollectFaceData, AVertexThatOccursTwiceKeepsItsFirstAngleAndAllItsEdges) {
  for (const int extra : {0, 40}) {
    SCOPED_TRACE(extra);
    scripted::Host host;
    scripted::Vertex* waist = host.AddVertex({0, 0, 0});
    std::vector<scripted::Vertex*> outline = {waist, host.AddVertex({2, -1, 0})};
    for (int i = 1; i <= extra; ++i) {
      outline.push_back(host.AddVertex({2, -1 + 2.0 * i / (extra + 1), 0}));
    }
    outline.push_back(host.AddVertex({2, 1, 0}));
    outline.push_back(waist);
    outline.push_back(host.AddVertex({-1, 1, 0}));
    outline.push_back(host.AddVertex({-1, 0, 0}));
    scripted::Face* face = host.AddFace(outline);
    FaceCollector collector;
    const FaceData& data = collector.CollectFaceData(face->ref());
    ASSERT_TRUE(data.Valid());

    std::vector<std::size_t> corners;
    data.ForEachCornerAt({waist}, [&](std::size_t corner) { corners.push_back(corner); });
    const std::size_t second = outline.size() - 3;
    EXPECT_EQ(corners, (std::vector<std::size_t>{0, second}));
    EXPECT_NEAR(data.AngleAt(0), kPi - std::atan2(1, 2), 1e-12);

    // The smooth edge is one of the second corner's; its neighbour counts in the walk all the same.
    scripted::Vertex* far = outline[second + 1];
    scripted::Face* neighbour = host.AddFace({waist, far, host.AddVertex({0, 3, 0})});
    host.MakeSmooth(waist, far);
    collector.Clear();
    collector.CollectSmoothingGroup(face->ref());
    const std::uint32_t edge = collector.FindFaceData(face->ref())->Edges()[second];
    EXPECT_EQ(collector.FacesAt(edge).size(), 2u);
    EXPECT_NE(collector.FindFaceData(neighbour->ref()), nullptr);
  }
}

TEST(CollectSmoothingGroup, FollowsSmoothEdgesAndReadsEachFaceAndEdgeOnce) {
  scripted::Host host;
  Strip strip(host, 5);
  host.MakeSmooth(strip.low[1], strip.high[1]);
  host.MakeSmooth(strip.low[2], strip.high[2]);
  // Between squares 2 and 3 the flag cannot be read, which makes a hard edge.
  host.MakeSmooth(strip.low[3], strip.high[3]);
  host.EdgeBetween(strip.low[3], strip.high[3])->smoothFails = true;
  host.MakeSmooth(strip.low[4], strip.high[4]);
  FaceCollector collector;
  EXPECT_NE(collector.CollectSmoothingGroup(strip.faces[1]->ref()), FaceCollector::kNone);
  EXPECT_NE(collector.FindFaceData(strip.faces[0]->ref()), nullptr);
  EXPECT_NE(collector.FindFaceData(strip.faces[2]->ref()), nullptr);
  EXPECT_EQ(collector.FindFaceData(strip.faces[3]->ref()), nullptr);
  EXPECT_EQ(host.Calls("SUFaceGetPlane"), 3);
  EXPECT_EQ(host.Calls("SUEdgeGetSmooth"), 10) << "three squares have ten edges";

  for (scripted::Face* face : strip.faces) {
    EXPECT_NE(collector.CollectSmoothingGroup(face->ref()), FaceCollector::kNone);
  }
  EXPECT_EQ(host.Calls("SUFaceGetPlane"), 5);
  EXPECT_EQ(host.Calls("SUEdgeGetSmooth"), 16);
}

TEST(CollectSmoothingGroup, DoesNotGoBeyondAFaceThatIsNotValid) {
  scripted::Host host;
  Strip strip(host, 3);
  host.MakeSmooth(strip.low[1], strip.high[1]);
  host.MakeSmooth(strip.low[2], strip.high[2]);
  strip.faces[1]->planeFails = true;
  FaceCollector collector;
  EXPECT_NE(collector.CollectSmoothingGroup(strip.faces[0]->ref()), FaceCollector::kNone);
  ASSERT_NE(collector.FindFaceData(strip.faces[1]->ref()), nullptr);
  EXPECT_FALSE(collector.FindFaceData(strip.faces[1]->ref())->Valid());
  EXPECT_EQ(collector.FindFaceData(strip.faces[2]->ref()), nullptr);
}

// Squares around one another on a cylinder, so that fans of neighbours overlap everywhere.
struct Cylinder {
  std::vector<scripted::Face*> faces;

  Cylinder(scripted::Host& host, int around, int high) {
    std::vector<std::vector<scripted::Vertex*>> rings;
    for (int k = 0; k <= high; ++k) {
      rings.emplace_back();
      for (int i = 0; i < around; ++i) {
        const double angle = 2 * kPi * i / around;
        rings.back().push_back(host.AddVertex({std::cos(angle), std::sin(angle), k}));
      }
    }
    for (std::size_t k = 0; k + 1 < rings.size(); ++k) {
      for (std::size_t i = 0; i < rings[k].size(); ++i) {
        const std::size_t next = (i + 1) % rings[k].size();
        const std::vector<scripted::Vertex*> outline = {rings[k][i], rings[k][next],
                                                        rings[k + 1][next], rings[k + 1][i]};
        faces.push_back(host.AddFace(outline));
        for (std::size_t c = 0; c < 4; ++c) host.MakeSmooth(outline[c], outline[(c + 1) % 4]);
      }
    }
  }
};

TEST(CollectFace, ThreadsShareTheReadingAndSeeTheSameNormals) {
  constexpr std::size_t kThreads = 4;
  scripted::Host host;
  const Cylinder cylinder(host, 24, 20);
  FaceCollector alone;
  std::vector<TessMesh> wanted(cylinder.faces.size());
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    ASSERT_TRUE(
        TessellateFace(alone, alone.CollectSmoothingGroup(cylinder.faces[i]->ref()), wanted[i]));
  }
  const int planes = host.Calls("SUFaceGetPlane");
  const int edges = host.Calls("SUEdgeGetSmooth");

  // All start at the same faces, from both ends.
  FaceCollector shared;
  std::atomic<int> different{0};
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      TessMesh mesh;
      for (std::size_t k = 0; k < wanted.size(); ++k) {
        const std::size_t i = t % 2 == 0 ? k : wanted.size() - 1 - k;
        const std::uint32_t face = shared.CollectFace(cylinder.faces[i]->ref());
        if (!TessellateFace(shared, face, mesh) || mesh.normals != wanted[i].normals) ++different;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(different, 0);
  EXPECT_EQ(host.Calls("SUFaceGetPlane"), 2 * planes) << "each face is read once";
  EXPECT_EQ(host.Calls("SUEdgeGetSmooth"), 2 * edges) << "each edge is read once";
}

// Squares in rows with all that makes fans irregular: hard edges, edges of three faces, edges that
// name only some of their faces, a face that cannot be read, one that comes to a vertex twice, and
// a fan of very many faces. Whatever the chunks are, what was collected is enough for their
// normals.
TEST(CollectFans, ReadsAllThatTheNormalsOfAChunkNeed) {
  constexpr int kSide = 40;
  std::mt19937 random(5);
  for (int round = 0; round < 8; ++round) {
    SCOPED_TRACE(round);
    scripted::Host host;
    std::vector<scripted::Vertex*> grid;
    for (int i = 0; i < kSide * kSide; ++i) {
      grid.push_back(
          host.AddVertex({i % kSide, i / kSide, 0.1 * static_cast<double>(random() % 9)}));
    }
    const auto at = [&](int x, int y) { return grid[static_cast<std::size_t>(y * kSide + x)]; };
    std::vector<scripted::Face*> faces;
    for (int y = 0; y + 1 < kSide; ++y) {
      for (int x = 0; x + 1 < kSide; ++x) {
        faces.push_back(host.AddFace({at(x, y), at(x + 1, y), at(x + 1, y + 1), at(x, y + 1)}));
        if (random() % 4 != 0) host.MakeSmooth(at(x, y), at(x + 1, y));
        if (random() % 4 != 0) host.MakeSmooth(at(x, y), at(x, y + 1));
      }
    }
    for (int k = 2; k < kSide - 1; k += 5) {
      faces.push_back(host.AddFace({at(k, k), at(k + 1, k), host.AddVertex({k, k, 1})}));
      host.EdgeBetween(at(k, k + 1), at(k + 1, k + 1))->faces.pop_back();
      faces[static_cast<std::size_t>(k * 30)]->planeFails = true;
    }
    faces.push_back(host.AddFace({at(9, 4), at(10, 4), host.AddVertex({10, 3, 1}), at(9, 4),
                                  host.AddVertex({8, 3, 1}), host.AddVertex({8, 4, 1})}));
    scripted::Vertex* before = host.AddVertex({-1, -1, 3});
    for (int i = 0; i < 200; ++i) {
      scripted::Vertex* next = host.AddVertex({std::cos(i * 0.02), std::sin(i * 0.02), 2});
      faces.push_back(host.AddFace({at(20, 20), before, next}));
      host.MakeSmooth(at(20, 20), before);
      before = next;
    }
    if (round % 2 == 1) std::shuffle(faces.begin(), faces.end(), random);

    FaceCollector whole;
    FaceCollector collector;
    TessMesh wanted;
    TessMesh mesh;
    for (std::size_t first = 0; first < faces.size(); first += 64) {
      std::vector<std::uint32_t> chunk;
      for (std::size_t i = first; i < std::min(first + 64, faces.size()); ++i) {
        chunk.push_back(collector.CollectFace(faces[i]->ref()));
      }
      collector.CollectFans(chunk);
      const int planes = host.Calls("SUFaceGetPlane");
      const int edges = host.Calls("SUEdgeGetSmooth");
      std::vector<std::vector<Point>> normals;
      for (const std::uint32_t face : chunk) {
        TessellateFace(collector, face, mesh);
        normals.push_back(mesh.normals);
      }
      EXPECT_EQ(host.Calls("SUFaceGetPlane"), planes) << "a face was read for a normal";
      EXPECT_EQ(host.Calls("SUEdgeGetSmooth"), edges);
      for (std::size_t i = 0; i < chunk.size(); ++i) {
        TessellateFace(whole, whole.CollectSmoothingGroup(faces[first + i]->ref()), wanted);
        EXPECT_EQ(normals[i], wanted.normals);
      }
    }
  }
}

// A smooth surface is one group; a chunk of it takes those faces only that touch it.
TEST(CollectFans, ReadsNoMoreThanTheFacesAroundAChunk) {
  scripted::Host host;
  const Cylinder cylinder(host, 24, 200);
  FaceCollector collector;
  std::vector<std::uint32_t> chunk;
  for (std::size_t i = 0; i < 48; ++i) {
    chunk.push_back(collector.CollectFace(cylinder.faces[i + 960]->ref()));
  }
  collector.CollectFans(chunk);
  EXPECT_EQ(host.Calls("SUFaceGetPlane"), 4 * 24) << "two rings, and one on either side";
  collector.CollectFans(chunk);
  EXPECT_EQ(host.Calls("SUFaceGetPlane"), 4 * 24);
}

TEST(EnterScope, FindsFacesInTheirOwnCollectionAloneAndReadsThemOnce) {
  scripted::Host host;
  Strip here(host, 3);
  Strip there(host, 3);
  here.faces[1]->planeFails = true;
  const SUEntitiesRef su_here{&here};
  const SUEntitiesRef su_there{&there};
  FaceCollector collector;
  const std::uint32_t first = collector.EnterScope(su_here, here.faces.size());
  for (scripted::Face* face : here.faces) collector.CollectFaceData(face->ref());
  const std::uint32_t known = collector.FindFace(here.faces[0]->ref());
  const std::uint32_t second = collector.EnterScope(su_there, 0);  // more than was announced
  EXPECT_NE(second, first);
  EXPECT_EQ(collector.FindFace(here.faces[0]->ref()), FaceCollector::kNone);
  for (scripted::Face* face : there.faces) {
    EXPECT_TRUE(collector.ReadFace(collector.CollectFace(face->ref(), second)).Valid());
  }
  EXPECT_EQ(host.Calls("SUFaceGetPlane"), 6);

  // Placed once more: what was read is there, also what was not valid.
  EXPECT_EQ(collector.EnterScope(su_here, here.faces.size()), first);
  EXPECT_EQ(collector.CollectSmoothingGroup(here.faces[0]->ref()), known);
  EXPECT_EQ(collector.CollectSmoothingGroup(here.faces[1]->ref()), FaceCollector::kNone);
  EXPECT_EQ(host.Calls("SUFaceGetPlane"), 6);
}

// Whoever waits for a face or an edge goes on although its reader gave up.
TEST(CollectFace, AReaderThatFailsLeavesTheFaceNotValidAndNobodyWaiting) {
  scripted::Host host;
  Strip strip(host, 2);
  host.MakeSmooth(strip.low[1], strip.high[1]);
  strip.faces[0]->onRead = [] { throw std::bad_alloc(); };
  FaceCollector collector;
  EXPECT_THROW(collector.CollectFace(strip.faces[0]->ref()), std::bad_alloc);
  strip.faces[0]->onRead = nullptr;
  EXPECT_FALSE(collector.ReadFace(collector.CollectFace(strip.faces[0]->ref())).Valid());
  TessMesh mesh;
  EXPECT_TRUE(TessellateFace(collector, collector.CollectFace(strip.faces[1]->ref()), mesh));
}

}  // namespace
}  // namespace quellix
