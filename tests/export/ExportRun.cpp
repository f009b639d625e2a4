// Exports a model to a stand-in renderer: once as a first export, once as a reload of what the
// renderer holds, once as a reload after everything was forgotten. A program of its own, because a
// process reads each switch only once; the digest file that its environment names gets one summary
// an export.
//
//   export_run <folder of the renderer> <pool threads> <model>
//
// A model is a file, or "generated:<faces>:<definitions>:<placements>:<textured>", or
// "cone:<faces>", or "face:<corners>:<holes>", or "row:<squares>". Prints the peaks of the
// process's memory before and after the exports, in KiB, and how many calls for face data were made
// while another thread was in one.
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "GeneratedScene.h"
#include "RendererLink.h"
#include "export/ReloadCaches.h"
#include "export/SkpImporter.h"

#include <ModelHost.h>

namespace {

std::vector<std::string> Parts(const std::string& text) {
  std::vector<std::string> parts;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, ':');) parts.push_back(part);
  return parts;
}

SUModelRef Load(const std::string& name) {
  const std::vector<std::string> parts = Parts(name);
  const auto number = [&](std::size_t i) { return std::stoul(parts.at(i)); };
  if (parts[0] == "generated") {
    return bench::BuildScene({number(1), number(2), number(3), number(4) != 0, 0, 1});
  }
  if (parts[0] == "slow") {
    return bench::BuildScene({number(1), number(2), number(3), number(4) != 0, 4000, 1});
  }
  if (parts[0] == "cone") return bench::BuildCone(number(1));
  if (parts[0] == "face") return bench::BuildLargeFace(number(1), number(2));
  if (parts[0] == "row") return bench::BuildRow(number(1));
  SUModelRef su_model = SU_INVALID;
  SUStringRef su_message = SU_INVALID;
  SUStringCreate(&su_message);
  if (modelhost_load(name.c_str(), &su_model, &su_message) != SU_ERROR_NONE) {
    throw std::runtime_error("cannot load " + name);
  }
  SUStringRelease(&su_message);
  return su_model;
}

long PeakKiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

void Export(quellix::IpcInterface& link, SUModelRef su_model, unsigned threads, bool reload) {
  quellix::SkpImporter(link, threads).Import(su_model, "model", reload, false);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  SUInitialize();
  try {
    const SUModelRef su_model = Load(argv[3]);
    const auto threads = static_cast<unsigned>(std::atoi(argv[2]));
    modelhost_watch("facedata");
    const long before = PeakKiB();
    bench::RendererLink renderer(argv[1]);
    Export(renderer.link, su_model, threads, false);
    quellix::ReloadCaches::Instance().UpdateCacheInfo();
    Export(renderer.link, su_model, threads, true);
    quellix::ReloadCaches::Instance().ClearReloadCache();
    renderer.link.ClearModelDataForReload();
    Export(renderer.link, su_model, threads, true);
    std::printf("%ld %ld %zu\n", before, PeakKiB(), modelhost_overlaps(nullptr));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "export_run: %s\n", error.what());
    return 1;
  }
  return 0;
}
