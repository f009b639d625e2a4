#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "export/Lights.h"
#include "export/MaterialEntry.h"
#include "export/SceneIndex.h"
#include "geometry/GeometryExport.h"
#include "link/ExportProgress.h"
#include "link/IpcInterface.h"
#include "support/TimingLog.h"
#include "support/WorkerPool.h"

namespace quellix {

// One export of a model: what its phases share, and the driver that runs them. Made by do_import
// for one call; it is used on the host thread, except that the driver's two workers read and write
// what is noted below.
class SkpImporter {
 public:
  // `geometryThreads`: how many pool threads make meshes, in the paths that have a pool.
  explicit SkpImporter(IpcInterface& rendererLink,
                       unsigned geometryThreads = WorkerCount(std::thread::hardware_concurrency()));
  virtual ~SkpImporter();
  SkpImporter(const SkpImporter&) = delete;
  SkpImporter& operator=(const SkpImporter&) = delete;

  // Exports the model under that name (UTF-8). `reloadExport` says that the renderer shows it
  // already, `pbr` that metallic-roughness materials are to be sent as such. Throws what a phase
  // threw, after everything was joined.
  void Import(SUModelRef su_modelToExport, const std::string& modelName, bool reloadExport,
              bool pbr);

  // True once the renderer that the export began with is gone, or the user has broken it off: what
  // is left to do would reach nobody. Any thread.
  bool Abandoned();
  // The same for a loop of small steps, which it counts: asks the system only now and then.
  bool Abandoned(std::uint32_t& steps);

  SUModelRef model = SU_INVALID;
  SUTextureWriterRef textureWriter = SU_INVALID;  // every texture of the export is loaded into it
  IpcInterface& link;
  bool reload = false;
  bool usePbr = false;
  const bool rendererAtStart;
  const bool unifiedScan;
  const bool meshPerPaint;  // a definition has a mesh for each paint that it takes from outside
  ExportProgress progress;

  SceneIndex scene;

  // Materials that the renderer already holds: the scan's, then the material worker's.
  std::vector<wire::CachedMaterialReference> cachedMaterialRefs;

  // Found by the unified scan, sent after the geometry.
  std::vector<LightRecord> pendingLights;

  // The geometry worker's.
  GeometryExport geometry;
  std::vector<std::uint64_t> cachedGeometryPids;  // owners whose meshes the renderer holds

  // The meshes that this export has made, by the handles of a definition's entities and of the
  // paint that it takes from outside, which is null without `meshPerPaint`.
  std::mutex lock;
  std::map<std::pair<const void*, const void*>, std::uint64_t> exportedDefinitions;

 private:
  std::atomic<bool> abandoned{false};

  bool ExportModel();
  void RunPhases();
  void SendClosing();
  void ResetDiagnostics();
  void CollectHiddenLayers();
  void SendLights();
  void RunWorkers(const std::vector<MaterialEntry>& entries);
  void WriteSummary(const Stopwatch& whole);
  void SendText(const char* text);
};

}  // namespace quellix
