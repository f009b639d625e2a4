// Measures reloads of a model that has not changed, and how many material records are alive at
// once; prints one JSON object.
//
//   reload_case <folder of the renderer> <folder for the renderer's report>
#include <cstdio>
#include <cstdlib>
#include <algorithm>
#include <exception>
#include <fstream>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "GeneratedScene.h"
#include "RendererLink.h"
#include "export/MaterialExport.h"
#include "export/ReloadCaches.h"
#include "export/SceneScan.h"
#include "export/SkpImporter.h"
#include "support/TimingLog.h"
#include "support/WorkerPool.h"

namespace {

using nlohmann::json;

constexpr int kRounds = 3;

double Export(quellix::IpcInterface& link, SUModelRef su_model, bool reload) {
  const double start = quellix::NowMs();
  quellix::SkpImporter(link).Import(su_model, "model", reload, false);
  const double elapsed = quellix::NowMs() - start;
  quellix::ReloadCaches::Instance().UpdateCacheInfo();
  return elapsed;
}

// The scan of a reload, by itself.
double Scan(quellix::IpcInterface& link, SUModelRef su_model) {
  quellix::SkpImporter importer(link);
  importer.model = su_model;
  SUTextureWriterCreate(&importer.textureWriter);
  std::vector<quellix::MaterialEntry> entries;
  const double start = quellix::NowMs();
  quellix::CollectSceneInfo(importer, entries);
  return quellix::NowMs() - start;
}

json Measure(const char* rendererFolder, const std::string& reportFolder) {
  bench::SceneSize size;
  size.faces = 200000;
  size.definitions = 500;
  size.placements = 2000;
  size.textured = true;
  size.materials = size.texturedMaterials = 100;
  const SUModelRef su_model = bench::BuildScene(size);
  double reload = std::numeric_limits<double>::max();
  double scan = reload;
  {
    bench::RendererLink renderer(rendererFolder);
    quellix::ReloadCaches::Instance().ClearReloadCache();
    Export(renderer.link, su_model, false);
    for (int i = 0; i < kRounds; ++i) {
      reload = std::min(reload, Export(renderer.link, su_model, true));
      scan = std::min(scan, Scan(renderer.link, su_model));
    }
  }
  std::ifstream file(reportFolder + "/report.json");
  const json exports = json::parse(file).at("exports");
  return {{"reloadMs", reload},
          {"scanMs", scan},
          {"firstBytes", exports.at(0).at("bytes")},
          {"reloadBytes", exports.at(1).at("bytes")},
          {"recordsAlive", quellix::PeakMaterialRecords()},
          {"recordsAllowed", quellix::WorkerCount(std::thread::hardware_concurrency()) + 2}};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  SUInitialize();
  setenv("KVAPP_OUT", argv[2], 1);
  setenv("KVAPP_PICTURE", "0", 1);
  try {
    std::printf("%s\n", Measure(argv[1], argv[2]).dump().c_str());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "reload_case: %s\n", error.what());
    return 1;
  }
  return 0;
}
