#pragma once

#include <cstddef>
#include <map>
#include <optional>

#include "app/GlbDocument.h"
#include "app/GlbMaterials.h"
#include "app/Scene.h"

namespace kvapp {

// Turns meshes into glTF meshes, each the first time it is asked for.
//
// A triangle has a material on each side, a glTF primitive has one. Where both sides look the same
// there is one primitive seen from both sides; otherwise one for the front and, with the winding
// and the normals turned round, one for the back, each seen from its side only.
class GlbMeshes {
 public:
  GlbMeshes(GlbDocument& document, GlbMaterials& materials)
      : document_(document), materials_(materials) {}

  // Empty when nothing of the mesh can be seen.
  std::optional<std::size_t> Index(const Mesh& mesh);
  // A mesh of its own, with the transform applied to its vertices.
  std::optional<std::size_t> Baked(const Mesh& mesh, const Matrix& transform);

 private:
  std::optional<std::size_t> Build(const Mesh& mesh, const Matrix* transform);

  GlbDocument& document_;
  GlbMaterials& materials_;
  std::map<const Mesh*, std::optional<std::size_t>> meshes_;
};

}  // namespace kvapp
