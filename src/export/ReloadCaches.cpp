#include "export/ReloadCaches.h"

#include <utility>

#include "support/TimingLog.h"

namespace quellix {

namespace {

unsigned long long Printed(std::uint64_t id) {
  return static_cast<unsigned long long>(id);
}

}  // namespace

ReloadCaches& ReloadCaches::Instance() {
  static ReloadCaches caches;
  return caches;
}

bool ReloadCaches::UseCachedMaterial(std::uint32_t index, std::uint32_t materialId,
                                     std::int32_t textureId, float lightPower,
                                     std::vector<wire::CachedMaterialReference>& references) {
  const std::uint64_t key = MaterialKey(textureId, materialId);
  const auto held = materialCache.find(key);
  if (held == materialCache.end()) return false;
  references.push_back({index, lightPower, key});
  materialsUsed.insert(*held);
  return true;
}

void ReloadCaches::RecordMaterial(std::uint64_t key, std::uint64_t picture) {
  materialCache[key] = picture;
  materialsUsed[key] = picture;
}

bool ReloadCaches::TryUseCachedGeometry(std::uint64_t ownerId, bool reload,
                                        std::vector<std::uint64_t>& ownerIds) {
  if (!geometryCache.contains(ownerId)) {
    if (reload) LogLine("geo cache miss (re-export): pid=%llu", Printed(ownerId));
    return false;
  }
  ownerIds.push_back(ownerId);
  geometryUsed.insert(ownerId);
  return true;
}

void ReloadCaches::RecordGeometry(std::uint64_t ownerId) {
  geometryCache.insert(ownerId);
  geometryUsed.insert(ownerId);
}

void ReloadCaches::BeginScan(bool unified) {
  former.materials = std::exchange(materialDependents, {});
  former.layers = std::exchange(layerDependents, {});
  if (unified) {
    former.children = std::exchange(childrenMap, {});
    return;
  }
  // Then the walk finds the layers, and it does not enter what the renderer holds.
  for (const auto& [layerId, ownerIds] : former.layers) {
    for (const std::uint64_t ownerId : ownerIds) {
      if (geometryCache.contains(ownerId)) layerDependents[layerId].insert(ownerId);
    }
  }
}

void ReloadCaches::ForgetOtherPictures(std::span<const MaterialVariant> variants) {
  const auto materialId = [](const MaterialVariant& variant) {
    return static_cast<std::uint32_t>(variant.key);
  };
  std::set<std::pair<std::uint32_t, std::uint64_t>> lost;
  const MaterialVariant* last = nullptr;
  for (const MaterialVariant& variant : variants) {
    // Of materials that share a key the first is the one that is sent under it.
    const bool shared = last != nullptr && last->key == variant.key;
    last = &variant;
    const auto held = materialCache.find(variant.key);
    if (shared || held == materialCache.end() || held->second == variant.picture) continue;
    lost.emplace(materialId(variant), held->second);
    ForgetMaterial(variant.key);
  }
  for (const MaterialVariant& variant : variants) {
    if (!lost.contains({materialId(variant), variant.picture})) continue;
    for (const std::uint64_t ownerId : *variant.owners) ForgetGeometry(ownerId);
  }
}

void ReloadCaches::ForgetMaterial(std::uint64_t key) {
  materialCache.erase(key);
  materialsUsed.erase(key);
}

void ReloadCaches::ForgetGeometry(std::uint64_t ownerId) {
  geometryCache.erase(ownerId);
  geometryUsed.erase(ownerId);
}

void ReloadCaches::ForgetDependents(const Dependents& dependents, std::uint64_t id) {
  const auto ownerIds = dependents.find(id);
  if (ownerIds == dependents.end()) return;
  for (const std::uint64_t ownerId : ownerIds->second) ForgetGeometry(ownerId);
}

void ReloadCaches::InvalidateMaterial(std::uint32_t materialId) {
  const auto isVariant = [materialId](const Pictures::value_type& entry) {
    return static_cast<std::uint32_t>(entry.first) == materialId;
  };
  std::erase_if(materialCache, isVariant);
  std::erase_if(materialsUsed, isVariant);
  ForgetDependents(materialDependents, materialId);
  ForgetDependents(former.materials, materialId);
}

void ReloadCaches::InvalidateLayerCache(std::uint64_t layerId) {
  LogLine("InvalidateLayerCache: pid=%llu", Printed(layerId));
  ForgetDependents(layerDependents, layerId);
  ForgetDependents(former.layers, layerId);
}

void ReloadCaches::InvalidateDefinition(std::uint64_t definitionId) {
  LogLine("InvalidateDefinition: pid=%llu", Printed(definitionId));
  ForgetDependents(childrenMap, definitionId);
  ForgetDependents(former.children, definitionId);
  childrenMap.erase(definitionId);
}

void ReloadCaches::InvalidateGeometryCache(std::uint64_t ownerId) {
  const std::size_t erased = geometryCache.erase(ownerId);
  geometryUsed.erase(ownerId);
  LogLine("InvalidateGeometryCache: pid=%llu erased=%zu (cached=%zu)", Printed(ownerId), erased,
          geometryCache.size());
}

void ReloadCaches::UpdateCacheInfo() {
  LogLine("UpdateCacheInfo: materials %zu->%zu, instances %zu->%zu", materialCache.size(),
          materialsUsed.size(), geometryCache.size(), geometryUsed.size());
  materialCache.swap(materialsUsed);
  geometryCache.swap(geometryUsed);
  materialsUsed.clear();
  geometryUsed.clear();
}

void ReloadCaches::ClearReloadCache() {
  materialCache.clear();
  materialsUsed.clear();
  LogLine("ClearGeometryCache (cached=%zu)", geometryCache.size());
  geometryCache.clear();
  geometryUsed.clear();
}

}  // namespace quellix
