#pragma once

#include "picture/Model.h"

namespace kvpicture {

// Draws a model: sun with shadows, lamps with shadows, sky light with its closeness to other
// surfaces, reflections of the sky, textures, see-through surfaces from far to near, a soft ground.
// Needs a current context. Throws std::runtime_error.
Image Paint(const Model& model, int width, int height);

}  // namespace kvpicture
