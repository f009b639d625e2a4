#pragma once

#include <atomic>
#include <cstdint>
#include <set>
#include <vector>

#include "geometry/MeshSink.h"
#include "link/ExportProgress.h"
#include "link/IpcInterface.h"

namespace quellix {

// Sends the meshes to the renderer, and tells it how far the export is. One thread at a time, the
// walk's or the pipeline's sender.
//
// A mesh that the link leaves out is not in the renderer, so its further placements are left out
// too.
class MeshSender : public MeshSink {
 public:
  MeshSender(IpcInterface& rendererLink, ExportProgress& exportProgress)
      : link(rendererLink), progress(exportProgress) {}

  void SendMesh(const MeshBuffer& mesh, const MeshPlacement& placement, std::uint8_t pass) override;
  void SendPlacement(const MeshPlacement& placement) override;

  // Faces handed over so far, each counted once by the walk.
  std::atomic<std::uint32_t> facesDone{0};
  // 0 when they were not counted; set before anything is sent.
  std::uint32_t totalFaces = 0;
  // The cache keys of the placements that were left out. Once all is sent.
  std::vector<std::uint64_t> leftOut;

 private:
  void ReportProgress();

  IpcInterface& link;
  ExportProgress& progress;
  std::set<std::uint64_t> missingMeshes;  // the ids of the meshes left out
};

}  // namespace quellix
