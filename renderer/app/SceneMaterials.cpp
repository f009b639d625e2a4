#include <algorithm>
#include <set>
#include <unordered_set>

#include "app/MaterialContent.h"
#include "app/Scene.h"

// How meshes find their materials: by index while their export lasts, by key ever after.

namespace kvapp {

namespace {

// How far above the highest known material index the indexes of unread images may go.
constexpr std::uint32_t kMostUnreadImages = 65536;

}  // namespace

void Scene::Settle() {
  std::unordered_set<const Mesh*> seen;
  for (auto& [owner, placements] : placements_) {
    for (Placement& placement : placements) {
      if (!seen.insert(placement.mesh.get()).second) continue;
      for (MaterialSlot& slot : placement.mesh->slots) SettleSlot(slot);
    }
  }
}

void Scene::SettleSlot(MaterialSlot& slot) {
  if (!slot.resolved) {
    const auto found = keyOfIndex_.find(slot.index);
    if (found == keyOfIndex_.end()) return;
    slot.resolved = true;
    slot.key = found->second;
  }
  if (auto material = FindMaterial(slot)) {
    slot.key = material->key;
    slot.material = std::move(material);
  }
}

// The upper half of a key tells under which texture id the host's texture writer knew the material,
// and these ids are counted anew in each export: the same material may come back under another key.
// The lower half is the material's identity. So a key that is gone stands for the material of that
// identity, where there is one, or for the one among them with the same content. Else the mesh
// keeps the material that it had.
std::shared_ptr<const Material> Scene::FindMaterial(const MaterialSlot& slot) const {
  const auto exact = materials_.find(slot.key);
  if (exact != materials_.end()) return exact->second;
  std::vector<std::shared_ptr<const Material>> sameIdentity;
  const auto identity = materialsOfIdentity_.find(static_cast<std::uint32_t>(slot.key));
  if (identity != materialsOfIdentity_.end()) {
    for (const std::uint64_t key : identity->second) sameIdentity.push_back(materials_.at(key));
  }
  if (sameIdentity.size() == 1) return sameIdentity.front();
  for (const auto& material : sameIdentity) {
    if (slot.material && SameContent(*material, *slot.material)) return material;
  }
  const auto old = oldMaterials_.find(slot.key);
  return old != oldMaterials_.end() ? old->second : slot.material;
}

void Scene::CheckMaterialIndexes() {
  std::set<std::uint32_t> unknown;
  for (const auto& mesh : PlacedMeshes()) {
    for (const MaterialSlot& slot : mesh->slots) {
      if (!slot.material && !slot.resolved) unknown.insert(slot.index);
    }
  }
  for (const std::uint32_t index : unknown) {
    if (MayBeUnreadImage(index)) {
      findings_.Note(NoteKind::DanglingMaterial, "material index " + std::to_string(index));
    } else {
      findings_.Fault("triangles name material index " + std::to_string(index) +
                      ", wanted one that this export sent or referenced");
    }
  }
}

// Images are numbered after all other materials, and only theirs may be missing.
bool Scene::MayBeUnreadImage(std::uint32_t index) const {
  std::uint32_t highest = 0;
  for (const auto& [known, key] : keyOfIndex_) {
    highest = std::max(highest, known);
    if (known > index && !materials_.at(key)->IsImage()) return false;
  }
  return index > 1 && (index < highest || index - highest <= kMostUnreadImages);
}

std::vector<std::shared_ptr<const Mesh>> Scene::PlacedMeshes() const {
  std::vector<std::shared_ptr<const Mesh>> meshes;
  std::unordered_set<const Mesh*> seen;
  for (const auto& [owner, placements] : placements_) {
    for (const Placement& placement : placements) {
      if (seen.insert(placement.mesh.get()).second) meshes.push_back(placement.mesh);
    }
  }
  return meshes;
}

std::size_t Scene::PlacementCount() const {
  std::size_t count = 0;
  for (const auto& [owner, placements] : placements_) count += placements.size();
  return count;
}

std::vector<Placement> Scene::ShownPlacements() const {
  std::vector<Placement> shown;
  for (const auto& [owner, placements] : placements_) {
    shown.insert(shown.end(), placements.begin(), placements.end());
  }
  for (const auto& [owner, placements] : oldPlacements_) {
    if (!placements_.contains(owner)) {
      shown.insert(shown.end(), placements.begin(), placements.end());
    }
  }
  return shown;
}

std::vector<std::shared_ptr<const Material>> Scene::ShownMaterials() const {
  std::vector<std::shared_ptr<const Material>> shown;
  for (const auto& [key, material] : materials_) shown.push_back(material);
  for (const auto& [key, material] : oldMaterials_) {
    if (!materials_.contains(key)) shown.push_back(material);
  }
  return shown;
}

}  // namespace kvapp
