#pragma once

#include <filesystem>

#include "app/Scene.h"

namespace kvapp {

// Writes the scene as a binary glTF file that is complete in itself. The scene must be settled.
// Throws std::runtime_error with one sentence.
void WriteGlb(const Scene& scene, const std::filesystem::path& file);

}  // namespace kvapp
