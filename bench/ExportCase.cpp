// Measures exports of one generated scene in this process, whose environment decides on the path,
// and prints one JSON object.
//
//   export_case <folder of the renderer> <faces> <definitions> <placements> <textured> <ns per
//   call>
//               <rounds> <time|floor|shares|scale>
//
// time: the shortest of the rounds, and the memory that the first one took beside the model.
// floor: the same in turns with the read floor, and the share of the host's calls that the floor
// makes. shares: what each thread did, and what was waited for. scale: the scene in turns with a
// plain one of 100,000 faces.
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>

#include <ModelHost.h>
#include <nlohmann/json.hpp>

#include "GeneratedScene.h"
#include "ReadFloor.h"
#include "RendererLink.h"
#include "ThreadShares.h"
#include "export/ReloadCaches.h"
#include "export/SkpImporter.h"
#include "geometry/GeometryTimings.h"
#include "support/TimingLog.h"

namespace {

using nlohmann::json;

double TimeOf(const std::function<void()>& work) {
  const double start = quellix::NowMs();
  work();
  return quellix::NowMs() - start;
}

// A line of the process's status, in KiB.
long StatusKiB(const std::string& key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(key + ":", 0) == 0) return std::stol(line.substr(key.size() + 1));
  }
  return 0;
}

class Case {
 public:
  Case(char** arguments)
      : size{std::stoul(arguments[2]),
             std::stoul(arguments[3]),
             std::stoul(arguments[4]),
             std::stoi(arguments[5]) != 0,
             0,
             1},
        cost(std::stol(arguments[6])),
        rounds(std::stoi(arguments[7])),
        su_model(bench::BuildScene(size)),
        renderer(arguments[1]) {
    result["faces"] = size.faces;
  }

  json Run(const std::string& what) {
    if (what == "time") Time();
    if (what == "floor") Floor();
    if (what == "shares") Shares();
    if (what == "scale") Scale();
    return result;
  }

 private:
  void Export() { Export(su_model); }
  void Export(SUModelRef su_exported) {
    quellix::ReloadCaches::Instance().ClearReloadCache();
    quellix::SkpImporter(renderer.link).Import(su_exported, "model", false, false);
  }
  void SetCost() {
    modelhost_reset_modes();
    if (cost > 0) modelhost_cost("*", cost);
  }

  void Memory() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
    const long before = StatusKiB("VmRSS");
    Export();
    const double bytes = static_cast<double>(StatusKiB("VmHWM") - before) * 1024;
    result["bytesPerFace"] = bytes / static_cast<double>(size.faces);
  }

  void Time() {
    SetCost();
    Memory();
    double best = std::numeric_limits<double>::max();
    for (int i = 0; i < rounds; ++i) best = std::min(best, TimeOf([this] { Export(); }));
    result["ms"] = best;
  }

  void Floor() {
    modelhost_watch("");
    bench::StartRecordingCalls();
    Export();
    bench::StopRecordingCalls();
    result["floorCalls"] = bench::RecordedCalls();
    result["calls"] = AllCalls();
    SetCost();
    double best = std::numeric_limits<double>::max();
    double floor = best;
    for (int i = 0; i < rounds; ++i) {
      floor = std::min(floor, TimeOf(bench::ReplayCalls));
      best = std::min(best, TimeOf([this] { Export(); }));
    }
    result["ms"] = best;
    result["floorMs"] = floor;
  }

  // The first export of a process may pay for memory that a virtual machine gets from the machine
  // below only then, so it does not count.
  void Scale() {
    constexpr std::size_t kSmallFaces = 100000;
    constexpr int kSmallRounds = 5;
    const SUModelRef su_small = bench::BuildScene({kSmallFaces, 100, 300, false, 0, 1});
    SetCost();
    Export();
    double best = std::numeric_limits<double>::max();
    double bestSmall = best;
    for (int i = 0; i < rounds; ++i) {
      best = std::min(best, TimeOf([this] { Export(); }));
      for (int k = 0; k < kSmallRounds; ++k) {
        bestSmall = std::min(bestSmall, TimeOf([&] { Export(su_small); }));
      }
    }
    result["ms"] = best;
    result["nsPerFace"] = best * 1e6 / static_cast<double>(size.faces);
    result["smallNsPerFace"] = bestSmall * 1e6 / kSmallFaces;
  }

  static std::size_t AllCalls() {
    SUStringRef su_list = SU_INVALID;
    SUStringCreate(&su_list);
    modelhost_call_list(&su_list);
    std::size_t length = 0;
    SUStringGetUTF8Length(su_list, &length);
    std::string text(length + 1, '\0');
    SUStringGetUTF8(su_list, text.size(), text.data(), &length);
    SUStringRelease(&su_list);
    std::istringstream lines(text.c_str());
    std::size_t sum = 0;
    std::string name;
    for (std::size_t calls = 0; lines >> name >> calls;) sum += calls;
    return sum;
  }

  void Shares() {
    SetCost();
    Export();
    bench::ThreadShares watch;
    const double start = quellix::NowMs();
    Export();
    const double wall = quellix::NowMs() - start;
    for (const auto& [name, share] : watch.Finish()) {
      if (share.ran + share.ready < 0.002) continue;
      result["threads"][name] = {{"ran", share.ran}, {"ready", share.ready}};
    }
    result["ms"] = wall;
    const quellix::GeometryWaits& waits = quellix::Waits();
    const std::pair<const char*, const quellix::TimingCounter*> counters[] = {
        {"collector lock", &waits.collectorLock},
        {"walk: pool behind", &waits.chunkBound},
        {"walk: sender behind", &waits.queueBound},
        {"sender: nothing queued", &waits.senderIdle},
        {"sender: mesh not finished", &waits.senderForMesh}};
    for (const auto& [name, counter] : counters) {
      result["waits"][name] = static_cast<double>(counter->microseconds) / 1000.0 / wall;
    }
    AddLoggedWaits(wall);
  }

  // What the timing log says of the last export: waits at gates, and for the renderer.
  void AddLoggedWaits(double wall) {
    std::ifstream log(std::getenv("QUELLIX_PERF_LOG_FILE"));
    double gates = 0.0;
    double ipc = 0.0;
    for (std::string line; std::getline(log, line);) {
      if (line.find("ExportModel begin") != std::string::npos) gates = ipc = 0.0;
      const auto gate = line.find("lockwait=");
      if (gate != std::string::npos) gates += std::stod(line.substr(gate + 9));
      const auto wait = line.find(" wait=");
      if (wait != std::string::npos) ipc += std::stod(line.substr(wait + 6));
    }
    result["waits"]["gates"] = gates / wall;
    result["waits"]["renderer"] = ipc / wall;
  }

  const bench::SceneSize size;
  const long cost;
  const int rounds;
  const SUModelRef su_model;
  bench::RendererLink renderer;
  json result = json::object();
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 9) return 2;
  SUInitialize();
  try {
    std::printf("%s\n", Case(argv).Run(argv[8]).dump().c_str());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "export_case: %s\n", error.what());
    return 1;
  }
  return 0;
}
