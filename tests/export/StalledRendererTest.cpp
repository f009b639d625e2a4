// A renderer that stands still in the middle of an export: in a debugger, on a machine that swaps.

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "GeneratedScene.h"
#include "RendererLink.h"
#include "export/ReloadCaches.h"
#include "export/SkpImporter.h"

namespace quellix {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

// Far more meshes than the queue to the sender may hold.
constexpr std::size_t kFaces = 60'000;
constexpr std::size_t kDefinitions = 1'500;
constexpr std::size_t kPlacements = 3'000;

long ResidentKiB() {
  std::ifstream statm("/proc/self/statm");
  long pages = 0;
  statm >> pages >> pages;
  return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

struct Outcome {
  GeometryPipeline::Peaks peaks;
  nlohmann::json report;
  std::vector<std::string> arrived;  // the meshes and placements in order, with their digests
};

class StalledRenderer : public testing::Test {
 protected:
  void SetUp() override {
    folder = fs::temp_directory_path() / ("stalled-renderer-" + std::to_string(getpid()));
    SUInitialize();
    su_model = bench::BuildScene({kFaces, kDefinitions, kPlacements, false});
  }
  void TearDown() override {
    SUModelRelease(&su_model);
    fs::remove_all(folder);
    unsetenv("KVAPP_OUT");
  }

  // Exports, with `meanwhile` on a thread of its own.
  Outcome Export(const char* name,
                 const std::function<void(SkpImporter&, pid_t renderer)>& meanwhile) {
    const fs::path out = folder / name;
    setenv("KVAPP_OUT", out.c_str(), 1);
    Outcome outcome;
    {
      bench::RendererLink renderer(KVAPP_DIR);
      ReloadCaches::Instance().ClearReloadCache();
      SkpImporter importer(renderer.link, 1);
      std::thread beside([&] { meanwhile(importer, renderer.link.ProcessId()); });
      importer.Import(su_model, "model", false, false);
      beside.join();
      outcome.peaks = importer.geometry.PipelinePeaks();
    }
    std::ifstream report(out / "report.json");
    outcome.report = nlohmann::json::parse(report);
    std::ifstream lines(out / "commands.jsonl");
    for (std::string line; std::getline(lines, line);) {
      const nlohmann::json command = nlohmann::json::parse(line);
      const std::string what = command.at("name");
      if (what != "AppendMesh" && what != "InstanciateMesh") continue;
      outcome.arrived.push_back(what + " " + command.value("digest", "faulty"));
    }
    return outcome;
  }

  fs::path folder;
  SUModelRef su_model = SU_INVALID;
};

// What one look at the export in progress finds.
struct Look {
  std::uint32_t faces = 0;
  long residentKiB = 0;
};

// Returns once the walk has not come further for a second, with what was found then.
Look AwaitStandstill(SkpImporter& importer) {
  Look look{importer.geometry.FacesDone(), 0};
  for (auto since = Clock::now(); Clock::now() - since <= milliseconds(1000);) {
    std::this_thread::sleep_for(milliseconds(20));
    const std::uint32_t faces = importer.geometry.FacesDone();
    if (faces != look.faces) {
      since = Clock::now();
      look.faces = faces;
    }
  }
  look.residentKiB = ResidentKiB();
  return look;
}

TEST_F(StalledRenderer, HoldsTheWalkAndCostsNoMemory) {
  const Outcome plain = Export("plain", [](SkpImporter&, pid_t) {});
  ASSERT_EQ(plain.report.at("faultCount"), 0);
  ASSERT_EQ(plain.arrived.size(), kPlacements);

  Look stopped;
  Look later;
  const Outcome stalled = Export("stalled", [&](SkpImporter& importer, pid_t renderer) {
    while (importer.geometry.FacesDone() == 0) {
      std::this_thread::sleep_for(milliseconds(1));
    }
    kill(renderer, SIGSTOP);
    stopped = AwaitStandstill(importer);
    std::this_thread::sleep_for(milliseconds(2000));
    later = {importer.geometry.FacesDone(), ResidentKiB()};
    kill(renderer, SIGCONT);
  });
  EXPECT_GT(stopped.faces, 0u);
  EXPECT_LT(stopped.faces, kFaces / 2) << "the walk went on with nobody to send to";
  EXPECT_EQ(later.faces, stopped.faces);
  EXPECT_LE(later.residentKiB, stopped.residentKiB + 256);
  EXPECT_EQ(stalled.peaks.entries, GeometryPipeline::kMaxEntries);
  EXPECT_LE(stalled.peaks.chunks, GeometryPipeline::kMaxChunks);

  EXPECT_EQ(stalled.report.at("faultCount"), 0) << stalled.report.at("faults");
  EXPECT_EQ(stalled.arrived, plain.arrived);
  for (const char* count : {"materials", "meshes", "placements", "placedTriangles"}) {
    EXPECT_EQ(stalled.report.at(count), plain.report.at(count)) << count;
  }
}

}  // namespace
}  // namespace quellix
