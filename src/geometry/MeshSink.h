#pragma once

#include <cstdint>

#include "geometry/MeshBuffer.h"
#include "geometry/MeshPlacement.h"

namespace quellix {

// Takes the meshes of an export, and their placements, in the order of the walk.
class MeshSink {
 public:
  virtual ~MeshSink() = default;

  // `pass`: 0 or 1, the walk that made the mesh. A mesh without a vertex or a triangle is left out.
  virtual void SendMesh(const MeshBuffer& mesh, const MeshPlacement& placement,
                        std::uint8_t pass) = 0;
  // One more placement of a mesh that went before.
  virtual void SendPlacement(const MeshPlacement& placement) = 0;
};

}  // namespace quellix
