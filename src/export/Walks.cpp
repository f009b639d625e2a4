#include "export/Walks.h"

#include <string>

#include "export/AttributeReaders.h"
#include "export/Descent.h"
#include "export/Lists.h"
#include "export/ReloadCaches.h"

namespace quellix {

std::string LightType(SUComponentDefinitionRef su_definition) {
  const SUAttributeDictionaryRef su_dictionary =
      FindUsableDictionary(SUComponentDefinitionToEntity(su_definition));
  if (SUIsInvalid(su_dictionary)) return {};
  return ReadString(su_dictionary, "light-type", {});
}

bool RecordLayerAndTest(const HiddenLayerSet& hiddenLayers, const InheritanceManager& manager,
                        std::uint64_t dependent) {
  const SULayerRef su_layer = manager.CurrentLayer();
  if (SUIsInvalid(su_layer)) return true;
  ReloadCaches::Instance().layerDependents[CW::persistent_id(SULayerToEntity(su_layer))].insert(
      dependent);
  return !hiddenLayers.contains(su_layer);
}

void IterateInstances(const HiddenLayerSet& hiddenLayers, const IterateParams& params,
                      const DefinitionFilter& filter, const WalkCallback& callback) {
  for (const SUComponentInstanceRef su_instance : InstancesOf(params.entities)) {
    if (IsHidden(AsDrawingElement(su_instance))) continue;
    const SUComponentDefinitionRef su_definition = DefinitionOf(su_instance);
    if (!filter(su_definition)) continue;
    InheritanceManager manager(*params.manager);
    manager.PushInstance(su_instance);
    if (!RecordLayerAndTest(hiddenLayers, manager, OwnerOf(manager))) continue;
    if (!LightType(su_definition).empty()) continue;
    const Descent step(su_definition);
    if (!step) continue;
    IterateParams child{EntitiesOf(su_definition), &manager, params.output, su_definition};
    callback(child);
  }
}

void IterateGroups(const HiddenLayerSet& hiddenLayers, const IterateParams& params,
                   const WalkCallback& callback) {
  for (const SUGroupRef su_group : GroupsOf(params.entities)) {
    if (IsHidden(AsDrawingElement(su_group))) continue;
    const SUComponentDefinitionRef su_definition = DefinitionOf(su_group);
    InheritanceManager manager(*params.manager);
    manager.PushGroup(su_group);
    if (!RecordLayerAndTest(hiddenLayers, manager, OwnerOf(manager))) continue;
    const Descent step(su_definition);
    if (!step) continue;
    IterateParams child{EntitiesOf(su_definition), &manager, params.output, su_definition};
    callback(child);
  }
}

}  // namespace quellix
