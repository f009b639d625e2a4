#pragma once

#include <string>

#include "picture/Model.h"

namespace kvpicture {

// Reads a binary glTF file: meshes, metallic-roughness materials, textures, lamps, the first
// camera, and the background colour in the scene's extras. Throws std::runtime_error with one
// sentence.
Model LoadGltf(const std::string& file);

}  // namespace kvpicture
