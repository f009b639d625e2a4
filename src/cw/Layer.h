#pragma once

#include "cw/Entity.h"

namespace CW {

class Layer : public Entity {
 public:
  // Makes a layer that no model has yet.
  Layer();
  Layer(SULayerRef su_layer);
  Layer(const Layer& other);
  Layer(Layer&&) noexcept = default;
  Layer& operator=(Layer other) noexcept;

  SULayerRef ref() const { return SULayerFromEntity(entity_ref()); }

  std::string name() const;
  void name(const std::string& name);
};

}  // namespace CW
