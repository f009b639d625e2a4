// The model: what is in it and who has which id.
#pragma once

#include <cstdint>
#include <functional>
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
#include "model/Recorder.h"
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
  // What is in the folder is where the folder was.
  void remove(LayerFolder& folder);

  // With those of groups and images, each once.
  std::vector<Definition*> allDefinitions() const;
  // The first material, layer, folder, definition or drawing element that is wanted, or null.
  Entity* findEntity(const std::function<bool(const Entity&)>& wanted) const;
  Material* findMaterial(const std::string& name) const;
  Layer* findLayer(const std::string& name) const;
  Definition* findDefinition(const std::string& name) const;
  // `wish`, or with the first number behind it that makes it unlike every name in the list.
  std::string freeMaterialName(const std::string& wish) const;
  std::string freeDefinitionName(const std::string& wish) const;

  // From now on changes are recorded.
  void watch();
  // Null when the model is not watched or its recorder is paused.
  Recorder* recorder() const { return recorder_ && !recorder_->paused ? recorder_.get() : nullptr; }
  // Null when the model is not watched.
  Recorder* watcher() const { return recorder_.get(); }

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
  template <class T>
  using Names = std::map<std::string, T*>;
  template <class T>
  void enlist(std::vector<std::unique_ptr<T>>& list, std::unique_ptr<T> thing, Names<T>* names);
  template <class T>
  void drop(std::vector<std::unique_ptr<T>>& list, const T& thing, Names<T>* names);
  template <class T>
  void setName(Names<T>& names, T& thing, std::string to);

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
  // Last, so that they go first: what they hold points into all of the above.
  std::unique_ptr<Entities> root_;
  std::unique_ptr<Recorder> recorder_;
};

}  // namespace modelhost
