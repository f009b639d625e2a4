// Layers and the folders they are sorted into.
#pragma once

#include <string>
#include <vector>

#include "model/Entity.h"

namespace modelhost {

class Layer : public Entity {
 public:
  Layer() : Entity(Kind::Layer) {}
  std::string name;
  bool visible = true;
  LayerFolder* folder = nullptr;
  Link<SUMaterialRef> material;
};

class LayerFolder : public Entity {
 public:
  LayerFolder() : Entity(Kind::LayerFolder) {}
  // Whether `other` is this folder or somewhere above it.
  bool isWithin(const LayerFolder& other) const {
    for (const LayerFolder* f = this; f != nullptr; f = f->parent) {
      if (f == &other) return true;
    }
    return false;
  }

  std::string name;
  bool visible = true;
  LayerFolder* parent = nullptr;
  std::vector<Layer*> layers;
  std::vector<LayerFolder*> folders;
};

}  // namespace modelhost
