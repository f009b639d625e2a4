#include "app/Scene.h"

#include <utility>

namespace kvapp {

namespace {

// Replaces the triangles' material indexes by numbers of slots, one slot per distinct index.
std::vector<MaterialSlot> MakeSlots(Geometry& geometry) {
  std::vector<MaterialSlot> slots;
  std::unordered_map<std::uint32_t, std::uint32_t> slotOfIndex;
  std::uint32_t lastIndex = 0;
  std::uint32_t lastSlot = 0;
  const auto slotOf = [&](std::uint32_t index) {
    if (!slots.empty() && index == lastIndex) return lastSlot;
    const auto [found, added] =
        slotOfIndex.try_emplace(index, static_cast<std::uint32_t>(slots.size()));
    if (added) slots.push_back(MaterialSlot{index, false, 0, nullptr});
    lastIndex = index;
    return lastSlot = found->second;
  };
  for (quellix::wire::TriangleRecord& triangle : geometry.Triangles()) {
    triangle.frontMaterial = slotOf(triangle.frontMaterial);
    triangle.backMaterial = slotOf(triangle.backMaterial);
  }
  return slots;
}

}  // namespace

void Scene::Apply(Command command, std::uint64_t number, std::uint64_t messageBytes) {
  commandNumber_ = number;
  bytesSinceName_ += messageBytes;
  const bool wasExporting = exporting_;
  std::visit([this](auto& taken) { Take(taken); }, command);
  if (exporting_ || wasExporting) {
    exports_.back().bytes = bytesSinceName_;
    exports_.back().lastCommand = number;
  }
}

ExportSummary& Scene::Summary() {
  if (exports_.empty()) exports_.push_back({});
  return exports_.back();
}

void Scene::Take(command::PrepareRendering& command) {
  preparedForReload_ = command.reload;
}

void Scene::Take(command::ClearModelDataForReload&) {
  TurnOld();
}

void Scene::Take(command::SetCamera& command) {
  camera_ = command.view;
}

void Scene::Take(command::SetBackgroundSettings& command) {
  background_ = command.background;
}

void Scene::Take(command::SetCameraAndBackgroundSettings& command) {
  camera_ = command.view;
  background_ = command.background;
}

void Scene::Take(command::SetLinkCamera& command) {
  linked_ = command.linked;
}

void Scene::Take(command::SetModelName& command) {
  modelName_ = std::move(command.name);
  opening_ = Opening::Name;
  nameCommand_ = commandNumber_;
  bytesSinceName_ = 8 + modelName_.size() + 1;
}

void Scene::Take(command::SetMessage& command) {
  lastMessage_ = std::move(command.text);
  if (!lastMessage_.empty()) {
    if (opening_ == Opening::Name) opening_ = Opening::Message;
    closing_ = Closing::LightMessage;
  } else if (closing_ == Closing::LightMessage) {
    closing_ = Closing::EmptyMessage;
  }
}

void Scene::Take(command::SetProgress& command) {
  lastProgress_ = command.progress;
  if (command.progress == 0) {
    if (opening_ == Opening::Message) opening_ = Opening::Progress;
    if (exporting_ && closing_ == Closing::EmptyMessage) EndExport();
  }
}

void Scene::Take(command::AppendLight& command) {
  BeginContent();
  lights_.push_back(command.light);
  ++Summary().lightsSent;
}

void Scene::Take(command::AppendMaterial& command) {
  BeginContent();
  auto material = std::make_shared<Material>(std::move(command.material));
  const std::uint64_t key = material->key;
  ClaimIndex(material->index, key);
  oldMaterials_.erase(key);
  if (materials_.contains(key)) {
    findings_.Fault("material key " + std::to_string(key) +
                    " was sent before in this export, wanted once");
  }
  AddMaterial(std::move(material));
  ++Summary().materialsSent;
}

void Scene::Take(command::AppendCachedMaterials& command) {
  BeginContent();
  for (const auto& reference : command.references) {
    ++Summary().materialsReferenced;
    const auto current = materials_.find(reference.key);
    if (current != materials_.end()) {
      // Entities that share an identity share the material: the same key under one more index.
      ClaimIndex(reference.index, reference.key);
      continue;
    }
    const auto old = oldMaterials_.find(reference.key);
    if (old == oldMaterials_.end()) {
      findings_.Fault("cached material key " + std::to_string(reference.key) + " with index " +
                      std::to_string(reference.index) + " is not held, wanted one sent before");
      continue;
    }
    auto material = std::make_shared<Material>(*old->second);
    material->index = reference.index;
    material->lightPower = reference.lightPower;
    oldMaterials_.erase(old);
    ClaimIndex(reference.index, reference.key);
    AddMaterial(std::move(material));
  }
}

void Scene::AddMaterial(std::shared_ptr<Material> material) {
  const std::uint64_t key = material->key;
  if (materials_.insert_or_assign(key, std::move(material)).second) {
    materialsOfIdentity_[static_cast<std::uint32_t>(key)].push_back(key);
  }
  if (watcher_ != nullptr) watcher_->TookMaterial(materials_.at(key));
}

void Scene::ClaimIndex(std::uint32_t index, std::uint64_t key) {
  const auto [found, added] = keyOfIndex_.emplace(index, key);
  if (added) {
    if (watcher_ != nullptr) watcher_->TookIndex(index, key);
    return;
  }
  findings_.Fault("material index " + std::to_string(index) + " is given to key " +
                  std::to_string(key) + " and was given to key " + std::to_string(found->second) +
                  " before in this export, wanted one material an index");
}

void Scene::Take(command::AppendMesh& command) {
  BeginContent();
  auto mesh = std::make_shared<Mesh>();
  mesh->id = command.meshId;
  mesh->pass = command.pass;
  mesh->manifold = command.manifold;
  mesh->geometry = std::move(command.geometry);
  mesh->slots = MakeSlots(mesh->geometry);
  ExportSummary& summary = Summary();
  ++summary.meshesSent;
  summary.verticesSent += mesh->geometry.vertexCount;
  summary.trianglesSent += mesh->geometry.triangleCount;
  if (!sentMeshes_.insert_or_assign(command.meshId, mesh).second) {
    findings_.Note(NoteKind::MeshIdSentTwice, "mesh id " + std::to_string(command.meshId));
  }
  AddPlacement(command.cacheKey, std::move(mesh), command.transform);
}

void Scene::Take(command::InstanciateMesh& command) {
  BeginContent();
  const auto found = sentMeshes_.find(command.meshId);
  if (found == sentMeshes_.end()) {
    // The owner is in the new scene, with nothing to show: what it showed before goes.
    oldPlacements_.erase(command.cacheKey);
    findings_.Note(NoteKind::DanglingMesh, "mesh id " + std::to_string(command.meshId) +
                                               " for owner " + std::to_string(command.cacheKey));
    return;
  }
  AddPlacement(command.cacheKey, found->second, command.transform);
}

void Scene::AddPlacement(std::uint64_t owner, std::shared_ptr<Mesh> mesh, const Matrix& transform) {
  oldPlacements_.erase(owner);
  auto& placements = placements_[owner];
  placements.push_back(Placement{owner, std::move(mesh), transform, false});
  ++Summary().placementsSent;
  if (watcher_ != nullptr) watcher_->Placed(placements.back(), placements.size() == 1);
}

void Scene::Take(command::InstanciateMeshBatch& command) {
  BeginContent();
  for (const std::uint64_t owner : command.owners) {
    ++Summary().ownersReferenced;
    // Entities that share an identity: sent in this export for the first, referenced for the next.
    if (placements_.contains(owner)) continue;
    const auto old = oldPlacements_.find(owner);
    if (old == oldPlacements_.end()) {
      findings_.Note(NoteKind::DanglingOwner, "owner " + std::to_string(owner));
      continue;
    }
    std::vector<Placement> kept = std::move(old->second);
    oldPlacements_.erase(old);
    for (Placement& placement : kept) placement.kept = true;
    placements_.emplace(owner, std::move(kept));
  }
}

void Scene::Take(command::UpdateInstanceTransform& command) {
  // What is old now may be referenced by the next export, at its new place.
  std::vector<Placement>* moved = nullptr;
  const auto current = placements_.find(command.owner);
  if (current != placements_.end()) {
    moved = &current->second;
  } else if (const auto old = oldPlacements_.find(command.owner); old != oldPlacements_.end()) {
    moved = &old->second;
  }
  if (moved == nullptr) {
    findings_.Note(NoteKind::DanglingTransform, "owner " + std::to_string(command.owner));
    return;
  }
  for (Placement& placement : *moved) placement.transform = command.transform;
  if (watcher_ != nullptr) watcher_->Moved(command.owner, command.transform);
}

void Scene::BeginContent() {
  // Outside of an export a name is enough; inside it may be one that a script sent meanwhile.
  const bool begins = opening_ == Opening::Progress || (opening_ != Opening::None && !exporting_);
  if (!begins) return;
  opening_ = Opening::None;
  closing_ = Closing::None;
  TurnOld();
  sentMeshes_.clear();
  exporting_ = true;
  ExportSummary summary;
  summary.number = exports_.size() + 1;
  summary.modelName = modelName_;
  summary.firstCommand = nameCommand_;
  exports_.push_back(summary);
  if (watcher_ != nullptr) watcher_->ExportBegan(summary.number);
}

// A broken-off export turns old like a complete one: what it had sent may be referenced.
void Scene::TurnOld() {
  Settle();
  for (auto& [owner, placements] : placements_) {
    std::erase_if(placements, [](const Placement& placement) { return placement.mesh->pass != 0; });
    for (Placement& placement : placements) placement.kept = false;
    if (!placements.empty()) {
      oldPlacements_.insert_or_assign(owner, std::move(placements));
    }
  }
  for (auto& [key, material] : materials_) {
    oldMaterials_.insert_or_assign(key, std::move(material));
  }
  placements_.clear();
  materials_.clear();
  materialsOfIdentity_.clear();
  keyOfIndex_.clear();
  lights_.clear();
}

void Scene::EndExport() {
  exporting_ = false;
  opening_ = Opening::None;
  closing_ = Closing::None;
  TakeNewMeshes();
  Settle();
  CheckMaterialIndexes();
  oldMaterials_.clear();
  oldPlacements_.clear();
  Summary().complete = true;
  if (onExportEnd_) onExportEnd_(Summary().number);
}

void Scene::TakeNewMeshes() {
  for (auto& [owner, placements] : placements_) {
    for (Placement& placement : placements) {
      if (!placement.kept) continue;
      const auto sent = sentMeshes_.find(placement.mesh->id);
      if (sent != sentMeshes_.end()) placement.mesh = sent->second;
    }
  }
}

}  // namespace kvapp
