#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

#include <SketchUpAPI/sketchup.h>
#include <glm/glm.hpp>

#include "geometry/PolygonCount.h"
#include "geometry/FaceCollector.h"
#include "geometry/MeshBuffer.h"
#include "link/ExportProgress.h"
#include "link/IpcInterface.h"

namespace quellix {

// Where one mesh goes and under what names the renderer keeps it.
struct MeshPlacement {
  std::uint64_t meshId = 0;
  glm::mat4 transform{1.0f};
  std::uint64_t cacheKey = 0;
  bool manifold = false;
};

// The two walks of the model that hand over its geometry. The first makes the meshes of everything
// but camera-facing components, the second of those.
struct GeometryWalks {
  std::function<void()> firstPass;
  std::function<void()> secondPass;
};

// The geometry of one export: what its worker thread keeps from the first face to the last.
class GeometryExport {
 public:
  GeometryExport(IpcInterface& rendererLink, ExportProgress& exportProgress)
      : link(rendererLink), progress(exportProgress) {}
  GeometryExport(const GeometryExport&) = delete;
  GeometryExport& operator=(const GeometryExport&) = delete;

  // Runs both walks over the model below these root entities. A first export (not a reload) counts
  // the faces before, for the progress. The owners that the walks found cached are then sent as one
  // batch and the list is emptied. True when all was done.
  bool Run(SUEntitiesRef su_root, bool reload, const GeometryWalks& walks,
           std::vector<std::uint64_t>& cachedOwners);

  // Sends a finished mesh, if it holds anything, and reports the progress.
  void CloseMesh(const MeshBuffer& mesh, const MeshPlacement& placement);

  // Sends one more placement of a mesh that this export has sent.
  void PlaceMesh(const MeshPlacement& placement);

  // 0 during the first walk, 1 during the second.
  int Pass() const { return geometryPass; }

  FaceCollector collector;
  std::atomic<std::uint32_t> facesDone{0};

 private:
  void ReportProgress();

  IpcInterface& link;
  ExportProgress& progress;
  std::uint32_t totalFaces = 0;
  FaceCounts faceCounts;
  int geometryPass = 0;
};

}  // namespace quellix
