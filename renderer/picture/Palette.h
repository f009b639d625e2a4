#pragma once

#include <glm/glm.hpp>

#include "picture/Model.h"

namespace kvpicture {

// The colours around the model, as light.
struct Palette {
  glm::vec3 zenith{0};
  glm::vec3 horizon{0};
  glm::vec3 ground{0};
};

// From the model's background colour, or a pale blue day.
Palette PaletteOf(const Model& model);

}  // namespace kvpicture
