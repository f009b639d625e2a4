#include "geometry/GeometryExport.h"

#include <glm/gtc/type_ptr.hpp>

#include "support/TimingLog.h"

namespace quellix {

bool GeometryExport::Run(SUEntitiesRef su_root, bool reload, const GeometryWalks& walks,
                         std::vector<std::uint64_t>& cachedOwners) {
  faceCounts.clear();
  totalFaces = 0;
  geometryPass = 0;
  facesDone = 0;
  if (!reload) {
    const double start = NowMs();
    totalFaces = CountPolygons(su_root, faceCounts);
    LogLine("CountPolygons: %.1f ms (faces=%ld)", NowMs() - start, static_cast<long>(totalFaces));
  }
  walks.firstPass();
  geometryPass = 1;
  walks.secondPass();
  link.InstanciateMeshBatch(cachedOwners);
  cachedOwners.clear();
  return true;
}

void GeometryExport::CloseMesh(const MeshBuffer& mesh, const MeshPlacement& placement) {
  if (mesh.vertices.empty() || mesh.triangles.empty()) return;
  link.AppendMesh(placement.meshId, glm::value_ptr(placement.transform),
                  static_cast<std::uint32_t>(mesh.vertices.size()),
                  glm::value_ptr(mesh.vertices.front().position),
                  static_cast<std::uint32_t>(mesh.triangles.size() / kTriangleWords),
                  mesh.triangles.data(), static_cast<std::uint8_t>(geometryPass),
                  placement.manifold, placement.cacheKey);
  ReportProgress();
}

void GeometryExport::PlaceMesh(const MeshPlacement& placement) {
  link.InstanciateMesh(placement.meshId, glm::value_ptr(placement.transform), placement.cacheKey);
  ReportProgress();
}

// A reload counts no faces, so its geometry share stays 0.
void GeometryExport::ReportProgress() {
  progress.SetGeometry(
      totalFaces == 0 ? 0.0f : static_cast<float>(facesDone) / static_cast<float>(totalFaces));
}

}  // namespace quellix
