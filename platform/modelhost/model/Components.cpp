#include "model/Components.h"

#include <unordered_set>

#include "model/Model.h"

namespace modelhost {

Definition::Definition(SUComponentType definitionType)
    : DrawingElement(Kind::Definition),
      type(definitionType),
      entities(std::make_unique<Entities>(this)) {
  behavior.component_no_scale_mask = 0;
}

Definition::~Definition() {
  for (Instance* instance : instances) instance->definition_ = nullptr;
}

bool Definition::contains(const Entities& where) const {
  // Upwards from `where`: models are mostly built bottom-up, where there is little above.
  std::vector<const Definition*> open;
  std::unordered_set<const Definition*> seen;
  const auto visit = [&](const Definition* definition) {
    if (definition != nullptr && seen.insert(definition).second) open.push_back(definition);
  };
  visit(where.owner());
  while (!open.empty()) {
    const Definition* definition = open.back();
    open.pop_back();
    if (definition == this) return true;
    for (const Instance* instance : definition->instances) {
      if (instance->parent != nullptr) visit(instance->parent->owner());
    }
  }
  return false;
}

Instance::Instance(Kind kind, Definition& placed, std::shared_ptr<Definition> shared)
    : DrawingElement(kind),
      definition_(&placed),
      shared_(std::move(shared)),
      slot_(placed.instances.size()) {
  placed.instances.push_back(this);
}

Instance::~Instance() {
  if (joined_) leave();
}

void Instance::leave() {
  joined_ = false;
  if (definition_ == nullptr) return;
  auto& all = definition_->instances;
  all[slot_] = all.back();
  all[slot_]->slot_ = slot_;
  all.pop_back();
}

void Instance::join() {
  joined_ = true;
  auto& all = definition_->instances;
  if (slot_ == all.size()) {
    all.push_back(this);
    return;
  }
  // Whoever took this place when it left was the last.
  all[slot_]->slot_ = all.size();
  all.push_back(all[slot_]);
  all[slot_] = this;
}

void Instance::place(Definition& other, std::shared_ptr<Definition> otherShared) {
  Recorder* recorder = model() != nullptr ? model()->recorder() : nullptr;
  auto exchange = [this, to = &other, shared = std::move(otherShared),
                   slot = other.instances.size()](const auto& placed) mutable {
    placed(false);
    std::swap(definition_, to);
    std::swap(shared_, shared);
    std::swap(slot_, slot);
    placed(true);
  };
  auto kept = std::make_shared<decltype(exchange)>(exchange);
  (*kept)([this](bool present) { present ? join() : leave(); });
  if (recorder == nullptr) return;
  recorder->add([this, kept, recorder] {
    (*kept)([&](bool present) { recorder->setPlaced(*this, present); });
  });
}

double Image::width() const {
  const Definition* d = definition();
  return d && d->picture ? static_cast<double>(d->picture->width) * length(column(transform, 0))
                         : 0;
}

double Image::height() const {
  const Definition* d = definition();
  return d && d->picture ? static_cast<double>(d->picture->height) * length(column(transform, 1))
                         : 0;
}

}  // namespace modelhost
