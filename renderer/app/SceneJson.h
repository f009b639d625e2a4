#pragma once

#include <functional>

#include <nlohmann/json.hpp>

#include "app/Scene.h"

namespace kvapp {

// Every value of the scene, in an order that does not depend on the order of arrival; two scenes
// show the same exactly when these are equal. Pixels and geometry stand as 64-bit digests. What is
// new each time a thing is sent, and what tells how it came here, is left out.
nlohmann::json SceneToJson(Scene& scene);

// Every value of one part. What stands for a texture is the caller's choice.
nlohmann::json MaterialToJson(const Material& material,
                              const std::function<nlohmann::json(const Texture&)>& textureJson);
nlohmann::json LightToJson(const Light& light);
nlohmann::json CameraToJson(const CameraView& view);
nlohmann::json BackgroundToJson(const Background& background);

}  // namespace kvapp
