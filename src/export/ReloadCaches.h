#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <vector>

#include "link/WireRecords.h"

namespace quellix {

// The id under which a material is known across exports: what it was seen as (its texture id) in
// the upper half, who it is (the low half of its persistent id) in the lower.
constexpr std::uint64_t MaterialKey(std::int32_t textureId, std::uint32_t materialId) {
  return static_cast<std::uint64_t>(static_cast<std::uint32_t>(textureId)) << 32 | materialId;
}

inline constexpr std::uint32_t kDefaultFrontMaterialId = 0xFFFFFFFF;
inline constexpr std::uint32_t kDefaultBackMaterialId = 0xFFFFFFFE;

using IdSet = std::set<std::uint64_t>;

// A material as an export shows it under one of its keys.
struct MaterialVariant {
  std::uint64_t key = 0;
  // Tells the pixels of a distorted texture from all others; 0 when the texture is shown as it is.
  std::uint64_t picture = 0;
  const IdSet* owners = nullptr;  // who shows it
};

// What the renderer holds, and what depends on what in the model: the tables that make a reload
// send only what changed. They outlive every export; Ruby keeps them true by reporting changes.
//
// No lock: outside an export the host thread has them. During one, each table has one writer at a
// time: the materials' two belong to the scan and then to the material worker, the geometry's two
// to the scan and then to the geometry worker, the dependency maps to the scan, `layerDependents`
// then to the geometry worker and after it to the light walk. What Ruby reports meanwhile waits in
// CacheChanges.
class ReloadCaches {
 public:
  // The one set of tables of the process.
  static ReloadCaches& Instance();

  // True when the renderer holds the material: it is then referenced in `references` and counts as
  // used; otherwise the caller sends it and calls RecordMaterial, with its picture.
  bool UseCachedMaterial(std::uint32_t index, std::uint32_t materialId, std::int32_t textureId,
                         float lightPower, std::vector<wire::CachedMaterialReference>& references);
  void RecordMaterial(std::uint64_t key, std::uint64_t picture = 0);

  // True when the renderer holds the owner's meshes: it is then listed in `ownerIds` and counts as
  // used. A miss of a reload is logged.
  bool TryUseCachedGeometry(std::uint64_t ownerId, bool reload,
                            std::vector<std::uint64_t>& ownerIds);
  void RecordGeometry(std::uint64_t ownerId);
  // The renderer does not hold the owner's meshes after all, or they have changed.
  void ForgetGeometry(std::uint64_t ownerId);

  // Starts the tables of a new scan; `unified` says that it builds the children map too. What is
  // reported until ForgetFormerScan may have been true of the model as the former scan saw it, so
  // both scans' tables tell what it reaches.
  void BeginScan(bool unified);
  void ForgetFormerScan() { former = {}; }

  // Forgets the materials that come with another picture than the renderer holds under their keys,
  // and whoever shows what it holds there: the renderer knows a mesh's materials by their keys, and
  // the texture ids in them are given anew by each export. The variants come in the order of their
  // keys; all that share a material id are among them.
  void ForgetOtherPictures(std::span<const MaterialVariant> variants);

  // A material or an image changed: every variant of it, and the owners that show it.
  void InvalidateMaterial(std::uint32_t materialId);
  // What lies on the layer changed its visibility.
  void InvalidateLayerCache(std::uint64_t layerId);
  // A definition's content changed.
  void InvalidateDefinition(std::uint64_t definitionId);
  // One owner changed.
  void InvalidateGeometryCache(std::uint64_t ownerId);

  // Makes the caches what the last export used, and starts counting anew.
  void UpdateCacheInfo();
  // The renderer holds nothing any more.
  void ClearReloadCache();

  using Dependents = std::map<std::uint64_t, IdSet>;

  Dependents childrenMap;         // definition (or image key) -> owners
  Dependents materialDependents;  // material id (or image key) -> owners
  Dependents layerDependents;     // layer -> owners, or path keys
  bool childrenMapBuilt = false;  // the last scan has built childrenMap

 private:
  using Pictures = std::map<std::uint64_t, std::uint64_t>;  // material key -> picture

  void ForgetMaterial(std::uint64_t key);
  void ForgetDependents(const Dependents& dependents, std::uint64_t id);

  struct {
    Dependents children;
    Dependents materials;
    Dependents layers;
  } former;

  Pictures materialCache;
  Pictures materialsUsed;
  IdSet geometryCache;
  IdSet geometryUsed;
};

}  // namespace quellix
