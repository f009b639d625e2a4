#include "export/GeometryWalk.h"

#include <glm/gtc/type_ptr.hpp>

#include "export/ContainsImages.h"
#include "export/Descent.h"
#include "export/ImageExport.h"
#include "export/Lists.h"
#include "export/ReloadCaches.h"
#include "support/Finite.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

constexpr std::uint64_t kFacingMeshBit = 0x8000000000000000ull;
constexpr std::uint64_t kOutermostOwner = 0xFFFFFFFFFFFFFFFFull;

bool AcceptAll(SUComponentDefinitionRef) {
  return true;
}

// Said here and not only where the mesh is sent: the definition's next placement, which may be in
// order, must send the mesh then.
bool HasPlace(std::uint64_t definitionId, const glm::mat4& transform) {
  if (AllFinite(glm::value_ptr(transform), 16)) return true;
  LogLine("left out: a placement of definition %llu, whose transform is no number",
          static_cast<unsigned long long>(definitionId));
  return false;
}

bool IsManifold(SUComponentDefinitionRef su_definition) {
  bool manifold = false;
  SUComponentDefinitionIsManifold(su_definition, &manifold);
  return manifold;
}

}  // namespace

void GeometryWalk::Export() {
  struct EndOnExit {
    GeometryExport& geometry;
    ~EndOnExit() { geometry.End(); }
  };
  const EndOnExit end{importer.geometry};
  const SUEntitiesRef su_root = RootEntitiesOf(importer.model);
  importer.geometry.Begin(su_root, importer.reload, [su_root] { return ContainsImages(su_root); });
  FirstPass();
  importer.geometry.BeginSecondPass();
  SecondPass();
  importer.geometry.Finish(importer.cachedGeometryPids);
  for (const std::uint64_t cacheKey : importer.geometry.LeftOut()) {
    ReloadCaches::Instance().ForgetGeometry(cacheKey);
  }
}

void GeometryWalk::FirstPass() {
  const SUEntitiesRef su_root = RootEntitiesOf(importer.model);
  InheritanceManager manager(importer.textureWriter);
  const IterateParams root{su_root, &manager, nullptr, SU_INVALID};
  const auto exportChild = [this](IterateParams& child) {
    ExportDefinitionGeometry(child, IdOf(child.definition), IsManifold(child.definition),
                             OwnerOf(*child.manager));
  };
  IterateInstances(importer.scene.hiddenLayers, root, AcceptAll, [&](IterateParams& child) {
    if (!AlwaysFacesCamera(child.definition)) exportChild(child);
  });
  IterateGroups(importer.scene.hiddenLayers, root, exportChild);
  ExportLooseGeometry(su_root, manager);
}

void GeometryWalk::ExportLooseGeometry(SUEntitiesRef su_root, const InheritanceManager& manager) {
  ReloadCaches& caches = ReloadCaches::Instance();
  if (caches.TryUseCachedGeometry(0, importer.reload, importer.cachedGeometryPids)) return;
  InheritanceManager own(manager);
  own.ResetTransforms();
  const MeshPlacement placement;
  MeshBuffer mesh;
  importer.geometry.OpenMesh(placement);
  ExportImages(su_root, true, importer.scene, own, mesh);
  ExportFaces({su_root, &own, &mesh, SU_INVALID});
  importer.geometry.CloseMesh(mesh, placement);
  {
    const std::lock_guard<std::mutex> guard(importer.lock);
    importer.exportedDefinitions[{su_root.ptr, nullptr}] = 0;
  }
  Record(0);
}

void GeometryWalk::ExportDefinitionGeometry(IterateParams& params, std::uint64_t definitionId,
                                            bool manifold, std::uint64_t cacheKey) {
  if (importer.Abandoned()) return;
  ReloadCaches& caches = ReloadCaches::Instance();
  const bool facing = importer.geometry.Pass() == 1;
  if (cacheKey == kOutermostOwner) cacheKey = OwnerOf(*params.manager);
  if (!facing &&
      caches.TryUseCachedGeometry(cacheKey, importer.reload, importer.cachedGeometryPids)) {
    return;
  }

  const glm::mat4 transform = params.manager->CurrentTransform();
  if (!HasPlace(definitionId, transform)) return;
  const SUMaterialRef su_paint = importer.meshPerPaint
                                     ? paints.TakenBy(params.definition, *params.manager)
                                     : SUMaterialRef SU_INVALID;
  MeshPlacement placement{MeshIdOf(definitionId, su_paint), transform, cacheKey, manifold};
  const std::pair<const void*, const void*> look{params.entities.ptr, su_paint.ptr};
  bool known = false;
  {
    const std::lock_guard<std::mutex> guard(importer.lock);
    const auto exported = importer.exportedDefinitions.find(look);
    known = exported != importer.exportedDefinitions.end();
    if (known) placement.meshId = exported->second;
  }
  if (known) {
    importer.geometry.PlaceMesh(placement);
    if (!facing) Record(cacheKey);
    return;
  }

  // The mesh is built in the definition's own space; the placement carries the transform.
  InheritanceManager own(*params.manager);
  own.ResetTransforms();
  MeshBuffer mesh;
  IterateParams content{params.entities, &own, &mesh, params.definition};
  importer.geometry.OpenMesh(placement);
  CollectContent(content);
  importer.geometry.CloseMesh(mesh, placement);
  {
    const std::lock_guard<std::mutex> guard(importer.lock);
    importer.exportedDefinitions[look] = placement.meshId;
  }
  if (!facing) Record(cacheKey);
}

std::uint64_t GeometryWalk::MeshIdOf(std::uint64_t definitionId, SUMaterialRef su_paint) const {
  const std::uint64_t id =
      SUIsValid(su_paint) ? PaintedMeshId(definitionId, su_paint) : definitionId;
  return importer.geometry.Pass() == 1 ? id | kFacingMeshBit : id;
}

void GeometryWalk::CollectContent(IterateParams& params) {
  if (importer.Abandoned()) return;
  const bool facing = importer.geometry.Pass() == 1;
  const auto collect = [this](IterateParams& child) { CollectContent(child); };
  IterateInstances(
      importer.scene.hiddenLayers, params,
      [facing](SUComponentDefinitionRef su_definition) {
        return facing || !AlwaysFacesCamera(su_definition);
      },
      collect);
  IterateGroups(importer.scene.hiddenLayers, params, collect);
  ExportImages(params.entities, false, importer.scene, *params.manager, *params.output);
  ExportFaces(params);
}

void GeometryWalk::ExportFaces(const IterateParams& params) {
  const FaceSelectionInputs inputs{importer.scene.hiddenLayers,
                                   importer.scene.materialIndex,
                                   kDefaultFrontIndex,
                                   kDefaultBackIndex,
                                   ReloadCaches::Instance().layerDependents,
                                   importer.geometry.FacesDone()};
  const bool atRoot = SUIsInvalid(params.definition);
  std::uint32_t steps = 0;
  importer.geometry.ExportFaces(
      params.entities,
      [&](const FaceSink& sink) {
        ForEachSelectedFace(params.entities, atRoot, *params.manager, inputs,
                            [&](SUFaceRef su_face, const FaceContext& context) {
                              if (!importer.Abandoned(steps)) sink(su_face, context);
                            });
      },
      *params.output);
}

void GeometryWalk::SecondPass() {
  InheritanceManager manager(importer.textureWriter);
  IterateParams root{RootEntitiesOf(importer.model), &manager, nullptr, SU_INVALID};
  DescendToFacing(root);
}

void GeometryWalk::DescendToFacing(IterateParams& params) {
  InheritanceManager& manager = *params.manager;
  for (const SUComponentInstanceRef su_instance : InstancesOf(params.entities)) {
    if (IsHidden(AsDrawingElement(su_instance))) continue;
    const SUComponentDefinitionRef su_definition = DefinitionOf(su_instance);
    const bool facing = AlwaysFacesCamera(su_definition);
    const PushedLevel level(manager, su_instance);
    const std::uint64_t dependent = facing ? manager.PathKey() : OwnerOf(manager);
    if (!RecordLayerAndTest(importer.scene.hiddenLayers, manager, dependent)) continue;
    if (!LightType(su_definition).empty()) continue;
    const Descent step(su_definition);
    if (!step) continue;
    IterateParams child{EntitiesOf(su_definition), &manager, nullptr, su_definition};
    if (facing) {
      ExportDefinitionGeometry(child, IdOf(su_definition), false, manager.PathKey());
    } else {
      DescendToFacing(child);
    }
  }
  IterateGroups(importer.scene.hiddenLayers, params,
                [this](IterateParams& child) { DescendToFacing(child); });
}

// What a callback has added since the scan is sent again by the next export: the scan's materials
// may lack its own, and no table tells which changes reach it.
void GeometryWalk::Record(std::uint64_t cacheKey) {
  if (cacheKey != 0 && !importer.scene.owners.contains(cacheKey)) return;
  ReloadCaches::Instance().RecordGeometry(cacheKey);
}

}  // namespace quellix
