#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include <SketchUpAPI/sketchup.h>

#include "cw/Handle.h"
#include "export/InheritanceManager.h"
#include "geometry/FaceContext.h"

// Which faces of an entities collection are exported, and with what context: the same for every
// way in which the geometry is made.

namespace quellix {

// Renderer index of a material seen with a texture id.
using MaterialIndexMap =
    std::map<SUMaterialRef, std::map<std::int32_t, std::uint32_t>, CW::HandleLess>;
using HiddenLayerSet = std::set<SULayerRef, CW::HandleLess>;
// Persistent id of a layer -> owner ids of what lies on it.
using LayerDependents = std::map<std::uint64_t, std::set<std::uint64_t>>;

// What the selection needs of an export. The maps are not changed while an export's workers run,
// except `layerDependents`, which the selection adds to.
struct FaceSelectionInputs {
  const HiddenLayerSet& hiddenLayers;
  const MaterialIndexMap& materialIndex;
  std::uint32_t defaultFrontIndex = 0;
  std::uint32_t defaultBackIndex = 1;
  LayerDependents& layerDependents;
  // Counts every selected face once, whatever path makes its mesh.
  std::atomic<std::uint32_t>& facesDone;
};

// The faces of one collection, entered and left one after the other.
class FaceSelector {
 public:
  // `atRoot`: the collection is the model's root, which has owner id 0.
  FaceSelector(const FaceSelectionInputs& selectionInputs, InheritanceManager& inheritanceManager,
               bool atRoot);

  // Pushes the face and records its layer. True when it is to be exported; it is counted then.
  // Each Enter is followed by one Leave.
  bool Enter(SUFaceRef su_face);
  void Leave() { manager.Pop(); }

  // Of the face last entered.
  FaceContext Context();

 private:
  // A side's last answer: neighbouring faces mostly share their materials.
  struct KnownSide {
    bool filled = false;
    FaceSide side;
  };
  FaceSide Resolve(const EffectiveMaterial& effective, std::uint32_t defaultIndex,
                   KnownSide& known) const;
  void RecordLayer(SULayerRef su_layer);
  bool IsHidden(SULayerRef su_layer);

  const FaceSelectionInputs& inputs;
  InheritanceManager& manager;
  const std::uint64_t ownerId;
  SULayerRef recordedLayer = SU_INVALID;
  SULayerRef hiddenLayer = SU_INVALID;
  KnownSide knownFront;
  KnownSide knownBack;
};

std::vector<SUFaceRef> FacesOf(SUEntitiesRef su_entities);

// Calls `visit(su_face, context)` for every face of the collection that is to be exported, in the
// host's order, with the face pushed on the manager while `visit` runs.
template <class Visit>
void ForEachSelectedFace(SUEntitiesRef su_entities, bool atRoot, InheritanceManager& manager,
                         const FaceSelectionInputs& inputs, Visit&& visit) {
  struct LeaveOnExit {
    FaceSelector& selector;
    ~LeaveOnExit() { selector.Leave(); }
  };
  FaceSelector selector(inputs, manager, atRoot);
  for (const SUFaceRef su_face : FacesOf(su_entities)) {
    if (SUIsInvalid(su_face)) continue;
    const bool selected = selector.Enter(su_face);
    const LeaveOnExit leave{selector};
    if (selected) visit(su_face, selector.Context());
  }
}

}  // namespace quellix
