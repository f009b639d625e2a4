#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "app/SceneTypes.h"

// Commands as they are once every byte of them has been checked.

namespace kvapp::command {

struct PrepareRendering {
  bool reload = false;
};
struct CloseApp {};
struct GetLinkCamera {};
struct ReloadFromPlugin {};
struct ClearModelDataForReload {};
struct MemoryDestroyed {};
struct SetCamera {
  CameraView view;
};
struct SetBackgroundSettings {
  Background background;
};
struct SetCameraAndBackgroundSettings {
  CameraView view;
  Background background;
};
// Both kinds of material.
struct AppendMaterial {
  Material material;
};
// Both kinds of light.
struct AppendLight {
  Light light;
};
// A mesh and its first placement. Triangles name their materials by renderer material index.
struct AppendMesh {
  std::uint64_t meshId = 0;
  Matrix transform{};
  std::uint8_t pass = 0;
  bool manifold = false;
  std::uint64_t cacheKey = 0;
  Geometry geometry;
};
struct InstanciateMesh {
  std::uint64_t meshId = 0;
  Matrix transform{};
  std::uint64_t cacheKey = 0;
};
struct InstanciateMeshBatch {
  std::vector<std::uint64_t> owners;
};
struct AppendCachedMaterials {
  std::vector<quellix::wire::CachedMaterialReference> references;
};
struct UpdateInstanceTransform {
  std::uint64_t owner = 0;
  Matrix transform{};
};
struct SetModelName {
  std::string name;
};
struct SetMessage {
  std::string text;
};
struct SetProgress {
  float progress = 0;
};
struct SetLinkCamera {
  bool linked = false;
};

}  // namespace kvapp::command

namespace kvapp {

// monostate stands for bytes that are no command.
using Command = std::variant<
    std::monostate, command::PrepareRendering, command::CloseApp, command::GetLinkCamera,
    command::ReloadFromPlugin, command::ClearModelDataForReload, command::MemoryDestroyed,
    command::SetCamera, command::SetBackgroundSettings, command::SetCameraAndBackgroundSettings,
    command::AppendMaterial, command::AppendLight, command::AppendMesh, command::InstanciateMesh,
    command::InstanciateMeshBatch, command::AppendCachedMaterials, command::UpdateInstanceTransform,
    command::SetModelName, command::SetMessage, command::SetProgress, command::SetLinkCamera>;

}  // namespace kvapp
