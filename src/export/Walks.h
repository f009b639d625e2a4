#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <SketchUpAPI/sketchup.h>

#include "export/InheritanceManager.h"
#include "export/SceneIndex.h"
#include "geometry/MeshBuffer.h"

// The rules that every walk of the model follows, and the two operations that geometry and light
// walks are made of.

namespace quellix {

// One step of a walk.
struct IterateParams {
  SUEntitiesRef entities = SU_INVALID;
  InheritanceManager* manager = nullptr;             // the path down to `entities`
  MeshBuffer* output = nullptr;                      // what the faces below are added to
  SUComponentDefinitionRef definition = SU_INVALID;  // whose entities these are; null at the root
};

using DefinitionFilter = std::function<bool(SUComponentDefinitionRef)>;
using WalkCallback = std::function<void(IterateParams&)>;

// Visit the component instances, or the groups, of params.entities in the host's order: those not
// hidden, on a visible layer, of a definition that the filter accepts and that is no light. Each is
// visited with a copy of the manager on which it is pushed. The layer of each is recorded as one
// that its owner depends on. `hiddenLayers` says which layers are hidden.
void IterateInstances(const HiddenLayerSet& hiddenLayers, const IterateParams& params,
                      const DefinitionFilter& filter, const WalkCallback& callback);
void IterateGroups(const HiddenLayerSet& hiddenLayers, const IterateParams& params,
                   const WalkCallback& callback);

// The text under "light-type" of a definition; empty when it is no light.
std::string LightType(SUComponentDefinitionRef su_definition);

// Records that `dependent` has something on the manager's current layer; true when that layer is
// shown, or there is none.
bool RecordLayerAndTest(const HiddenLayerSet& hiddenLayers, const InheritanceManager& manager,
                        std::uint64_t dependent);

// The owner of the element last pushed: the outermost one.
inline std::uint64_t OwnerOf(const InheritanceManager& manager) {
  return manager.OutermostId();
}

inline SUDrawingElementRef AsDrawingElement(SUComponentInstanceRef su_instance) {
  return SUComponentInstanceToDrawingElement(su_instance);
}
inline SUDrawingElementRef AsDrawingElement(SUGroupRef su_group) {
  return SUGroupToDrawingElement(su_group);
}
inline SUEntityRef AsEntity(SUComponentInstanceRef su_instance) {
  return SUComponentInstanceToEntity(su_instance);
}
inline SUEntityRef AsEntity(SUGroupRef su_group) {
  return SUGroupToEntity(su_group);
}

// Has an element pushed while it lives.
class PushedLevel {
 public:
  PushedLevel(InheritanceManager& inheritanceManager, SUComponentInstanceRef su_instance)
      : manager(inheritanceManager) {
    manager.PushInstance(su_instance);
  }
  PushedLevel(InheritanceManager& inheritanceManager, SUGroupRef su_group)
      : manager(inheritanceManager) {
    manager.PushGroup(su_group);
  }
  PushedLevel(InheritanceManager& inheritanceManager, SUImageRef su_image)
      : manager(inheritanceManager) {
    manager.PushImage(su_image);
  }
  ~PushedLevel() { manager.Pop(); }
  PushedLevel(const PushedLevel&) = delete;
  PushedLevel& operator=(const PushedLevel&) = delete;

 private:
  InheritanceManager& manager;
};

}  // namespace quellix
