#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "app/Commands.h"
#include "app/Findings.h"
#include "app/SceneTypes.h"

namespace kvapp {

// One material that a mesh names. A mesh outlives the export that sent it, and the indexes of a
// later export mean other materials; so an index is only good until its export ends, and from then
// on the mesh goes by the material's key.
struct MaterialSlot {
  std::uint32_t index = 0;
  bool resolved = false;
  std::uint64_t key = 0;                     // once resolved
  std::shared_ptr<const Material> material;  // null: not known
};

struct Mesh {
  std::uint64_t id = 0;
  std::uint8_t pass = 0;
  bool manifold = false;
  // The triangles' material fields are numbers of `slots`.
  Geometry geometry;
  std::vector<MaterialSlot> slots;
};

struct Placement {
  std::uint64_t owner = 0;  // the cache key it came with
  std::shared_ptr<Mesh> mesh;
  Matrix transform{};
  bool kept = false;  // taken over from an earlier export
};

// What one export did, for the report.
struct ExportSummary {
  std::uint64_t number = 0;
  std::string modelName;
  bool complete = false;
  std::uint64_t firstCommand = 0;
  std::uint64_t lastCommand = 0;
  std::uint64_t bytes = 0;
  std::uint64_t materialsSent = 0;
  std::uint64_t materialsReferenced = 0;
  std::uint64_t meshesSent = 0;
  std::uint64_t placementsSent = 0;
  std::uint64_t ownersReferenced = 0;
  std::uint64_t lightsSent = 0;
  std::uint64_t verticesSent = 0;
  std::uint64_t trianglesSent = 0;
};

// Is told of what an export brings while it runs, on the thread that applies the commands. What it
// is told to hold on to is not changed any more, except a mesh's slots.
class SceneWatcher {
 public:
  virtual ~SceneWatcher() = default;
  virtual void ExportBegan(std::uint64_t number) = 0;
  virtual void TookMaterial(const std::shared_ptr<const Material>& material) = 0;
  virtual void TookIndex(std::uint32_t index, std::uint64_t key) = 0;
  // `first`: all that the owner showed before is gone.
  virtual void Placed(const Placement& placement, bool first) = 0;
  virtual void Moved(std::uint64_t owner, const Matrix& transform) = 0;
};

// The scene that the commands describe.
//
// Exports. An export opens with a model name, a message and progress 0, and begins with the first
// scene content after these; it closes with a message (of its light phase), an empty message and
// progress 0. Names, messages and progress that come alone, at any time, change only themselves.
// Everything of the previous export turns old when a new one begins; the new scene is what the
// export sends or references: a placement replaces all old ones of its owner, a referenced owner or
// material is taken over as it is (with the new index and light power of the reference). Lights and
// camera-facing placements come with every export and are never taken over. So after an export with
// references the scene equals that of a fresh export into a fresh renderer.
//
// What a complete export neither sent nor referenced is forgotten when it ends, as the plug-in's
// own books are brought to what the export used. To hold it longer would show ghosts: an owner that
// came out empty is not sent, yet later exports reference it. A broken-off export forgets nothing.
//
// Mesh ids. An id stands for a definition of the model. When a definition is sent again while other
// owners keep their old placements of it, these take the new mesh at the end of the export: a fresh
// export makes one mesh a definition and places it everywhere. A placement in the export that sent
// the mesh keeps that very mesh. Meshes of earlier exports are no longer placed by id: an export
// sends a mesh before it places it, so an id it has not sent means that the mesh came out empty.
class Scene {
 public:
  explicit Scene(Findings& findings) : findings_(findings) {}

  // Called at the end of each complete export.
  void OnExportEnd(std::function<void(std::uint64_t number)> callback) {
    onExportEnd_ = std::move(callback);
  }

  // Null: nobody watches.
  void WatchBy(SceneWatcher* watcher) { watcher_ = watcher; }

  // Takes one checked command; `number` counts commands from 1.
  void Apply(Command command, std::uint64_t number, std::uint64_t messageBytes);

  // Makes every material slot point at the material it means now.
  void Settle();

  const std::string& ModelName() const { return modelName_; }
  const std::string& LastMessage() const { return lastMessage_; }
  float LastProgress() const { return lastProgress_; }
  const std::optional<CameraView>& Camera() const { return camera_; }
  const std::optional<Background>& BackgroundSettings() const { return background_; }
  const std::optional<bool>& Linked() const { return linked_; }
  const std::optional<bool>& PreparedForReload() const { return preparedForReload_; }
  const std::vector<Light>& Lights() const { return lights_; }
  // By key, each once.
  const std::map<std::uint64_t, std::shared_ptr<Material>>& Materials() const { return materials_; }
  // By owner.
  const std::map<std::uint64_t, std::vector<Placement>>& Placements() const { return placements_; }
  const std::vector<ExportSummary>& Exports() const { return exports_; }
  // Every mesh that is placed, once, in a stable order.
  std::vector<std::shared_ptr<const Mesh>> PlacedMeshes() const;
  std::size_t PlacementCount() const;
  // Which materials the indexes of the last export mean.
  const std::unordered_map<std::uint32_t, std::uint64_t>& KeyOfIndex() const { return keyOfIndex_; }
  // What there is to be seen also while an export runs: what it brought, and of the exports before
  // what it has not replaced yet. The placements of an owner follow each other.
  std::vector<Placement> ShownPlacements() const;
  std::vector<std::shared_ptr<const Material>> ShownMaterials() const;

 private:
  void Take(std::monostate&) {}
  void Take(command::PrepareRendering& command);
  void Take(command::CloseApp&) {}
  void Take(command::GetLinkCamera&) {}
  void Take(command::ReloadFromPlugin&) {}
  void Take(command::ClearModelDataForReload& command);
  void Take(command::MemoryDestroyed&) {}
  void Take(command::SetCamera& command);
  void Take(command::SetBackgroundSettings& command);
  void Take(command::SetCameraAndBackgroundSettings& command);
  void Take(command::AppendMaterial& command);
  void Take(command::AppendLight& command);
  void Take(command::AppendMesh& command);
  void Take(command::InstanciateMesh& command);
  void Take(command::InstanciateMeshBatch& command);
  void Take(command::AppendCachedMaterials& command);
  void Take(command::UpdateInstanceTransform& command);
  void Take(command::SetModelName& command);
  void Take(command::SetMessage& command);
  void Take(command::SetProgress& command);
  void Take(command::SetLinkCamera& command);

  void BeginContent();
  void EndExport();
  void TurnOld();
  void AddPlacement(std::uint64_t owner, std::shared_ptr<Mesh> mesh, const Matrix& transform);
  void AddMaterial(std::shared_ptr<Material> material);
  void ClaimIndex(std::uint32_t index, std::uint64_t key);
  void TakeNewMeshes();
  void SettleSlot(MaterialSlot& slot);
  std::shared_ptr<const Material> FindMaterial(const MaterialSlot& slot) const;
  void CheckMaterialIndexes();
  bool MayBeUnreadImage(std::uint32_t index) const;
  ExportSummary& Summary();

  Findings& findings_;
  std::function<void(std::uint64_t)> onExportEnd_;
  SceneWatcher* watcher_ = nullptr;

  std::string modelName_;
  std::string lastMessage_;
  float lastProgress_ = -1;
  std::optional<CameraView> camera_;
  std::optional<Background> background_;
  std::optional<bool> linked_;
  std::optional<bool> preparedForReload_;
  std::vector<Light> lights_;
  std::map<std::uint64_t, std::shared_ptr<Material>> materials_;
  std::unordered_map<std::uint32_t, std::uint64_t> keyOfIndex_;
  std::unordered_map<std::uint32_t, std::vector<std::uint64_t>> materialsOfIdentity_;
  std::map<std::uint64_t, std::vector<Placement>> placements_;
  std::unordered_map<std::uint64_t, std::shared_ptr<Mesh>> sentMeshes_;

  // Of the export before, and of broken-off ones since.
  std::unordered_map<std::uint64_t, std::shared_ptr<Material>> oldMaterials_;
  std::unordered_map<std::uint64_t, std::vector<Placement>> oldPlacements_;

  // How far the opening of an export has come.
  enum class Opening { None, Name, Message, Progress };
  // How far its closing has come.
  enum class Closing { None, LightMessage, EmptyMessage };
  Opening opening_ = Opening::None;
  Closing closing_ = Closing::None;
  bool exporting_ = false;
  std::uint64_t commandNumber_ = 0;
  std::uint64_t nameCommand_ = 0;
  std::uint64_t bytesSinceName_ = 0;
  std::vector<ExportSummary> exports_;
};

}  // namespace kvapp
