#include "export/FaceSelection.h"

#include "cw/Entity.h"

namespace quellix {

std::vector<SUFaceRef> FacesOf(SUEntitiesRef su_entities) {
  return CW::fetch_list<SUFaceRef>(
      [&](size_t* count) { return SUEntitiesGetNumFaces(su_entities, count); },
      [&](size_t len, SUFaceRef* su_faces, size_t* count) {
        return SUEntitiesGetFaces(su_entities, len, su_faces, count);
      });
}

FaceSelector::FaceSelector(const FaceSelectionInputs& selectionInputs,
                           InheritanceManager& inheritanceManager, bool atRoot)
    : inputs(selectionInputs),
      manager(inheritanceManager),
      ownerId(atRoot ? 0 : inheritanceManager.OutermostId()) {}

bool FaceSelector::Enter(SUFaceRef su_face) {
  manager.PushFace(su_face);
  const SULayerRef su_layer = manager.CurrentLayer();
  RecordLayer(su_layer);
  if (IsHidden(su_layer)) return false;
  inputs.facesDone.fetch_add(1, std::memory_order_relaxed);
  return true;
}

// The owner is the same for all faces here, so a run of faces on one layer records it once.
void FaceSelector::RecordLayer(SULayerRef su_layer) {
  if (SUIsInvalid(su_layer) || SUAreEqual(su_layer, recordedLayer)) return;
  recordedLayer = su_layer;
  inputs.layerDependents[CW::persistent_id(SULayerToEntity(su_layer))].insert(ownerId);
}

bool FaceSelector::IsHidden(SULayerRef su_layer) {
  if (SUIsInvalid(su_layer)) return false;
  if (SUAreEqual(su_layer, hiddenLayer)) return true;
  if (inputs.hiddenLayers.find(su_layer) == inputs.hiddenLayers.end()) return false;
  hiddenLayer = su_layer;
  return true;
}

FaceContext FaceSelector::Context() {
  FaceContext context;
  context.transform = manager.CurrentTransform();
  context.textureWriter = manager.TextureWriter();
  context.front = Resolve(manager.CurrentFrontMaterial(), inputs.defaultFrontIndex, knownFront);
  context.back = Resolve(manager.CurrentBackMaterial(), inputs.defaultBackIndex, knownBack);
  return context;
}

FaceSide FaceSelector::Resolve(const EffectiveMaterial& effective, std::uint32_t defaultIndex,
                               KnownSide& known) const {
  if (known.filled && SUAreEqual(known.side.material, effective.material) &&
      known.side.textureId == effective.textureId) {
    return known.side;
  }
  FaceSide side;
  side.material = effective.material;
  side.textureId = effective.textureId;
  side.index = defaultIndex;
  if (SUIsValid(effective.material)) {
    SUTextureRef su_texture = SU_INVALID;
    side.textured = SUMaterialGetTexture(effective.material, &su_texture) == SU_ERROR_NONE &&
                    SUIsValid(su_texture);
    const auto byMaterial = inputs.materialIndex.find(effective.material);
    if (byMaterial != inputs.materialIndex.end()) {
      const auto byTexture = byMaterial->second.find(effective.textureId);
      if (byTexture != byMaterial->second.end()) side.index = byTexture->second;
    }
  }
  known = {true, side};
  return side;
}

}  // namespace quellix
