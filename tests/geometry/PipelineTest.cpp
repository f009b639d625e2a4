#include "geometry/GeometryPipeline.h"

#include <chrono>
#include <condition_variable>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ScriptedHost.h"

namespace quellix {
namespace {

using namespace std::chrono_literals;

// Lets nobody through until it is opened.
class Barrier {
 public:
  void Pass() {
    std::unique_lock lock(mutex);
    opened.wait(lock, [this] { return open; });
  }
  void Open() {
    const std::lock_guard lock(mutex);
    open = true;
    opened.notify_all();
  }

 private:
  std::mutex mutex;
  std::condition_variable opened;
  bool open = false;
};

// Writes down what it is sent: "m1" for mesh 1, "p1" for a placement of it.
class RecordingSink : public MeshSink {
 public:
  void SendMesh(const MeshBuffer& mesh, const MeshPlacement& placement, std::uint8_t) override {
    if (onMesh) onMesh();
    sent.push_back("m" + std::to_string(placement.meshId));
    vertices += mesh.vertices.size();
  }
  void SendPlacement(const MeshPlacement& placement) override {
    if (onPlacement) onPlacement();
    sent.push_back("p" + std::to_string(placement.meshId));
  }

  std::function<void()> onMesh;
  std::function<void()> onPlacement;
  std::vector<std::string> sent;
  std::size_t vertices = 0;
};

MeshPlacement Named(std::uint64_t id) {
  MeshPlacement placement;
  placement.meshId = id;
  return placement;
}

class PipelineTest : public testing::Test {
 protected:
  scripted::Face* Square() {
    return host.AddFace(std::vector<glm::dvec3>{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}});
  }
  // A face whose mesh the host's helper makes, on whichever pool thread has it.
  scripted::Face* HelperSquare() {
    scripted::Face* face = Square();
    face->planeFails = true;
    host.GiveHelperFan(face);
    return face;
  }

  static FaceSource Faces(const std::vector<scripted::Face*>& faces) {
    return [faces](const FaceSink& add) {
      for (scripted::Face* face : faces) add(face->ref(), {});
    };
  }
  static void Mesh(GeometryPipeline& pipeline, std::uint64_t id, const FaceSource& source) {
    pipeline.OpenMesh(Named(id), 0);
    pipeline.ProduceFaceWork(source);
    pipeline.CloseMesh();
  }

  scripted::Host host;
  FaceCollector collector;
  RecordingSink sink;
};

TEST_F(PipelineTest, SendsInTheOrderOfTheWalkAlsoWhenAnEarlyMeshIsTheSlowest) {
  scripted::Face* slow = HelperSquare();
  slow->onHelper = [] { std::this_thread::sleep_for(200ms); };
  std::vector<scripted::Face*> faces;
  for (int i = 0; i < 130; ++i) faces.push_back(Square());

  std::vector<std::string> wanted;
  GeometryPipeline pipeline(collector, sink, 4);
  for (std::uint64_t id = 0; id < 100; ++id) {
    Mesh(pipeline, id, Faces(id == 0 ? std::vector{slow} : faces));
    pipeline.PlaceMesh(Named(id));
    wanted.push_back("m" + std::to_string(id));
    wanted.push_back("p" + std::to_string(id));
  }
  Mesh(pipeline, 100, Faces({}));  // without a face there is no mesh
  pipeline.Finish();
  EXPECT_EQ(sink.sent, wanted);
  EXPECT_EQ(sink.vertices, 4u + 99 * 130 * 4);
}

// Produces in a thread of its own and tells whether that has come to a halt, and with what peaks.
template <class Produce>
GeometryPipeline::Peaks PeaksWhileStalled(GeometryPipeline& pipeline, Barrier& barrier,
                                          Produce produce) {
  std::future<void> walk = std::async(std::launch::async, produce);
  GeometryPipeline::Peaks peaks;
  const GeometryPipeline::Peaks full{GeometryPipeline::kMaxChunks, GeometryPipeline::kMaxEntries};
  while (peaks.chunks < full.chunks && peaks.entries < full.entries &&
         walk.wait_for(10ms) == std::future_status::timeout) {
    peaks = pipeline.PeaksSoFar();
  }
  EXPECT_EQ(walk.wait_for(50ms), std::future_status::timeout) << "the walk did not wait";
  barrier.Open();
  walk.get();
  return pipeline.PeaksSoFar();
}

TEST_F(PipelineTest, AStalledRendererMakesTheWalkWait) {
  Barrier barrier;
  sink.onPlacement = [&] { barrier.Pass(); };
  GeometryPipeline pipeline(collector, sink, 2);
  const auto peaks = PeaksWhileStalled(pipeline, barrier, [&] {
    for (std::uint64_t i = 0; i < 1000; ++i) pipeline.PlaceMesh(Named(i));
    pipeline.Finish();
  });
  EXPECT_EQ(peaks.entries, 256u);
  EXPECT_EQ(sink.sent.size(), 1000u);
}

TEST_F(PipelineTest, AStalledPoolMakesTheWalkWait) {
  Barrier barrier;
  scripted::Face* stalled = HelperSquare();
  stalled->onHelper = [&] { barrier.Pass(); };
  scripted::Face* face = Square();
  GeometryPipeline pipeline(collector, sink, 1);
  const auto peaks = PeaksWhileStalled(pipeline, barrier, [&] {
    Mesh(pipeline, 1, [&](const FaceSink& add) {
      add(stalled->ref(), {});
      for (int i = 1; i < 300 * 64; ++i) add(face->ref(), {});
    });
    pipeline.Finish();
  });
  EXPECT_EQ(peaks.chunks, 128u);
  EXPECT_EQ(sink.vertices, 300u * 64 * 4);
}

// The stage stands still until the first of the chunks that were collected before has been built and
// sent: with one pool thread only the walk's own can do that. They are as many as it is woken for.
TEST_F(PipelineTest, CollectedChunksAreBuiltWhileTheStageIsTaken) {
  for (const unsigned poolThreads : {1u, 2u}) {
    SCOPED_TRACE(poolThreads);
    std::promise<void> sent;
    bool inTime = false;
    sink.onMesh = [&, first = true]() mutable {
      if (std::exchange(first, false)) sent.set_value();
    };
    scripted::Face* slow = Square();
    slow->onRead = [&] { inTime = sent.get_future().wait_for(20s) == std::future_status::ready; };
    GeometryPipeline pipeline(collector, sink, poolThreads);
    std::uint64_t id = 0;
    while (id < GeometryPipeline::kWakeChunks) Mesh(pipeline, ++id, Faces({Square()}));
    Mesh(pipeline, ++id, Faces({slow}));
    pipeline.Finish();
    EXPECT_TRUE(inTime);
  }
}

TEST_F(PipelineTest, TheFirstErrorReachesTheWalkAndNobodyWaitsForEver) {
  const auto fail = [] { throw std::runtime_error("thrown here"); };
  struct Case {
    const char* what;
    bool inStage, inTask, inMesh, inPlacement, inWalk;
  };
  const Case cases[] = {{"collecting", true, false, false, false, false},
                        {"a task", false, true, false, false, false},
                        {"sending a mesh", false, false, true, false, false},
                        {"sending a placement", false, false, false, true, false},
                        {"the walk", false, false, false, false, true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    scripted::Face* failing = HelperSquare();
    if (c.inStage) failing->onRead = fail;
    if (c.inTask) failing->onHelper = fail;
    sink.onMesh = c.inMesh ? std::function<void()>(fail) : nullptr;
    sink.onPlacement = c.inPlacement ? std::function<void()>(fail) : nullptr;
    collector.Clear();
    const auto run = [&] {
      GeometryPipeline pipeline(collector, sink, 3);
      // More than the bounds let through, so that somebody waits on each of them.
      for (std::uint64_t id = 0; id < 3000; ++id) {
        Mesh(pipeline, id, [&](const FaceSink& add) {
          for (int i = 0; i < 65; ++i) add(failing->ref(), {});
          if (c.inWalk && id == 400) fail();
        });
        pipeline.PlaceMesh(Named(id));
      }
      pipeline.Finish();
    };
    try {
      run();
      ADD_FAILURE() << "no error";
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "thrown here");
    }
    EXPECT_EQ(host.Outstanding(), 0);
  }
}

}  // namespace
}  // namespace quellix
