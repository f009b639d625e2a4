#include "export/MeshPaint.h"

#include <set>
#include <type_traits>
#include <vector>

#include "export/Lists.h"
#include "export/Walks.h"
#include "link/IpcDigest.h"

namespace quellix {

namespace {

// Whether faces without paint lie in the definition or in anything below it that is neither painted
// itself nor a light.
bool HasFacesWithoutPaint(SUComponentDefinitionRef su_definition, const SceneIndex& scene) {
  std::set<SUEntitiesRef, CW::HandleLess> seen{EntitiesOf(su_definition)};
  std::vector<SUEntitiesRef> left(seen.begin(), seen.end());
  const auto look = [&](auto su_element) {
    if (SUIsValid(MaterialOf(AsDrawingElement(su_element)))) return;
    const SUComponentDefinitionRef su_placed = DefinitionOf(su_element);
    const SUEntitiesRef su_inside = EntitiesOf(su_placed);
    if (seen.contains(su_inside)) return;
    if constexpr (std::is_same_v<decltype(su_element), SUComponentInstanceRef>) {
      if (!LightType(su_placed).empty()) return;
    }
    seen.insert(su_inside);
    left.push_back(su_inside);
  };
  while (!left.empty()) {
    const SUEntitiesRef su_next = left.back();
    left.pop_back();
    if (scene.withoutPaint.contains(su_next)) return true;
    for (const SUComponentInstanceRef su_instance : InstancesOf(su_next)) look(su_instance);
    for (const SUGroupRef su_group : GroupsOf(su_next)) look(su_group);
  }
  return false;
}

}  // namespace

std::uint64_t PaintedMeshId(std::uint64_t definitionId, SUMaterialRef su_paint) {
  Fnv1a hash;
  hash.AddValue(definitionId);
  hash.AddValue(CW::persistent_id(SUMaterialToEntity(su_paint)));
  return (hash.Value() & 0x3FFFFFFFFFFFFFFFull) | 0x4000000000000000ull;
}

SUMaterialRef MeshPaint::TakenBy(SUComponentDefinitionRef su_definition,
                                 const InheritanceManager& manager) {
  // The levels around a definition paint both sides alike.
  const SUMaterialRef su_paint = manager.CurrentFrontMaterial().material;
  return SUIsValid(su_paint) && TakesPaint(su_definition) ? su_paint : SUMaterialRef SU_INVALID;
}

bool MeshPaint::TakesPaint(SUComponentDefinitionRef su_definition) {
  const auto [entry, isNew] = known.try_emplace(su_definition, false);
  if (isNew) entry->second = HasFacesWithoutPaint(su_definition, scene);
  return entry->second;
}

}  // namespace quellix
