#include "geometry/GeometryExport.h"

#include "geometry/FaceExporter.h"
#include "geometry/ParallelFaces.h"
#include "support/TimingLog.h"

namespace quellix {

void GeometryExport::Begin(SUEntitiesRef su_root, bool reload,
                           const std::function<bool()>& containsImages) {
  faceCounts = {};
  sender.totalFaces = 0;
  sender.facesDone = 0;
  geometryPass = 0;
  StartPath(containsImages);
  if (reload) return;
  const Stopwatch watch;
  sender.totalFaces = CountPolygons(su_root, faceCounts);
  LogLine("CountPolygons: %.1f ms (faces=%ld)", watch.Ms(), static_cast<long>(sender.totalFaces));
}

void GeometryExport::Finish(std::vector<std::uint64_t>& cachedOwners) {
  if (pipeline) pipeline->Finish();
  link.InstanciateMeshBatch(cachedOwners);
  cachedOwners.clear();
}

void GeometryExport::StartPath(const std::function<bool()>& containsImages) {
  switch (ChooseGeometryPath(containsImages)) {
    case GeometryPath::Pipeline:
      pipeline = std::make_unique<GeometryPipeline>(collector, sender, threads);
      break;
    case GeometryPath::Parallel:
      pool = std::make_unique<WorkerPool>(threads);
      break;
    case GeometryPath::Serial:
      break;
  }
}

void GeometryExport::End() {
  if (pipeline) peaks = pipeline->PeaksSoFar();
  pipeline.reset();
  pool.reset();
}

void GeometryExport::OpenMesh(const MeshPlacement& placement) {
  if (pipeline) pipeline->OpenMesh(placement, static_cast<std::uint8_t>(geometryPass));
}

void GeometryExport::ExportFaces(SUEntitiesRef su_entities, const FaceSource& source,
                                 MeshBuffer& buffer) {
  std::size_t faces = 0;
  if (SUEntitiesGetNumFaces(su_entities, &faces) != SU_ERROR_NONE || faces == 0) return;
  collector.EnterScope(su_entities, faces);
  if (pipeline) {
    pipeline->ProduceFaceWork(source);
  } else if (pool) {
    ExportFacesParallel(collector, *pool, source, buffer);
  } else {
    source([&](SUFaceRef su_face, const FaceContext& context) {
      ExportFaceSerial(collector, su_face, context, buffer);
    });
  }
}

void GeometryExport::CloseMesh(const MeshBuffer& buffer, const MeshPlacement& placement) {
  if (pipeline) {
    pipeline->CloseMesh();
  } else {
    sender.SendMesh(buffer, placement, static_cast<std::uint8_t>(geometryPass));
  }
}

void GeometryExport::PlaceMesh(const MeshPlacement& placement) {
  if (pipeline) {
    pipeline->PlaceMesh(placement);
  } else {
    sender.SendPlacement(placement);
  }
}

}  // namespace quellix
