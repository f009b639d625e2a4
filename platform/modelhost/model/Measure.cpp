#include "model/Measure.h"

#include <algorithm>
#include <unordered_map>

namespace modelhost {

namespace {

// Definitions nest and repeat: each is measured once per question.
class BoxFinder {
 public:
  const Box& of(const Entities& entities) {
    const auto [at, isNew] = known_.try_emplace(&entities);
    if (!isNew) return at->second;
    Box box;
    for (const auto& vertex : entities.vertices()) box.add(vertex->position);
    for (const auto* list : {&entities.instances(), &entities.groups(), &entities.images()}) {
      for (const auto& instance : *list)
        box.add(ofDefinition(instance->definition()), instance->transform);
    }
    return known_[&entities] = box;
  }

  Box ofDefinition(const Definition* definition) {
    if (definition == nullptr) return {};
    if (!definition->picture) return of(*definition->entities);
    Box box;
    box.add(SUPoint3D{0, 0, 0});
    box.add(SUPoint3D{static_cast<double>(definition->picture->width),
                      static_cast<double>(definition->picture->height), 0});
    return box;
  }

 private:
  std::unordered_map<const Entities*, Box> known_;
};

class ManifoldTest {
 public:
  bool of(const Entities& entities) {
    const auto [at, isNew] = known_.try_emplace(&entities, true);
    if (!isNew) return at->second;
    const auto closed = [](const auto& edge) { return edge->faces.size() == 2; };
    bool result =
        !(entities.faces().empty() && entities.instances().empty() && entities.groups().empty()) &&
        std::all_of(entities.edges().begin(), entities.edges().end(), closed);
    for (const auto* list : {&entities.instances(), &entities.groups()}) {
      for (const auto& instance : *list) {
        const Definition* definition = instance->definition();
        result = result && definition != nullptr && of(*definition->entities);
      }
    }
    return known_[&entities] = result;
  }

 private:
  std::unordered_map<const Entities*, bool> known_;
};

double outlineArea(std::vector<SUPoint3D> points, const SUTransformation* transform) {
  if (transform != nullptr) {
    for (SUPoint3D& p : points) p = apply(*transform, p);
  }
  return length(areaVector(points)) / 2;
}

}  // namespace

Box boxOf(const Entities& entities) {
  return BoxFinder().of(entities);
}

Box boxOf(const DrawingElement& element) {
  Box box;
  switch (element.kind()) {
    case Kind::Edge: {
      const auto& edge = static_cast<const Edge&>(element);
      box.add(edge.start->position);
      box.add(edge.end->position);
      break;
    }
    case Kind::Face:
      for (const SUPoint3D& p : static_cast<const Face&>(element).loops.front()->points()) {
        box.add(p);
      }
      break;
    case Kind::Definition:
      return BoxFinder().ofDefinition(static_cast<const Definition*>(&element));
    default: {
      const auto& instance = static_cast<const Instance&>(element);
      box.add(BoxFinder().ofDefinition(instance.definition()), instance.transform);
    }
  }
  return box;
}

bool isManifold(const Definition& definition) {
  return ManifoldTest().of(*definition.entities);
}

double areaOf(const Face& face, const SUTransformation* transform) {
  const auto outlines = outlinesOf(face);
  double area = outlineArea(outlines.front(), transform);
  for (std::size_t i = 1; i < outlines.size(); ++i) area -= outlineArea(outlines[i], transform);
  return area;
}

std::vector<std::vector<SUPoint3D>> outlinesOf(const Face& face) {
  std::vector<std::vector<SUPoint3D>> outlines;
  for (const auto& loop : face.loops) outlines.push_back(loop->points());
  outlines.insert(outlines.end(), face.openings.begin(), face.openings.end());
  return outlines;
}

}  // namespace modelhost
