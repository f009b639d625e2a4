#pragma once

#include "export/MeshPaint.h"
#include "export/SkpImporter.h"
#include "export/Walks.h"

namespace quellix {

// The walks that turn the model into meshes and placements, on the geometry worker's thread.
class GeometryWalk {
 public:
  explicit GeometryWalk(SkpImporter& skpImporter)
      : importer(skpImporter), paints(skpImporter.scene) {}

  // The whole of the geometry worker's work: both passes, from the start of the path that the
  // switches choose to its end. Throws the first error of any thread, once all are joined.
  void Export();

 private:
  // Each top-level instance and group as one mesh with all that is nested in it, then what lies
  // loose at the root. Owners whose meshes the renderer holds are listed instead.
  void FirstPass();

  // The components that always face the camera, wherever they are, each as a mesh of its own.
  void SecondPass();

  // A cache key with all bits set stands for the owner of the manager's outermost element.
  void ExportDefinitionGeometry(IterateParams& params, std::uint64_t definitionId, bool manifold,
                                std::uint64_t cacheKey);
  std::uint64_t MeshIdOf(std::uint64_t definitionId, SUMaterialRef su_paint) const;
  void ExportLooseGeometry(SUEntitiesRef su_root, const InheritanceManager& manager);
  void CollectContent(IterateParams& params);
  void ExportFaces(const IterateParams& params);
  void DescendToFacing(IterateParams& params);
  void Record(std::uint64_t cacheKey);

  SkpImporter& importer;
  MeshPaint paints;
};

}  // namespace quellix
