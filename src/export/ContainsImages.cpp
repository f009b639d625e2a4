#include "export/ContainsImages.h"

#include <set>
#include <vector>

#include "cw/Handle.h"
#include "export/Lists.h"

namespace quellix {

bool ContainsImages(SUEntitiesRef su_entities) {
  std::set<SUEntitiesRef, CW::HandleLess> known{su_entities};
  std::vector<SUEntitiesRef> left{su_entities};
  const auto look = [&](SUComponentDefinitionRef su_definition) {
    const SUEntitiesRef su_inside = EntitiesOf(su_definition);
    if (known.insert(su_inside).second) left.push_back(su_inside);
  };
  while (!left.empty()) {
    const SUEntitiesRef su_next = left.back();
    left.pop_back();
    std::size_t images = 0;
    if (SUEntitiesGetNumImages(su_next, &images) == SU_ERROR_NONE && images > 0) return true;
    for (const SUComponentInstanceRef su_instance : InstancesOf(su_next)) {
      look(DefinitionOf(su_instance));
    }
    for (const SUGroupRef su_group : GroupsOf(su_next)) look(DefinitionOf(su_group));
  }
  return false;
}

}  // namespace quellix
