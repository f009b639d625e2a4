#include "export/SceneScan.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "cw/Handle.h"
#include "export/DefaultMaterials.h"
#include "export/Descent.h"
#include "export/ImageKey.h"
#include "export/InheritanceManager.h"
#include "export/Lights.h"
#include "export/Lists.h"
#include "export/ReloadCaches.h"
#include "export/TextureLoading.h"
#include "export/TextureReading.h"
#include "export/Walks.h"
#include "link/IpcDigest.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

// Material -> texture id -> the owners that show it so.
using MaterialSet = std::map<SUMaterialRef, std::map<std::int32_t, IdSet>, CW::HandleLess>;
using ImageSet = std::map<std::uint32_t, SUImageRef>;

SULayerRef LayerOf(SUDrawingElementRef su_element) {
  SULayerRef su_layer = SU_INVALID;
  SUDrawingElementGetLayer(su_element, &su_layer);
  return su_layer;
}

// What the faces of one collection show. A definition is placed many times, but its faces are the
// same each time: they are read once, and every owner that has them depends on all of this.
struct FacesSummary {
  std::vector<std::pair<SUMaterialRef, std::int32_t>> materials;  // each pair once
  std::vector<std::uint64_t> layerIds;                            // each id once
  bool hasFaceWithoutLayer = false;  // it lies on the layer of what it is in
};

template <class Value>
void AddOnce(std::vector<Value>& values, const Value& value) {
  if (std::find(values.begin(), values.end(), value) == values.end()) values.push_back(value);
}

// One scan of the model's hierarchy.
class Scan {
 public:
  explicit Scan(SkpImporter& skpImporter) : importer(skpImporter) {}

  // One walk for everything. Below a hidden element or layer (`active` false) the materials still
  // count, so that showing it again needs no new ones.
  void UnifiedScan(SUEntitiesRef su_entities, InheritanceManager& manager, std::uint64_t ownerId,
                   bool active);

  // The older way, a walk for materials and one for images.
  void CollectMaterials(SUEntitiesRef su_entities, std::uint64_t ownerId);
  void CollectImages(SUEntitiesRef su_entities, std::uint64_t ownerId);

  MaterialSet materials;
  ImageSet images;

 private:
  template <class Element>
  std::uint64_t OwnerOf(Element su_element, std::uint64_t ownerId);
  template <class Element>
  void ScanElement(Element su_element, InheritanceManager& manager, std::uint64_t ownerId,
                   bool active);
  void ScanFaces(SUEntitiesRef su_entities, const InheritanceManager* manager,
                 std::uint64_t ownerId);
  const FacesSummary& SummaryOf(SUEntitiesRef su_entities);
  void RecordLayer(std::uint64_t layerId, std::uint64_t ownerId);
  void RecordMaterial(SUMaterialRef su_material, std::int32_t textureId, std::uint64_t ownerId);
  void RecordImage(SUImageRef su_image, std::uint64_t ownerId);
  // At the root (0) an image is an owner itself, while its quad is in the root's mesh.
  static IdSet OwnersOf(SUImageRef su_image, std::uint64_t ownerId) {
    return ownerId != 0 ? IdSet{ownerId} : IdSet{0, IdOf(su_image)};
  }

  SkpImporter& importer;
  ReloadCaches& caches = ReloadCaches::Instance();
  std::map<SUEntitiesRef, FacesSummary, CW::HandleLess> summaries;
};

void Scan::RecordMaterial(SUMaterialRef su_material, std::int32_t textureId,
                          std::uint64_t ownerId) {
  if (SUIsInvalid(su_material)) return;
  materials[su_material][textureId].insert(ownerId);
}

void Scan::RecordImage(SUImageRef su_image, std::uint64_t ownerId) {
  const std::uint32_t key = ImageKey(su_image);
  if (key == 0) return;
  images.emplace(key, su_image);
  for (const std::uint64_t owner : OwnersOf(su_image, ownerId)) {
    caches.materialDependents[key].insert(owner);
    caches.childrenMap[key].insert(owner);
  }
}

template <class Element>
std::uint64_t Scan::OwnerOf(Element su_element, std::uint64_t ownerId) {
  if (ownerId != 0) return ownerId;
  const std::uint64_t id = IdOf(su_element);
  importer.scene.owners.insert(id);
  return id;
}

template <class Element>
void Scan::ScanElement(Element su_element, InheritanceManager& manager, std::uint64_t ownerId,
                       bool active) {
  if (importer.Abandoned()) return;
  const SUDrawingElementRef su_drawing = AsDrawingElement(su_element);
  const std::uint64_t owner = OwnerOf(su_element, ownerId);
  const SUComponentDefinitionRef su_definition = DefinitionOf(su_element);
  const std::int32_t textureId = LoadEntityTexture(importer.textureWriter, AsEntity(su_element));
  RecordMaterial(MaterialOf(su_drawing), textureId, owner);
  caches.childrenMap[IdOf(su_definition)].insert(owner);
  const Descent step(su_definition);
  if (!step) return;

  if (!active || IsHidden(su_drawing)) {
    UnifiedScan(EntitiesOf(su_definition), manager, owner, false);
    return;
  }
  const PushedLevel level(manager, su_element);
  const bool visible = RecordLayerAndTest(importer.scene.hiddenLayers, manager, owner);
  if constexpr (std::is_same_v<Element, SUComponentInstanceRef>) {
    if (visible) CollectLight(su_element, su_definition, manager, importer.pendingLights);
  }
  UnifiedScan(EntitiesOf(su_definition), manager, owner, visible);
}

const FacesSummary& Scan::SummaryOf(SUEntitiesRef su_entities) {
  const auto [entry, isNew] = summaries.try_emplace(su_entities);
  FacesSummary& summary = entry->second;
  if (!isNew) return summary;
  using Painted = std::pair<SUMaterialRef, std::int32_t>;
  const auto before = [](const Painted& a, const Painted& b) {
    return std::tie(a.first.ptr, a.second) < std::tie(b.first.ptr, b.second);
  };
  std::set<Painted, decltype(before)> painted(before);
  // Neighbouring faces mostly look the same.
  Painted front{SU_INVALID, 0};
  Painted back = front;
  const auto paint = [&painted](SUMaterialRef su_material, std::int32_t textureId, Painted& last) {
    if (SUIsInvalid(su_material)) return;
    if (SUAreEqual(su_material, last.first) && textureId == last.second) return;
    last = {su_material, textureId};
    painted.insert(last);
  };
  SULayerRef su_previous = SU_INVALID;
  bool withoutPaint = false;
  std::uint32_t steps = 0;
  for (const SUFaceRef su_face : FacesOf(su_entities)) {
    if (importer.Abandoned(steps)) break;
    const SULayerRef su_layer = LayerOf(SUFaceToDrawingElement(su_face));
    if (SUIsInvalid(su_layer)) {
      summary.hasFaceWithoutLayer = true;
    } else if (!SUAreEqual(su_layer, su_previous)) {
      su_previous = su_layer;
      AddOnce(summary.layerIds, CW::persistent_id(SULayerToEntity(su_layer)));
    }
    const FaceTextures textures = LoadFaceTextures(importer.textureWriter, su_face);
    SUMaterialRef su_front = SU_INVALID;
    SUMaterialRef su_back = SU_INVALID;
    SUFaceGetFrontMaterial(su_face, &su_front);
    SUFaceGetBackMaterial(su_face, &su_back);
    paint(su_front, textures.front, front);
    paint(su_back, textures.back, back);
    withoutPaint = withoutPaint || SUIsInvalid(su_front) || SUIsInvalid(su_back);
  }
  if (withoutPaint && importer.meshPerPaint) importer.scene.withoutPaint.insert(su_entities);
  summary.materials.assign(painted.begin(), painted.end());
  return summary;
}

void Scan::RecordLayer(std::uint64_t layerId, std::uint64_t ownerId) {
  caches.layerDependents[layerId].insert(ownerId);
}

void Scan::ScanFaces(SUEntitiesRef su_entities, const InheritanceManager* manager,
                     std::uint64_t ownerId) {
  const FacesSummary& summary = SummaryOf(su_entities);
  for (const auto& [su_material, textureId] : summary.materials) {
    RecordMaterial(su_material, textureId, ownerId);
  }
  if (manager == nullptr) return;
  for (const std::uint64_t layerId : summary.layerIds) RecordLayer(layerId, ownerId);
  if (!summary.hasFaceWithoutLayer) return;
  const SULayerRef su_layer = manager->CurrentLayer();
  if (SUIsValid(su_layer)) RecordLayer(CW::persistent_id(SULayerToEntity(su_layer)), ownerId);
}

void Scan::UnifiedScan(SUEntitiesRef su_entities, InheritanceManager& manager,
                       std::uint64_t ownerId, bool active) {
  for (const SUComponentInstanceRef su_instance : InstancesOf(su_entities)) {
    ScanElement(su_instance, manager, ownerId, active);
  }
  for (const SUGroupRef su_group : GroupsOf(su_entities)) {
    ScanElement(su_group, manager, ownerId, active);
  }
  for (const SUImageRef su_image : ImagesOf(su_entities)) {
    RecordImage(su_image, ownerId);
    const SULayerRef su_layer = LayerOf(SUImageToDrawingElement(su_image));
    if (SUIsInvalid(su_layer)) continue;
    const std::uint64_t layerId = CW::persistent_id(SULayerToEntity(su_layer));
    for (const std::uint64_t owner : OwnersOf(su_image, ownerId)) RecordLayer(layerId, owner);
  }
  ScanFaces(su_entities, &manager, ownerId);
}

void Scan::CollectMaterials(SUEntitiesRef su_entities, std::uint64_t ownerId) {
  const auto collect = [&](auto su_element) {
    const std::uint64_t owner = OwnerOf(su_element, ownerId);
    const std::int32_t textureId = LoadEntityTexture(importer.textureWriter, AsEntity(su_element));
    RecordMaterial(MaterialOf(AsDrawingElement(su_element)), textureId, owner);
    const SUComponentDefinitionRef su_definition = DefinitionOf(su_element);
    const Descent step(su_definition);
    if (step) CollectMaterials(EntitiesOf(su_definition), owner);
  };
  for (const SUComponentInstanceRef su_instance : InstancesOf(su_entities)) collect(su_instance);
  for (const SUGroupRef su_group : GroupsOf(su_entities)) collect(su_group);
  ScanFaces(su_entities, nullptr, ownerId);
}

void Scan::CollectImages(SUEntitiesRef su_entities, std::uint64_t ownerId) {
  const auto collect = [&](auto su_element) {
    const std::uint64_t owner = ownerId != 0 ? ownerId : IdOf(su_element);
    const SUComponentDefinitionRef su_definition = DefinitionOf(su_element);
    const Descent step(su_definition);
    if (step) CollectImages(EntitiesOf(su_definition), owner);
  };
  for (const SUComponentInstanceRef su_instance : InstancesOf(su_entities)) collect(su_instance);
  for (const SUGroupRef su_group : GroupsOf(su_entities)) collect(su_group);
  for (const SUImageRef su_image : ImagesOf(su_entities)) RecordImage(su_image, ownerId);
}

// Tells one picture from another; never 0.
std::uint64_t FingerprintOf(const RawTextureData& block) {
  Fnv1a hash;
  hash.AddValue(block.width);
  hash.AddValue(block.height);
  hash.AddValue(block.bitsPerPixel);
  hash.AddValue(block.useAlpha);
  hash.Add(block.pixels.data(), block.pixels.size());
  return std::max<std::uint64_t>(hash.Value(), 1);
}

// The pixels of a texture that is distorted on its face, or nothing.
std::shared_ptr<RawTextureData> FetchDistorted(SUTextureWriterRef su_writer,
                                               SUMaterialRef su_material, std::int32_t textureId) {
  bool affine = true;
  if (textureId <= 0 ||
      SUTextureWriterIsTextureAffine(su_writer, textureId, &affine) != SU_ERROR_NONE || affine) {
    return nullptr;
  }
  SUTextureRef su_texture = SU_INVALID;
  SUMaterialGetTexture(su_material, &su_texture);
  auto block = std::make_shared<RawTextureData>();
  return ReadTextureViaWriter(su_writer, textureId, su_texture, *block) ? block : nullptr;
}

// Numbers materials by their ids and texture ids, then images by their keys, and lists them. What
// the renderer holds of another picture is forgotten.
void PreExportMaterials(SkpImporter& importer, Scan& scan, std::vector<MaterialEntry>& entries) {
  std::vector<std::tuple<std::uint32_t, std::int32_t, SUMaterialRef>> records;
  for (const auto& [su_material, owners] : scan.materials) {
    for (const auto& [textureId, ignored] : owners) {
      records.emplace_back(IdOf(su_material), textureId, su_material);
    }
  }
  std::stable_sort(records.begin(), records.end(), [](const auto& a, const auto& b) {
    return std::tie(std::get<0>(a), std::get<1>(a)) < std::tie(std::get<0>(b), std::get<1>(b));
  });

  std::vector<MaterialVariant> variants;
  std::uint32_t index = kFirstMaterialIndex;
  int distorted = 0;
  for (const auto& [materialId, textureId, su_material] : records) {
    importer.scene.materialIndex[su_material][textureId] = index;
    MaterialEntry entry;
    entry.material = su_material;
    entry.textureId = textureId;
    entry.index = index++;
    entry.prefetched = FetchDistorted(importer.textureWriter, su_material, textureId);
    if (entry.prefetched) {
      ++distorted;
      entry.picture = FingerprintOf(*entry.prefetched);
    }
    variants.push_back({MaterialKey(textureId, materialId), entry.picture,
                        &scan.materials[su_material][textureId]});
    entries.push_back(std::move(entry));
  }
  ReloadCaches& caches = ReloadCaches::Instance();
  caches.ForgetOtherPictures(variants);
  for (auto& [su_material, byTexture] : scan.materials) {
    IdSet& dependents = caches.materialDependents[IdOf(su_material)];
    for (auto& [textureId, owners] : byTexture) dependents.merge(owners);
  }
  if (distorted > 0) {
    LogLine("PreExportMaterials: non-affine (distorted) textures=%d", distorted);
  }
  for (const auto& [key, su_image] : scan.images) {
    importer.scene.imageIndex[key] = index;
    MaterialEntry entry;
    entry.isImage = true;
    entry.image = su_image;
    entry.imageKey = key;
    entry.index = index++;
    entries.push_back(entry);
  }
}

template <class Element>
void AddChildren(Element su_element, std::uint64_t ownerId) {
  const SUComponentDefinitionRef su_definition = DefinitionOf(su_element);
  ReloadCaches::Instance().childrenMap[IdOf(su_definition)].insert(ownerId);
  const Descent step(su_definition);
  if (!step) return;
  const SUEntitiesRef su_entities = EntitiesOf(su_definition);
  for (const SUComponentInstanceRef su_child : InstancesOf(su_entities)) {
    AddChildren(su_child, ownerId);
  }
  for (const SUGroupRef su_child : GroupsOf(su_entities)) AddChildren(su_child, ownerId);
}

}  // namespace

bool CollectSceneInfo(SkpImporter& importer, std::vector<MaterialEntry>& entries) {
  ReloadCaches& caches = ReloadCaches::Instance();
  EnsureDefaultMaterials(importer);
  caches.BeginScan(importer.unifiedScan);
  importer.scene.imageIndex.clear();

  Scan scan(importer);
  const SUEntitiesRef su_root = RootEntitiesOf(importer.model);
  const Stopwatch watch;
  if (importer.unifiedScan) {
    importer.pendingLights.clear();
    InheritanceManager manager(importer.textureWriter);
    scan.UnifiedScan(su_root, manager, 0, true);
    caches.childrenMapBuilt = true;
    LogLine("CollectSceneInfo: %.1f ms (materials=%d, images=%d, lights=%d, definitions=%d)",
            watch.Ms(), static_cast<int>(scan.materials.size()),
            static_cast<int>(scan.images.size()), static_cast<int>(importer.pendingLights.size()),
            static_cast<int>(caches.childrenMap.size()));
  } else {
    scan.CollectMaterials(su_root, 0);
    scan.CollectImages(su_root, 0);
    LogLine("CollectMaterials: %.1f ms (materials=%d, images=%d)", watch.Ms(),
            static_cast<int>(scan.materials.size()), static_cast<int>(scan.images.size()));
  }
  PreExportMaterials(importer, scan, entries);
  return true;
}

void InitChildrenMap(SUModelRef su_model) {
  ReloadCaches::Instance().childrenMap.clear();
  const SUEntitiesRef su_root = RootEntitiesOf(su_model);
  for (const SUComponentInstanceRef su_child : InstancesOf(su_root)) {
    AddChildren(su_child, IdOf(su_child));
  }
  for (const SUGroupRef su_child : GroupsOf(su_root)) AddChildren(su_child, IdOf(su_child));
}

}  // namespace quellix
