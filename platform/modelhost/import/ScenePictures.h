// Pictures of a scene file: read from a file beside it, or generated.
#pragma once

#include <string>

#include "import/SceneNode.h"
#include "pixels/Pixels.h"

namespace modelhost {

struct ScenePicture {
  Pixels pixels;
  std::string fileName;
};

// "file.png" relative to `folder`, or an object that describes the pixels; its keys are in
// docs/scene-format.md. Keys other than those of pictures are left to the caller.
ScenePicture readScenePicture(const SceneNode& node, const std::string& folder);

}  // namespace modelhost
