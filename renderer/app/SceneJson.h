#pragma once

#include <filesystem>

#include <nlohmann/json.hpp>

#include "app/Scene.h"

namespace kvapp {

// Every value of the scene, in an order that does not depend on the order of arrival; two scenes
// show the same exactly when these are equal. Pixels and geometry stand as 64-bit digests. What is
// new each time a thing is sent, and what tells how it came here, is left out.
nlohmann::json SceneToJson(Scene& scene);

}  // namespace kvapp
