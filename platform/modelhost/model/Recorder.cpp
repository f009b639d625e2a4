#include "model/Recorder.h"

#include <algorithm>
#include <tuple>

#include "model/Model.h"

namespace modelhost {

namespace {

// Calls use(...) with everything of the entity that an edit can change in place.
template <class Use>
void withState(Entity& entity, Use use) {
  const auto element = [&](auto& e, auto&... more) {
    use(e.material, e.layer, e.hidden, e.castsShadows, e.receivesShadows, more...);
  };
  switch (entity.kind()) {
    case Kind::Vertex:
      // Its place has to do with others'; see Entities::move.
      return use(static_cast<Vertex&>(entity).edges);
    case Kind::Edge: {
      auto& e = static_cast<Edge&>(entity);
      return element(e, e.soft, e.smooth, e.color, e.faces);
    }
    case Kind::Loop: {
      auto& l = static_cast<Loop&>(entity);
      return use(l.vertices, l.edges);
    }
    case Kind::Face: {
      auto& f = static_cast<Face&>(entity);
      return element(f, f.plane, f.openings, f.backMaterial, f.frontMapping, f.backMapping);
    }
    case Kind::Definition: {
      auto& d = static_cast<Definition&>(entity);
      return element(d, d.name, d.description, d.behavior);
    }
    case Kind::Instance:
    case Kind::Group:
    case Kind::Image: {
      auto& i = static_cast<Instance&>(entity);
      return element(i, i.name, i.transform);
    }
    case Kind::Layer: {
      auto& l = static_cast<Layer&>(entity);
      return use(l.name, l.visible, l.folder, l.material);
    }
    case Kind::LayerFolder: {
      auto& f = static_cast<LayerFolder&>(entity);
      return use(f.name, f.visible, f.parent, f.layers, f.folders);
    }
    case Kind::Material: {
      auto& m = static_cast<Material&>(entity);
      return use(m.name, m.type, m.color, m.opacity, m.useOpacity, m.texture, m.colorizeType,
                 m.deltas, m.workflow, m.metalness, m.roughness, m.normal, m.normalStyle);
    }
    case Kind::Texture: {
      auto& t = static_cast<Texture&>(entity);
      return use(t.tile, t.fileName, t.useAlpha);
    }
    case Kind::Dictionary:
      return use(static_cast<Dictionary&>(entity).entries);
    default:
      return;
  }
}

}  // namespace

void Recorder::keep(Entity& entity) {
  if (std::exchange(entity.touchedIn_, serial_) == serial_) return;
  withState(entity, [&](auto&... fields) {
    add([this, &entity, saved = std::make_tuple(fields...)]() mutable {
      tell(What::Changed, entity);
      withState(entity, [&](auto&... now) {
        // The fields of one entity have always the same types.
        using Saved = decltype(saved);
        if constexpr (std::is_same_v<Saved, std::tuple<std::decay_t<decltype(now)>...>>) {
          Saved current(now...);
          std::tie(now...) = std::exchange(saved, std::move(current));
        }
      });
    });
  });
}

void Recorder::touch(Entity& entity) {
  keep(entity);
  tell(What::Changed, entity);
}

void Recorder::tell(What what, const Entity& entity) {
  void* among = nullptr;
  switch (entity.kind()) {
    case Kind::Vertex:
    case Kind::Loop:
      return;
    case Kind::Dictionary: {
      // What hangs on a thing is a change of that thing; those of the model itself are its own.
      if (const Entity* owner = static_cast<const Dictionary&>(entity).owner) {
        return tell(What::Changed, *owner);
      }
      break;
    }
    case Kind::Texture:
      if (const Entity* owner = static_cast<const Texture&>(entity).material) {
        tell(What::Changed, *owner);
      }
      return;
    case Kind::Edge:
    case Kind::Face:
    case Kind::Instance:
    case Kind::Group:
    case Kind::Image:
      // What nobody has placed yet is nobody's concern.
      if (static_cast<const DrawingElement&>(entity).parent == nullptr) return;
      among = static_cast<const DrawingElement&>(entity).parent->handle();
      break;
    default:
      break;
  }
  events_.push_back({what, entity.kind(), entity.handle(), entity.id(), among});
}

void Recorder::setPlaced(Instance& instance, bool present) {
  Definition* shared = instance.sharedDefinition().get();
  if (present) {
    // Against the order below.
    if (shared != nullptr && shared->instances.empty()) {
      setContentsPresent(*shared, true);
      tell(What::Added, *shared);
    }
    instance.join();
    return;
  }
  instance.leave();
  // A group's or an image's definition goes with the last one that places it.
  if (shared != nullptr && shared->instances.empty()) {
    tell(What::Removed, *shared);
    setContentsPresent(*shared, false);
  }
}

void Recorder::setContentsPresent(Definition& definition, bool present) {
  const auto set = [&](const auto& list) {
    const std::size_t n = list.size();
    for (std::size_t i = 0; i < n; ++i) setPresent(*list[present ? n - 1 - i : i], present);
  };
  Entities& inside = *definition.entities;
  definition.setShown(present);
  inside.setShown(present);
  set(inside.vertices());
  set(inside.edges());
  set(inside.faces());
  if (present) {
    set(inside.images());
    set(inside.groups());
    set(inside.instances());
  } else {
    set(inside.instances());
    set(inside.groups());
    set(inside.images());
  }
}

void Recorder::setPresent(Entity& entity, bool present) {
  entity.setShown(present);
  switch (entity.kind()) {
    case Kind::Face:
      for (const auto& loop : static_cast<Face&>(entity).loops) loop->setShown(present);
      break;
    case Kind::Instance:
    case Kind::Group:
    case Kind::Image:
      setPlaced(static_cast<Instance&>(entity), present);
      break;
    case Kind::Definition:
      setContentsPresent(static_cast<Definition&>(entity), present);
      break;
    default:
      break;
  }
}

bool Recorder::commit(bool join) {
  ++serial_;
  if (open_.empty()) return false;
  if (join && !done_.empty()) {
    std::move(open_.begin(), open_.end(), std::back_inserter(done_.back()));
    open_.clear();
  } else {
    done_.push_back(std::exchange(open_, {}));
    if (done_.size() > kMostOperations) done_.erase(done_.begin());
  }
  undone_.clear();
  return true;
}

void Recorder::takeBack(Operation& operation) {
  ++serial_;
  for (auto flip = operation.rbegin(); flip != operation.rend(); ++flip) (*flip)();
}

void Recorder::abort() {
  takeBack(open_);
  open_.clear();
}

bool Recorder::undo() {
  if (done_.empty()) return false;
  takeBack(done_.back());
  undone_.push_back(std::move(done_.back()));
  done_.pop_back();
  return true;
}

bool Recorder::redo() {
  if (undone_.empty()) return false;
  ++serial_;
  for (const Flip& flip : undone_.back()) flip();
  done_.push_back(std::move(undone_.back()));
  undone_.pop_back();
  return true;
}

void Recorder::forget() {
  ++serial_;
  open_.clear();
  done_.clear();
  undone_.clear();
  events_.clear();
}

}  // namespace modelhost
