#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "geometry/FaceCollector.h"
#include "geometry/FaceWork.h"
#include "geometry/GeometryPath.h"
#include "geometry/GeometryPipeline.h"
#include "geometry/MeshBuffer.h"
#include "geometry/MeshPlacement.h"
#include "geometry/MeshSender.h"
#include "geometry/PolygonCount.h"
#include "link/ExportProgress.h"
#include "link/IpcInterface.h"
#include "support/WorkerPool.h"

namespace quellix {

// The geometry of one export: what its worker thread keeps from the first face to the last. That
// thread begins, walks the model twice, and finishes; the walks call OpenMesh, ExportFaces,
// CloseMesh and PlaceMesh, whatever path the switches choose.
class GeometryExport {
 public:
  GeometryExport(IpcInterface& rendererLink, ExportProgress& exportProgress,
                 unsigned poolThreads = WorkerCount(std::thread::hardware_concurrency()))
      : link(rendererLink), sender(rendererLink, exportProgress), threads(poolThreads) {}
  GeometryExport(const GeometryExport&) = delete;
  GeometryExport& operator=(const GeometryExport&) = delete;

  // Starts what the switches ask for; `containsImages` tells whether there is an image entity
  // anywhere in the model. A first export (not a reload) counts the faces below these root
  // entities, for the progress. Throws std::system_error when a thread cannot be started.
  void Begin(SUEntitiesRef su_root, bool reload, const std::function<bool()>& containsImages);
  // What follows is the second walk's.
  void BeginSecondPass() { geometryPass = 1; }
  // Returns when everything was sent, then sends the owners that the walks found cached as one
  // batch and empties the list. Throws the first error of any thread.
  void Finish(std::vector<std::uint64_t>& cachedOwners);
  // The cache keys whose placements the link left out. After Finish.
  const std::vector<std::uint64_t>& LeftOut() const { return sender.leftOut; }
  // Joins all threads; what is not sent yet is dropped.
  void End();

  // Starts a mesh.
  void OpenMesh(const MeshPlacement& placement);
  // Adds the collection's faces that `source` gives to the mesh; in the pipeline `buffer` stays as
  // it is.
  void ExportFaces(SUEntitiesRef su_entities, const FaceSource& source, MeshBuffer& buffer);
  // Ends the mesh; it is sent, if it holds anything, under its placement.
  void CloseMesh(const MeshBuffer& buffer, const MeshPlacement& placement);
  // Sends one more placement of a mesh that this export has made.
  void PlaceMesh(const MeshPlacement& placement);

  // 0 during the first walk, 1 during the second.
  int Pass() const { return geometryPass; }
  // Counts each selected face.
  std::atomic<std::uint32_t>& FacesDone() { return sender.facesDone; }

  // How far the bounds of the pipeline were used; all 0 on the other paths. After
  // End.
  const GeometryPipeline::Peaks& PipelinePeaks() const { return peaks; }

  FaceCollector collector;

 private:
  void StartPath(const std::function<bool()>& containsImages);

  IpcInterface& link;
  MeshSender sender;
  const unsigned threads;
  FaceCounts faceCounts;
  int geometryPass = 0;
  // At most one of the two exists, and only from Begin to End.
  std::unique_ptr<WorkerPool> pool;
  std::unique_ptr<GeometryPipeline> pipeline;
  GeometryPipeline::Peaks peaks;
};

}  // namespace quellix
