// What every entity of a model has, and attribute dictionaries.
#pragma once

#include <SketchUpAPI/model/entity.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/Refs.h"
#include "model/Value.h"

namespace modelhost {

class Dictionary;
class Recorder;
using Dictionaries = std::vector<std::unique_ptr<Dictionary>>;

class Entity : public Object {
 public:
  ~Entity() override;

  // Null, and both ids 0, until the entity is part of a model.
  Model* model() const { return model_; }
  std::int32_t id() const { return id_; }
  std::int64_t persistentId() const { return persistentId_; }

  const Dictionaries& dictionaries() const;
  // Null when there is none of that name.
  Dictionary* findDictionary(const std::string& name) const;
  Dictionary& dictionary(const std::string& name);
  void addDictionary(std::unique_ptr<Dictionary> dictionary);

 protected:
  explicit Entity(Kind kind) : Object(kind) {}

 private:
  friend class Model;
  friend class Recorder;
  Model* model_ = nullptr;
  std::int64_t persistentId_ = 0;
  std::int32_t id_ = 0;
  // The operation in which a recorder has last kept what the entity was like.
  std::uint32_t touchedIn_ = 0;
  // Few entities have any.
  std::unique_ptr<Dictionaries> dictionaries_;
};

SURefType typeOf(Kind kind);

// To be called before something that is set on its own changes; see Recorder.
void willChange(Entity& entity);

class Dictionary : public Entity {
 public:
  explicit Dictionary(std::string dictionaryName)
      : Entity(Kind::Dictionary), name(std::move(dictionaryName)) {}

  const Value* find(const std::string& key) const;
  void set(const std::string& key, Value value);
  bool erase(const std::string& key);

  std::string name;
  // In the order in which the keys were first set.
  std::vector<std::pair<std::string, Value>> entries;
  // Null while the dictionary belongs to its maker.
  Entity* owner = nullptr;
};

// What can be drawn: it has a material, a layer and switches of its own.
class DrawingElement : public Entity {
 public:
  // The first layer of the model where none is set, or none is left; null outside a model.
  Layer* shownLayer() const;

  // Of a face, that of its front.
  Link<SUMaterialRef> material;
  Link<SULayerRef> layer;
  // The entities it is among; null while it belongs to its maker, and for definitions.
  Entities* parent = nullptr;
  bool hidden = false;
  bool castsShadows = true;
  bool receivesShadows = true;

 protected:
  explicit DrawingElement(Kind kind) : Entity(kind) {}
};

}  // namespace modelhost
