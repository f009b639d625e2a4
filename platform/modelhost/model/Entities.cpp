#include "model/Entities.h"

#include <algorithm>
#include <utility>

#include "model/Components.h"
#include "model/Model.h"

namespace modelhost {

Entities::Entities(Definition* owner) : Object(Kind::Entities), owner_(owner) {}

Entities::~Entities() {
  release();
}

Recorder* Entities::recorder() const {
  return model_ != nullptr ? model_->recorder() : nullptr;
}

template <class T>
void Entities::noteAppended(std::vector<std::unique_ptr<T>>& list) {
  Recorder* recorder = this->recorder();
  if (recorder == nullptr) return;
  if constexpr (std::is_same_v<T, Vertex>) {
    recorder->appended<Vertex>(list, weld());
  } else {
    recorder->appended(list);
  }
}

template <class T, class Doomed>
void Entities::drop(std::vector<std::unique_ptr<T>>& list, Doomed doomed) {
  Recorder* recorder = this->recorder();
  if constexpr (std::is_same_v<T, Vertex>) {
    const auto hook = weld();
    if (recorder != nullptr) return recorder->take(list, doomed, hook);
    std::erase_if(list, [&](const auto& vertex) {
      const bool goes = doomed(vertex);
      if (goes) hook(*vertex, false);
      return goes;
    });
  } else {
    if (recorder != nullptr) return recorder->take(list, doomed);
    std::erase_if(list, doomed);
  }
}

std::function<void(Vertex&, bool)> Entities::weld() {
  return [this](Vertex& vertex, bool present) {
    if (present) {
      grid_.insert(vertex.position, vertex);
    } else {
      grid_.erase(vertex.position, vertex);
    }
  };
}

void Entities::move(Vertex& vertex, const SUPoint3D& to) {
  Recorder::Flip flip = [this, &vertex, to = SUPoint3D(to)]() mutable {
    grid_.erase(vertex.position, vertex);
    std::swap(vertex.position, to);
    grid_.insert(vertex.position, vertex);
  };
  flip();
  if (Recorder* recorder = this->recorder()) recorder->add(std::move(flip));
}

void Entities::clear() {
  const auto all = [](const auto&) { return true; };
  for (auto* list : {&images_, &groups_, &instances_}) drop(*list, all);
  drop(faces_, all);
  drop(edges_, all);
  drop(vertices_, all);
}

void Entities::release() {
  // Against the order of construction: what is last in its definition's list leaves it cheaply.
  while (!images_.empty()) images_.pop_back();
  while (!groups_.empty()) groups_.pop_back();
  while (!instances_.empty()) instances_.pop_back();
  faces_.clear();
  edges_.clear();
  vertices_.clear();
  grid_.clear();
}

Vertex& Entities::newVertex(const SUPoint3D& p) {
  vertices_.push_back(std::make_unique<Vertex>(p));
  Vertex& vertex = *vertices_.back();
  grid_.insert(p, vertex);
  if (model_ != nullptr) model_->adopt(vertex);
  noteAppended(vertices_);
  return vertex;
}

Vertex& Entities::weldedVertex(const SUPoint3D& p) {
  Vertex* found = grid_.find(p);
  return found != nullptr ? *found : newVertex(p);
}

Edge& Entities::edgeBetween(Vertex& a, Vertex& b) {
  const Vertex& fewer = a.edges.size() <= b.edges.size() ? a : b;
  for (Edge* edge : fewer.edges) {
    if ((edge->start == &a && edge->end == &b) || (edge->start == &b && edge->end == &a)) {
      return *edge;
    }
  }
  edges_.push_back(std::make_unique<Edge>(a, b));
  Edge& edge = *edges_.back();
  enter(edge);
  noteAppended(edges_);
  link(edge);
  return edge;
}

void Entities::link(Edge& edge) {
  for (Vertex* end : {edge.start, edge.end}) {
    if (Recorder* recorder = this->recorder()) recorder->keep(*end);
    end->edges.push_back(&edge);
  }
}

void Entities::enter(DrawingElement& element) {
  element.parent = this;
  if (model_ != nullptr) model_->adopt(element);
}

void Entities::addLoop(Face& face, LoopSpec spec) {
  const std::size_t n = spec.vertices.size();
  // The outer loop fixes the direction; holes are turned against it.
  if (!face.loops.empty()) {
    std::vector<SUPoint3D> points;
    for (const Vertex* vertex : spec.vertices) points.push_back(vertex->position);
    if (dot(areaVector(points), face.normal()) > 0) {
      std::reverse(spec.vertices.begin(), spec.vertices.end());
      std::reverse(spec.edges.begin(), spec.edges.end());
      std::rotate(spec.edges.begin(), spec.edges.begin() + 1, spec.edges.end());
    }
  }
  face.loops.push_back(std::make_unique<Loop>(face));
  Loop& loop = *face.loops.back();
  Recorder* recorder = this->recorder();
  if (recorder != nullptr) recorder->appended(face.loops);
  loop.vertices = std::move(spec.vertices);
  for (std::size_t i = 0; i < n; ++i) {
    Edge& edge = edgeBetween(*loop.vertices[i], *loop.vertices[(i + 1) % n]);
    const LoopSpec::EdgeFlags& flags = spec.edges[i];
    if (recorder != nullptr) recorder->keep(edge);
    edge.hidden = edge.hidden || flags.hidden;
    edge.soft = edge.soft || flags.soft;
    edge.smooth = edge.smooth || flags.smooth;
    if (flags.material.get() != nullptr) edge.material = flags.material;
    if (flags.layer.get() != nullptr) edge.layer = flags.layer;
    if (std::find(edge.faces.begin(), edge.faces.end(), &face) == edge.faces.end()) {
      edge.faces.push_back(&face);
    }
    loop.edges.push_back(&edge);
  }
  if (face.model() != nullptr) face.model()->adopt(loop);
}

Face& Entities::addFace(std::vector<LoopSpec> loops, const SUPlane3D& plane) {
  faces_.push_back(std::make_unique<Face>());
  Face& face = *faces_.back();
  face.plane = plane;
  enter(face);
  noteAppended(faces_);
  for (LoopSpec& loop : loops) addLoop(face, std::move(loop));
  return face;
}

// Describes a loop of a maker's face on vertices of this collection.
void Entities::takeOver(LoopSpec& spec, const Loop& loop) {
  for (std::size_t i = 0; i < loop.vertices.size(); ++i) {
    spec.vertices.push_back(&weldedVertex(loop.vertices[i]->position));
    const Edge& edge = *loop.edges[i];
    spec.edges.push_back({edge.hidden, edge.soft, edge.smooth, edge.material, edge.layer});
  }
}

void Entities::adopt(std::unique_ptr<Face> owned) {
  Face& face = *owned;
  const std::unique_ptr<Entities> scratch = std::move(face.scratch);
  faces_.push_back(std::move(owned));
  enter(face);
  noteAppended(faces_);
  const auto loops = std::move(face.loops);
  face.loops.clear();
  for (const auto& loop : loops) {
    LoopSpec spec;
    takeOver(spec, *loop);
    addLoop(face, std::move(spec));
  }
}

void Entities::adopt(std::unique_ptr<Edge> owned) {
  const std::unique_ptr<Entities> scratch = std::move(owned->scratch);
  Vertex& start = weldedVertex(owned->start->position);
  Vertex& end = weldedVertex(owned->end->position);
  owned->start = &start;
  owned->end = &end;
  Edge& edge = *owned;
  edges_.push_back(std::move(owned));
  enter(edge);
  noteAppended(edges_);
  link(edge);
}

void Entities::adopt(std::unique_ptr<Instance> owned) {
  Instance& instance = *owned;
  auto& list = instance.kind() == Kind::Group   ? groups_
               : instance.kind() == Kind::Image ? images_
                                                : instances_;
  list.push_back(std::move(owned));
  enter(instance);
  noteAppended(list);
}

void Entities::unlink(Face& face) {
  for (const auto& loop : face.loops) {
    for (Edge* edge : loop->edges) {
      if (Recorder* recorder = this->recorder()) recorder->keep(*edge);
      std::erase(edge->faces, &face);
    }
  }
}

void Entities::erase(const std::unordered_set<const Entity*>& doomed) {
  std::unordered_set<const Face*> faces;
  bool edgesGo = false;
  for (const auto& edge : edges_) {
    if (!doomed.contains(edge.get())) continue;
    edgesGo = true;
    faces.insert(edge->faces.begin(), edge->faces.end());
  }
  drop(faces_, [&](const auto& face) {
    if (!faces.contains(face.get()) && !doomed.contains(face.get())) return false;
    unlink(*face);
    return true;
  });
  if (edgesGo) {
    drop(edges_, [&](const auto& edge) {
      if (!doomed.contains(edge.get())) return false;
      for (Vertex* end : {edge->start, edge->end}) {
        if (Recorder* recorder = this->recorder()) recorder->keep(*end);
        std::erase(end->edges, edge.get());
      }
      return true;
    });
    dropUnusedVertices();
  }
  for (auto* list : {&instances_, &groups_, &images_}) {
    drop(*list, [&](const auto& instance) { return doomed.contains(instance.get()); });
  }
}

void Entities::dropUnusedVertices() {
  drop(vertices_, [](const auto& vertex) { return vertex->edges.empty(); });
}

void Entities::attach(Model& model) {
  if (model_ == &model) return;
  model_ = &model;
  for (const auto& vertex : vertices_) model.adopt(*vertex);
  for (const auto& edge : edges_) model.adopt(*edge);
  for (const auto& face : faces_) {
    model.adopt(*face);
    for (const auto& loop : face->loops) model.adopt(*loop);
  }
  for (const auto* list : {&instances_, &groups_, &images_}) {
    for (const auto& instance : *list) model.adopt(*instance);
  }
}

}  // namespace modelhost
