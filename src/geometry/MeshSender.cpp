#include "geometry/MeshSender.h"

#include <glm/gtc/type_ptr.hpp>

namespace quellix {

void MeshSender::SendMesh(const MeshBuffer& mesh, const MeshPlacement& placement,
                          std::uint8_t pass) {
  if (mesh.vertices.empty() || mesh.triangles.empty()) return;
  if (link.AppendMesh(placement.meshId, glm::value_ptr(placement.transform),
                      static_cast<std::uint32_t>(mesh.vertices.size()),
                      glm::value_ptr(mesh.vertices.front().position),
                      static_cast<std::uint32_t>(mesh.triangles.size() / kTriangleWords),
                      mesh.triangles.data(), pass, placement.manifold, placement.cacheKey)) {
    // Definitions may share an id.
    missingMeshes.erase(placement.meshId);
  } else {
    missingMeshes.insert(placement.meshId);
    leftOut.push_back(placement.cacheKey);
  }
  ReportProgress();
}

void MeshSender::SendPlacement(const MeshPlacement& placement) {
  if (missingMeshes.contains(placement.meshId) ||
      !link.InstanciateMesh(placement.meshId, glm::value_ptr(placement.transform),
                            placement.cacheKey)) {
    leftOut.push_back(placement.cacheKey);
  }
  ReportProgress();
}

// A reload counts no faces, so its geometry share stays 0.
void MeshSender::ReportProgress() {
  progress.SetGeometry(
      totalFaces == 0 ? 0.0f : static_cast<float>(facesDone) / static_cast<float>(totalFaces));
}

}  // namespace quellix
