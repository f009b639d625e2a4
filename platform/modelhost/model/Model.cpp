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

template <class T>
void eraseFrom(std::vector<std::unique_ptr<T>>& list, const T& thing) {
  std::erase_if(list, [&](const auto& item) { return item.get() == &thing; });
}

}  // namespace

RenderingOptions::RenderingOptions() : Object(Kind::RenderingOptions) {
  values["BackgroundColor"] = SUColor{255, 255, 255, 255};
  values["FaceFrontColor"] = SUColor{255, 255, 255, 255};
  values["FaceBackColor"] = SUColor{163, 184, 204, 255};
  values["GroundColor"] = SUColor{210, 208, 185, 255};
  values["SkyColor"] = SUColor{163, 204, 230, 255};
  values["DrawHidden"] = false;
  values["Texture"] = true;
}

Model::Model() : Object(Kind::Model), root_(std::make_unique<Entities>(nullptr)) {
  auto layer = std::make_unique<Layer>();
  layer->name = "Layer0";
  add(std::move(layer));
  root_->attach(*this);
}

Model::~Model() {
  root_.reset();
  // Definitions may place each other in any order: empty them all before any of them goes.
  for (const auto& definition : definitions_) definition->entities->clear();
}

void Model::adopt(Entity& entity) {
  if (entity.model_ != nullptr) return;
  entity.model_ = this;
  entity.id_ = nextId_++;
  if (entity.persistentId_ == 0) {
    while (chosenIds_.contains(nextPersistentId_)) ++nextPersistentId_;
    entity.persistentId_ = nextPersistentId_++;
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
  adopt(*material);
  materials_.push_back(std::move(material));
  return true;
}

bool Model::add(std::unique_ptr<Layer> layer) {
  if (!layersByName_.emplace(layer->name, layer.get()).second) return false;
  adopt(*layer);
  layers_.push_back(std::move(layer));
  return true;
}

void Model::add(std::unique_ptr<LayerFolder> folder) {
  adopt(*folder);
  folders_.push_back(std::move(folder));
}

void Model::add(std::unique_ptr<Definition> definition) {
  definition->name = freeDefinitionName(definition->name.empty() ? "Component" : definition->name);
  definitionsByName_.emplace(definition->name, definition.get());
  adopt(*definition);
  definitions_.push_back(std::move(definition));
}

bool Model::rename(Material& material, const std::string& to) {
  if (material.name == to) return true;
  if (!materialsByName_.emplace(to, &material).second) return false;
  materialsByName_.erase(material.name);
  material.name = to;
  return true;
}

bool Model::rename(Layer& layer, const std::string& to) {
  if (layer.name == to) return true;
  if (!layersByName_.emplace(to, &layer).second) return false;
  layersByName_.erase(layer.name);
  layer.name = to;
  return true;
}

void Model::rename(Definition& definition, const std::string& to) {
  if (definition.name == to) return;
  definitionsByName_.erase(definition.name);
  definition.name = freeDefinitionName(to);
  definitionsByName_.emplace(definition.name, &definition);
}

void Model::remove(Material& material) {
  materialsByName_.erase(material.name);
  eraseFrom(materials_, material);
}

bool Model::remove(Layer& layer) {
  if (&layer == &defaultLayer()) return false;
  if (layer.folder != nullptr) std::erase(layer.folder->layers, &layer);
  layersByName_.erase(layer.name);
  eraseFrom(layers_, layer);
  return true;
}

void Model::remove(Definition& definition) {
  const std::vector<Instance*> instances = definition.instances;
  for (const Instance* instance : instances) {
    if (instance->parent != nullptr) instance->parent->erase({instance});
  }
  definitionsByName_.erase(definition.name);
  eraseFrom(definitions_, definition);
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
