// From the axes and units of a file to those of the host: Z up, inches.
#pragma once

#include <SketchUpAPI/transformation.h>

#include <string>

struct aiScene;

namespace modelhost {

// Formats that fix their unit are converted; in the others one unit counts as one inch.
SUTransformation conversionOf(const aiScene& scene, const std::string& path);

}  // namespace modelhost
