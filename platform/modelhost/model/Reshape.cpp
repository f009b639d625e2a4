#include "model/Reshape.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <utility>

#include "model/Build.h"
#include "model/Model.h"

namespace modelhost {

namespace {

bool isIdentity(const SUTransformation& t) {
  const SUTransformation one = identity();
  return std::memcmp(&t, &one, sizeof t) == 0;
}

void copyAttributes(const Entity& from, Entity& to) {
  for (const auto& dictionary : from.dictionaries()) {
    auto copy = std::make_unique<Dictionary>(dictionary->name);
    copy->entries = dictionary->entries;
    to.addDictionary(std::move(copy));
  }
}

// Copies elements of one collection into another.
class Copier {
 public:
  Copier(Entities& to, const SUTransformation& t)
      : to_(to), t_(t), back_(inverse(t)), same_(isIdentity(t)) {}

  // What has none of its own gets these.
  Material* paint = nullptr;
  Layer* layer = nullptr;
  // Null for all.
  const Elements* only = nullptr;

  bool possible() const { return back_.has_value(); }

  void copy(const Entities& from) {
    for (const auto& edge : from.edges()) {
      if (wanted(*edge)) copy(*edge);
    }
    for (const auto& face : from.faces()) {
      if (wanted(*face)) copy(*face);
    }
    for (const auto* list : {&from.instances(), &from.groups(), &from.images()}) {
      for (const auto& instance : *list) {
        if (wanted(*instance)) copy(*instance);
      }
    }
  }

 private:
  bool wanted(const Entity& entity) const { return only == nullptr || only->contains(&entity); }

  void copyElement(const DrawingElement& from, DrawingElement& to) {
    to.material = from.material;
    to.layer = from.layer;
    if (layer != nullptr && from.shownLayer() == &to_.model()->defaultLayer()) to.layer = layer;
    to.hidden = from.hidden;
    to.castsShadows = from.castsShadows;
    to.receivesShadows = from.receivesShadows;
    copyAttributes(from, to);
  }

  Vertex& vertex(const Vertex& from) {
    Vertex*& copy = vertices_[&from];
    if (copy == nullptr) {
      // A mere copy keeps apart what was apart.
      copy = same_ ? &to_.newVertex(from.position) : &to_.weldedVertex(apply(t_, from.position));
    }
    return *copy;
  }

  void copy(const Edge& from) {
    Vertex& a = vertex(*from.start);
    Vertex& b = vertex(*from.end);
    if (&a == &b) return;
    const std::size_t before = to_.edges().size();
    Edge& edge = to_.edgeBetween(a, b);
    if (to_.edges().size() == before) return;
    copyElement(from, edge);
    edge.soft = from.soft;
    edge.smooth = from.smooth;
    edge.color = from.color;
  }

  std::shared_ptr<const UvMapping> mapping(const Face& from, bool front, Material* with) const {
    const auto& own = front ? from.frontMapping : from.backMapping;
    if (same_ || with == nullptr) return own;
    const UvMapping lies = own ? *own : UvMapping::planar(from.sideNormal(front), tileOf(with));
    return std::make_shared<UvMapping>(lies.after(*back_));
  }

  void copy(const Face& from) {
    std::vector<LoopSpec> loops;
    for (const auto& loop : from.loops) {
      LoopSpec spec;
      for (const Vertex* v : loop->vertices) {
        Vertex* copy = &vertex(*v);
        if (spec.vertices.empty() || spec.vertices.back() != copy) spec.vertices.push_back(copy);
      }
      while (spec.vertices.size() > 1 && spec.vertices.front() == spec.vertices.back()) {
        spec.vertices.pop_back();
      }
      if (determinant(t_) < 0) std::reverse(spec.vertices.begin(), spec.vertices.end());
      spec.edges.resize(spec.vertices.size());
      if (spec.vertices.size() > 2) loops.push_back(std::move(spec));
    }
    if (loops.empty()) return;
    std::vector<SUPoint3D> outline;
    for (const Vertex* v : loops.front().vertices) outline.push_back(v->position);
    const auto plane = same_ ? from.plane : planeOf(outline);
    if (!plane) return;
    Face& face = to_.addFace(std::move(loops), *plane);
    copyElement(from, face);
    face.backMaterial = from.backMaterial;
    if (from.sideMaterial(true) == nullptr && paint != nullptr) face.material = paint;
    if (from.sideMaterial(false) == nullptr && paint != nullptr) face.backMaterial = paint;
    face.frontMapping = mapping(from, true, face.sideMaterial(true));
    face.backMapping = mapping(from, false, face.sideMaterial(false));
    for (const auto& opening : from.openings) {
      std::vector<SUPoint3D> points;
      for (const SUPoint3D& p : opening) points.push_back(apply(t_, p));
      face.openings.push_back(std::move(points));
    }
  }

  void copy(const Instance& from) {
    std::unique_ptr<Instance> owned;
    switch (from.kind()) {
      case Kind::Group:
        owned = std::make_unique<Group>(from.sharedDefinition());
        break;
      case Kind::Image:
        owned = std::make_unique<Image>(from.sharedDefinition());
        break;
      default:
        owned = std::make_unique<Instance>(*from.definition());
        break;
    }
    Instance& instance = *owned;
    instance.name = from.name;
    instance.transform = same_ ? from.transform : product(t_, from.transform);
    to_.adopt(std::move(owned));
    copyElement(from, instance);
    if (from.material.get() == nullptr && paint != nullptr) instance.material = paint;
  }

  Entities& to_;
  SUTransformation t_;
  std::optional<SUTransformation> back_;
  bool same_;
  std::unordered_map<const Vertex*, Vertex*> vertices_;
};

// The face lies in another plane now.
void settle(Face& face, bool asWhole, const SUTransformation& t, const SUTransformation& back) {
  if (asWhole && determinant(t) < 0) face.turnLoops();
  if (const auto plane = planeOf(face.loops.front()->points())) {
    if (asWhole) {
      // A texture goes with its face.
      for (const bool front : {true, false}) {
        Material* material = face.sideMaterial(front);
        if (material == nullptr) continue;
        auto& mapping = front ? face.frontMapping : face.backMapping;
        const UvMapping lies =
            mapping ? *mapping : UvMapping::planar(face.sideNormal(front), tileOf(material));
        mapping = std::make_shared<UvMapping>(lies.after(back));
      }
      for (auto& opening : face.openings) {
        for (SUPoint3D& p : opening) p = apply(t, p);
      }
    }
    face.plane = *plane;
  }
}

}  // namespace

bool explode(Instance& instance) {
  if (instance.kind() == Kind::Image) return false;
  Entities& parent = *instance.parent;
  Copier copier(parent, instance.transform);
  if (!copier.possible()) return false;
  copier.paint = instance.material.get();
  copier.layer = instance.layer.get();
  copier.copy(*instance.definition()->entities);
  parent.erase({&instance});
  return true;
}

void makeUnique(Instance& instance) {
  Definition& from = *instance.definition();
  if (std::count_if(from.instances.begin(), from.instances.end(),
                    [](const Instance* i) { return i->parent != nullptr; }) < 2) {
    return;
  }
  willChange(instance);
  std::shared_ptr<Definition> shared;
  auto owned = std::make_unique<Definition>(from.type);
  Definition& copy = *owned;
  copy.name = from.name;
  copy.description = from.description;
  copy.behavior = from.behavior;
  copy.picture = from.picture;
  copy.fileName = from.fileName;
  if (instance.sharedDefinition()) {
    shared = std::move(owned);
    instance.model()->adopt(copy);
  } else {
    instance.model()->add(std::move(owned));
  }
  copyAttributes(from, copy);
  // Placed first: taken back, its contents leave it before it goes.
  instance.place(copy, std::move(shared));
  Copier(*copy.entities, identity()).copy(*from.entities);
}

Group& group(Entities& entities, const Elements& elements) {
  Elements going = elements;
  Elements doomed = elements;
  const auto stays = [&](const Face* face) { return !elements.contains(face); };
  for (const auto& edge : entities.edges()) {
    const bool staysHere = std::any_of(edge->faces.begin(), edge->faces.end(), stays);
    const bool goes = std::any_of(edge->faces.begin(), edge->faces.end(),
                                  [&](const Face* face) { return !stays(face); });
    if (goes) going.insert(edge.get());
    if (goes && !staysHere) doomed.insert(edge.get());
    if (staysHere) doomed.erase(edge.get());
  }
  auto owned = std::make_unique<Group>();
  Group& group = *owned;
  entities.adopt(std::move(owned));
  Copier copier(*group.definition()->entities, identity());
  copier.only = &going;
  copier.copy(entities);
  entities.erase(doomed);
  return group;
}

void transform(Entities& entities, const Elements& elements, const SUTransformation& t) {
  const auto back = inverse(t);
  std::unordered_set<Vertex*> moved;
  std::vector<Face*> settling;
  for (const auto* list : {&entities.instances(), &entities.groups(), &entities.images()}) {
    for (const auto& instance : *list) {
      if (!elements.contains(instance.get())) continue;
      willChange(*instance);
      instance->transform = product(t, instance->transform);
    }
  }
  // Most often it is instances alone.
  if (std::all_of(elements.begin(), elements.end(), [](const Entity* element) {
        return (kInstanceKinds & bitOf(element->kind())) != 0;
      })) {
    return;
  }
  for (const auto& edge : entities.edges()) {
    const bool goes = elements.contains(edge.get()) ||
                      std::any_of(edge->faces.begin(), edge->faces.end(),
                                  [&](const Face* face) { return elements.contains(face); });
    if (goes) moved.insert({edge->start, edge->end});
  }
  if (moved.empty()) return;
  for (const auto& edge : entities.edges()) {
    if (moved.contains(edge->start) || moved.contains(edge->end)) willChange(*edge);
  }
  for (const auto& face : entities.faces()) {
    for (const auto& loop : face->loops) {
      if (std::any_of(loop->vertices.begin(), loop->vertices.end(),
                      [&](Vertex* v) { return moved.contains(v); })) {
        willChange(*face);
        settling.push_back(face.get());
        break;
      }
    }
  }
  for (const auto& vertex : entities.vertices()) {
    if (moved.contains(vertex.get())) entities.move(*vertex, apply(t, vertex->position));
  }
  for (Face* face : settling) {
    const auto& outline = face->loops.front()->vertices;
    const bool asWhole = back && std::all_of(outline.begin(), outline.end(),
                                             [&](Vertex* v) { return moved.contains(v); });
    settle(*face, asWhole, t, asWhole ? *back : t);
  }
}

}  // namespace modelhost
