#include "model/Entity.h"

#include <algorithm>

#include "model/Model.h"

namespace modelhost {

Entity::~Entity() = default;

const Dictionaries& Entity::dictionaries() const {
  static const Dictionaries kNone;
  return dictionaries_ ? *dictionaries_ : kNone;
}

Dictionary* Entity::findDictionary(const std::string& name) const {
  const Dictionaries& all = dictionaries();
  const auto at =
      std::find_if(all.begin(), all.end(), [&](const auto& d) { return d->name == name; });
  return at == all.end() ? nullptr : at->get();
}

Dictionary& Entity::dictionary(const std::string& name) {
  if (Dictionary* found = findDictionary(name)) return *found;
  addDictionary(std::make_unique<Dictionary>(name));
  return *dictionaries_->back();
}

void willChange(Entity& entity) {
  if (entity.model() == nullptr) return;
  if (Recorder* recorder = entity.model()->recorder()) recorder->touch(entity);
}

void Entity::addDictionary(std::unique_ptr<Dictionary> dictionary) {
  if (!dictionaries_) dictionaries_ = std::make_unique<Dictionaries>();
  dictionary->owner = this;
  if (model_ != nullptr) model_->adopt(*dictionary);
  dictionaries_->push_back(std::move(dictionary));
}

Layer* DrawingElement::shownLayer() const {
  Layer* own = layer.get();
  return own == nullptr && model() != nullptr ? &model()->defaultLayer() : own;
}

const Value* Dictionary::find(const std::string& key) const {
  const auto at =
      std::find_if(entries.begin(), entries.end(), [&](const auto& e) { return e.first == key; });
  return at == entries.end() ? nullptr : &at->second;
}

void Dictionary::set(const std::string& key, Value value) {
  for (auto& entry : entries) {
    if (entry.first == key) {
      entry.second = std::move(value);
      return;
    }
  }
  entries.emplace_back(key, std::move(value));
}

bool Dictionary::erase(const std::string& key) {
  return std::erase_if(entries, [&](const auto& e) { return e.first == key; }) > 0;
}

void TypedValue::set(const Value& value) {
  // Kept until the end: `value` may be one of this array's own items.
  const auto former = std::move(items_);
  items_.clear();
  if (const auto* list = std::get_if<ValueList>(&value)) {
    for (const Value& item : *list) {
      items_.push_back(std::make_unique<TypedValue>(item));
      items_.back()->isItem = true;
    }
  }
  Value copy = value;
  value_ = std::move(copy);
}

}  // namespace modelhost
