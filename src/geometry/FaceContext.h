#pragma once

#include <cstdint>

#include <SketchUpAPI/sketchup.h>
#include <glm/glm.hpp>

namespace quellix {

// One side of a face as the renderer will see it.
struct FaceSide {
  // The side's own material or the one it inherits; null when it has neither.
  SUMaterialRef material = SU_INVALID;
  // The texture writer's id for that material; 0 for no texture.
  std::int32_t textureId = 0;
  // The material has a texture, so that the side needs texture coordinates.
  bool textured = false;
  // The renderer's index of the material.
  std::uint32_t index = 0;
};

// What a face takes over from where it stands in the model.
struct FaceContext {
  // From the face's coordinates to those of the mesh.
  glm::mat4 transform{1.0f};
  SUTextureWriterRef textureWriter = SU_INVALID;
  FaceSide front;
  FaceSide back;
};

}  // namespace quellix
