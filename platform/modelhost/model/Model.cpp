#include "model/Model.h"

#include <algorithm>

namespace modelhost {

namespace {

template <class T>
T* findIn(const std::map<std::string, T*>& names, const std::string& name) {
  const auto at = names.find(name);
  return at == names.end() ? nullptr : at->second;
}

template <class T>
std::string freeName(const std::map<std::string, T*>& names, const std::string& wish) {
  if (!names.contains(wish)) return wish;
  for (int n = 1;; ++n) {
    std::string candidate = wish + "#" + std::to_string(n);
    if (!names.contains(candidate)) return candidate;
  }
}

// Keeps a list's names, which come and go with what they name.
template <class T>
Recorder::Hook<T> namesHook(std::map<std::string, T*>* names) {
  if (names == nullptr) return {};
  return [names](T& thing, bool present) {
    if (present) {
      names->emplace(thing.name, &thing);
    } else {
      names->erase(thing.name);
    }
  };
}

}  // namespace

RenderingOptions::RenderingOptions() : Object(Kind::RenderingOptions) {
  values["BackgroundColor"] = SUColor{255, 255, 255, 255};
  values["FaceFrontColor"] = SUColor{255, 255, 255, 255};
  values["FaceBackColor"] = SUColor{163, 184, 204, 255};
  values["GroundColor"] = SUColor{210, 208, 185, 255};
  values["SkyColor"] = SUColor{163, 204, 230, 255};
  values["DrawGround"] = false;
  values["DrawHidden"] = false;
  values["DrawHorizon"] = false;
  values["Texture"] = true;
}

Model::Model() : Object(Kind::Model), root_(std::make_unique<Entities>(nullptr)) {
  auto layer = std::make_unique<Layer>();
  layer->name = "Layer0";
  add(std::move(layer));
  root_->attach(*this);
}

Model::~Model() {
  recorder_.reset();
  root_.reset();
  // Definitions may place each other in any order: empty them all before any of them goes.
  for (const auto& definition : definitions_) definition->entities->release();
}

void Model::watch() {
  if (!recorder_) recorder_ = std::make_unique<Recorder>();
}

template <class T>
void Model::enlist(std::vector<std::unique_ptr<T>>& list, std::unique_ptr<T> thing,
                   Names<T>* names) {
  adopt(*thing);
  list.push_back(std::move(thing));
  if (Recorder* recorder = this->recorder()) recorder->appended(list, namesHook(names));
}

template <class T>
void Model::drop(std::vector<std::unique_ptr<T>>& list, const T& thing, Names<T>* names) {
  const auto doomed = [&](const auto& item) { return item.get() == &thing; };
  if (Recorder* recorder = this->recorder()) return recorder->take(list, doomed, namesHook(names));
  if (names != nullptr) names->erase(thing.name);
  std::erase_if(list, doomed);
}

// Gives a thing of a list another name.
template <class T>
void Model::setName(Names<T>& names, T& thing, std::string to) {
  Recorder* recorder = this->recorder();
  Recorder::Flip flip = [&names, &thing, recorder, to = std::move(to)]() mutable {
    names.erase(thing.name);
    std::swap(thing.name, to);
    names.emplace(thing.name, &thing);
    if (recorder != nullptr) recorder->tell(Recorder::What::Changed, thing);
  };
  flip();
  if (recorder != nullptr) recorder->add(std::move(flip));
}

void Model::adopt(Entity& entity) {
  if (entity.model_ != nullptr) return;
  entity.model_ = this;
  entity.id_ = nextId_++;
  if (entity.persistentId_ == 0) {
    while (chosenIds_.contains(nextPersistentId_)) ++nextPersistentId_;
    entity.persistentId_ = nextPersistentId_++;
  }
  // A dictionary is made where one is read, so an empty one counts as none.
  if (Recorder* recorder = this->recorder(); recorder && entity.kind() != Kind::Dictionary) {
    // What is new has no former state in this operation.
    entity.touchedIn_ = recorder->serial_;
    recorder->tell(Recorder::What::Added, entity);
  }
  for (const auto& dictionary : entity.dictionaries()) adopt(*dictionary);
  if (entity.kind() == Kind::Definition) {
    static_cast<Definition&>(entity).entities->attach(*this);
  } else if (entity.kind() == Kind::Group || entity.kind() == Kind::Image) {
    adopt(*static_cast<Instance&>(entity).definition());
  } else if (entity.kind() == Kind::Material) {
    const auto& material = static_cast<Material&>(entity);
    for (Texture* texture : {material.texture.get(), material.metalness.texture.get(),
                             material.roughness.texture.get(), material.normal.texture.get()}) {
      if (texture != nullptr) adopt(*texture);
    }
  }
}

bool Model::setPersistentId(Entity& entity, std::int64_t id) {
  if (entity.model_ != this || id <= 0) return false;
  if (entity.persistentId_ == id) return true;
  if (id > kLastChosenId && id < nextPersistentId_) return false;
  if (!chosenIds_.insert(id).second) return false;
  entity.persistentId_ = id;
  return true;
}

bool Model::add(std::unique_ptr<Material> material) {
  if (material->name.empty()) material->name = freeMaterialName("Material");
  if (!materialsByName_.emplace(material->name, material.get()).second) return false;
  material->listed = true;
  enlist(materials_, std::move(material), &materialsByName_);
  return true;
}

bool Model::add(std::unique_ptr<Layer> layer) {
  if (!layersByName_.emplace(layer->name, layer.get()).second) return false;
  enlist(layers_, std::move(layer), &layersByName_);
  return true;
}

void Model::add(std::unique_ptr<LayerFolder> folder) {
  enlist(folders_, std::move(folder), static_cast<Names<LayerFolder>*>(nullptr));
}

void Model::add(std::unique_ptr<Definition> definition) {
  definition->name = freeDefinitionName(definition->name.empty() ? "Component" : definition->name);
  definitionsByName_.emplace(definition->name, definition.get());
  enlist(definitions_, std::move(definition), &definitionsByName_);
}

bool Model::rename(Material& material, const std::string& to) {
  if (material.name == to) return true;
  if (materialsByName_.contains(to)) return false;
  setName(materialsByName_, material, to);
  return true;
}

bool Model::rename(Layer& layer, const std::string& to) {
  if (layer.name == to) return true;
  if (layersByName_.contains(to)) return false;
  setName(layersByName_, layer, to);
  return true;
}

void Model::rename(Definition& definition, const std::string& to) {
  if (definition.name == to) return;
  // Its own name is free for itself.
  definitionsByName_.erase(definition.name);
  std::string free = freeDefinitionName(to);
  definitionsByName_.emplace(definition.name, &definition);
  setName(definitionsByName_, definition, std::move(free));
}

void Model::remove(Material& material) {
  drop(materials_, material, &materialsByName_);
}

bool Model::remove(Layer& layer) {
  if (&layer == &defaultLayer()) return false;
  if (layer.folder != nullptr) {
    willChange(*layer.folder);
    std::erase(layer.folder->layers, &layer);
  }
  drop(layers_, layer, &layersByName_);
  return true;
}

void Model::remove(LayerFolder& folder) {
  LayerFolder* above = folder.parent;
  willChange(folder);
  if (above != nullptr) {
    willChange(*above);
    std::erase(above->folders, &folder);
  }
  for (Layer* layer : folder.layers) {
    willChange(*layer);
    layer->folder = above;
    if (above != nullptr) above->layers.push_back(layer);
  }
  for (LayerFolder* inner : folder.folders) {
    willChange(*inner);
    inner->parent = above;
    if (above != nullptr) above->folders.push_back(inner);
  }
  folder.layers.clear();
  folder.folders.clear();
  folder.parent = nullptr;
  drop(folders_, folder, static_cast<Names<LayerFolder>*>(nullptr));
}

void Model::remove(Definition& definition) {
  const std::vector<Instance*> instances = definition.instances;
  for (const Instance* instance : instances) {
    if (instance->parent != nullptr) instance->parent->erase({instance});
  }
  drop(definitions_, definition, &definitionsByName_);
}

std::vector<Definition*> Model::allDefinitions() const {
  std::vector<Definition*> all;
  std::unordered_set<const Definition*> seen;
  for (const auto& definition : definitions_) all.push_back(definition.get());
  const auto collect = [&](const Entities& entities) {
    for (const auto* list : {&entities.groups(), &entities.images()}) {
      for (const auto& instance : *list) {
        if (seen.insert(instance->definition()).second) all.push_back(instance->definition());
      }
    }
  };
  collect(*root_);
  for (std::size_t i = 0; i < all.size(); ++i) collect(*all[i]->entities);
  return all;
}

Entity* Model::findEntity(const std::function<bool(const Entity&)>& wanted) const {
  const auto among = [&](const auto& list) -> Entity* {
    const auto at =
        std::find_if(list.begin(), list.end(), [&](const auto& e) { return wanted(*e); });
    return at == list.end() ? nullptr : &**at;
  };
  const auto inside = [&](const Entities& e) {
    Entity* found = among(e.instances());
    if (found == nullptr) found = among(e.groups());
    if (found == nullptr) found = among(e.images());
    if (found == nullptr) found = among(e.faces());
    return found != nullptr ? found : among(e.edges());
  };
  const std::vector<Definition*> definitions = allDefinitions();
  for (Entity* found :
       {among(materials_), among(layers_), among(folders_), among(definitions), inside(*root_)}) {
    if (found != nullptr) return found;
  }
  for (const Definition* definition : definitions) {
    if (Entity* found = inside(*definition->entities)) return found;
  }
  return nullptr;
}

Material* Model::findMaterial(const std::string& wanted) const {
  return findIn(materialsByName_, wanted);
}
Layer* Model::findLayer(const std::string& wanted) const {
  return findIn(layersByName_, wanted);
}
Definition* Model::findDefinition(const std::string& wanted) const {
  return findIn(definitionsByName_, wanted);
}
std::string Model::freeMaterialName(const std::string& wish) const {
  return freeName(materialsByName_, wish);
}
std::string Model::freeDefinitionName(const std::string& wish) const {
  return freeName(definitionsByName_, wish);
}

}  // namespace modelhost
