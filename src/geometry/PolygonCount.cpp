#include "geometry/PolygonCount.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace quellix {

namespace {

std::uint32_t Sum(std::uint64_t a, std::uint64_t b) {
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>(a + b, std::numeric_limits<std::uint32_t>::max()));
}

void AddEntities(SUComponentDefinitionRef su_definition, std::vector<SUEntitiesRef>& su_placed) {
  SUEntitiesRef su_entities = SU_INVALID;
  if (SUComponentDefinitionGetEntities(su_definition, &su_entities) == SU_ERROR_NONE) {
    su_placed.push_back(su_entities);
  }
}

// The entities of what is placed directly in a collection, once per placement.
std::vector<SUEntitiesRef> PlacedIn(SUEntitiesRef su_entities) {
  std::vector<SUEntitiesRef> su_placed;
  const auto su_instances = CW::fetch_list<SUComponentInstanceRef>(
      [&](size_t* count) { return SUEntitiesGetNumInstances(su_entities, count); },
      [&](size_t len, SUComponentInstanceRef* su_items, size_t* count) {
        return SUEntitiesGetInstances(su_entities, len, su_items, count);
      });
  for (const SUComponentInstanceRef su_instance : su_instances) {
    SUComponentDefinitionRef su_definition = SU_INVALID;
    if (SUComponentInstanceGetDefinition(su_instance, &su_definition) == SU_ERROR_NONE) {
      AddEntities(su_definition, su_placed);
    }
  }
  const auto su_groups = CW::fetch_list<SUGroupRef>(
      [&](size_t* count) { return SUEntitiesGetNumGroups(su_entities, count); },
      [&](size_t len, SUGroupRef* su_items, size_t* count) {
        return SUEntitiesGetGroups(su_entities, len, su_items, count);
      });
  for (const SUGroupRef su_group : su_groups) {
    SUComponentDefinitionRef su_definition = SU_INVALID;
    if (SUGroupGetDefinition(su_group, &su_definition) == SU_ERROR_NONE) {
      AddEntities(su_definition, su_placed);
    }
  }
  return su_placed;
}

// A collection that is being counted: what is placed in it, and how far the walk has come.
struct Level {
  SUEntitiesRef su_entities;
  std::vector<SUEntitiesRef> su_placed;
  std::size_t next = 0;
  std::uint32_t faces = 0;
};

Level Open(SUEntitiesRef su_entities) {
  std::size_t faces = 0;
  if (SUEntitiesGetNumFaces(su_entities, &faces) != SU_ERROR_NONE) faces = 0;
  return {su_entities, PlacedIn(su_entities), 0, Sum(faces, 0)};
}

}  // namespace

// Models nest deeper than a thread's stack may bear, so the levels stand in a list. A collection
// under way is in `counts` already, as 0, which ends circles.
std::uint32_t CountPolygons(SUEntitiesRef su_entities, FaceCounts& counts) {
  const auto known = counts.find(su_entities);
  if (known != counts.end()) return known->second;
  counts[su_entities] = 0;
  std::vector<Level> levels;
  levels.push_back(Open(su_entities));
  for (;;) {
    Level& level = levels.back();
    if (level.next == level.su_placed.size()) {
      const std::uint32_t faces = level.faces;
      counts[level.su_entities] = faces;
      levels.pop_back();
      if (levels.empty()) return faces;
      levels.back().faces = Sum(levels.back().faces, faces);
      continue;
    }
    const SUEntitiesRef su_next = level.su_placed[level.next++];
    const auto [it, isNew] = counts.try_emplace(su_next, 0);
    if (isNew) {
      levels.push_back(Open(su_next));
    } else {
      level.faces = Sum(level.faces, it->second);
    }
  }
}

}  // namespace quellix
