#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/Findings.h"
#include "app/SceneTypes.h"

// What the thread of the channel hands over to the thread of the server. It holds nothing that
// anybody changes later.

namespace kvapp::view {

// The values of an update that stand for themselves. `kNames` are their names in JSON.
enum class Field {
  Session,
  Model,
  Message,
  Progress,
  CameraLinked,
  Camera,
  Background,
  Export,
  LastExport,
  Lights
};
inline constexpr std::array kNames = {"session",      "model",  "message",    "progress",
                                      "cameraLinked", "camera", "background", "export",
                                      "lastExport",   "lights"};

// A mesh is told from others by the address of its geometry, which lives as long as somebody knows
// it.
struct MeshContent {
  std::shared_ptr<const Geometry> geometry;
  std::uint64_t id = 0;
  bool facesCamera = false;
  bool manifold = false;
};

struct Slot {
  std::uint32_t index = 0;           // while the export lasts that sent the mesh
  std::optional<std::uint64_t> key;  // of the material; empty: not known (yet)
};

namespace change {

struct SetField {
  Field field;
  nlohmann::json value;
};
struct ExportBegan {};
struct TookMaterial {
  std::shared_ptr<const Material> material;
};
struct TookIndex {
  std::uint32_t index;
  std::uint64_t key;
};
struct Placed {
  MeshContent mesh;
  std::vector<Slot> slots;  // of the mesh
  std::uint64_t owner;
  Matrix transform;
  bool first;  // all that the owner showed before is gone
};
struct Moved {
  std::uint64_t owner;
  Matrix transform;
};
// Takes the place of all materials, meshes and placements.
struct Everything {
  struct Item {
    std::uint64_t owner;
    std::size_t mesh;  // its place in `meshes`
    Matrix transform;
  };
  std::unordered_map<std::uint32_t, std::uint64_t> keyOfIndex;
  std::vector<std::shared_ptr<const Material>> materials;
  std::vector<MeshContent> meshes;
  std::vector<std::vector<Slot>> slots;  // of each mesh
  std::vector<Item> items;               // those of an owner follow each other
};
// The findings since those told before, and all counts.
struct Found {
  std::uint64_t faultCount;
  std::map<std::string, std::uint64_t> noteCounts;
  std::vector<Finding> faults;
  std::vector<Finding> notes;
};

}  // namespace change

using Change =
    std::variant<change::SetField, change::ExportBegan, change::TookMaterial, change::TookIndex,
                 change::Placed, change::Moved, change::Everything, change::Found>;

// What one command changed.
struct Step {
  std::uint64_t command = 0;
  std::chrono::steady_clock::time_point taken;
  std::vector<Change> changes;
};

}  // namespace kvapp::view
