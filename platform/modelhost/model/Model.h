// The model: what is in it and who has which id.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "model/Components.h"
#include "model/Entities.h"
#include "model/Layer.h"
#include "model/Material.h"
#include "model/Value.h"

namespace modelhost {

class RenderingOptions : public Object {
 public:
  RenderingOptions();
  std::map<std::string, Value> values;
};

struct Camera {
  SUPoint3D eye;
  SUPoint3D target;
  SUVector3D up;
  // Vertical, in degrees.
  double fieldOfView;
};

class Model : public Object {
 public:
  static constexpr std::int64_t kLastChosenId = 1'000'000;

  Model();
  ~Model() override;

  // Makes an entity part of this model: it gets its ids, a layer, and so does what hangs on it.
  void adopt(Entity& entity);
  // False for an id that has been given out, or is not above 0. Ids up to kLastChosenId are never
  // given out by the model itself.
  bool setPersistentId(Entity& entity, std::int64_t id);

  // Take over what belonged to its maker. False when the name is taken.
  bool add(std::unique_ptr<Material> material);
  bool add(std::unique_ptr<Layer> layer);
  void add(std::unique_ptr<LayerFolder> folder);
  void add(std::unique_ptr<Definition> definition);
  // False when the name is taken; a definition gets a number instead.
  bool rename(Material& material, const std::string& to);
  bool rename(Layer& layer, const std::string& to);
  void rename(Definition& definition, const std::string& to);
  // Take things out of the model: what used them has none, is on the first layer, or goes.
  void remove(Material& material);
  bool remove(Layer& layer);
  void remove(Definition& definition);

  Material* findMaterial(const std::string& name) const;
  Layer* findLayer(const std::string& name) const;
  Definition* findDefinition(const std::string& name) const;
  // `wish`, or with the first number behind it that makes it unlike every name in the list.
  std::string freeMaterialName(const std::string& wish) const;
  std::string freeDefinitionName(const std::string& wish) const;

  Entities& root() { return *root_; }
  Layer& defaultLayer() { return *layers_.front(); }
  const std::vector<std::unique_ptr<Layer>>& layers() const { return layers_; }
  const std::vector<std::unique_ptr<LayerFolder>>& folders() const { return folders_; }
  const std::vector<std::unique_ptr<Material>>& materials() const { return materials_; }
  const std::vector<std::unique_ptr<Definition>>& definitions() const { return definitions_; }

  std::string name;
  std::string path;
  std::string title;
  RenderingOptions options;
  Dictionaries dictionaries;
  std::optional<Camera> camera;

 private:
  std::vector<std::unique_ptr<Material>> materials_;
  std::vector<std::unique_ptr<Layer>> layers_;
  std::vector<std::unique_ptr<LayerFolder>> folders_;
  std::vector<std::unique_ptr<Definition>> definitions_;
  std::map<std::string, Material*> materialsByName_;
  std::map<std::string, Layer*> layersByName_;
  std::map<std::string, Definition*> definitionsByName_;
  std::unordered_set<std::int64_t> chosenIds_;
  std::int64_t nextPersistentId_ = kLastChosenId + 1;
  std::int32_t nextId_ = 1;
  // Last, so that it goes first: what it holds points into all of the above.
  std::unique_ptr<Entities> root_;
};

}  // namespace modelhost
