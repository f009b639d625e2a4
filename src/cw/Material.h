#pragma once

#include "cw/Entity.h"

namespace CW {

class Texture;

class Material : public Entity {
 public:
  // Makes a material that no model has yet.
  Material();
  Material(SUMaterialRef su_material);
  Material(const Material& other);
  Material(Material&&) noexcept = default;
  Material& operator=(Material other) noexcept;

  SUMaterialRef ref() const { return SUMaterialFromEntity(entity_ref()); }

  // Empty for a null wrapper.
  std::string name() const;
  void name(const std::string& name);
  SUMaterialType type() const;
  void type(SUMaterialType type);
  SUColor color() const;
  void color(SUColor color);
  // 0 is clear, 1 is opaque; it counts only while `use_alpha` holds.
  double opacity() const;
  // Makes the opacity count, too.
  void opacity(double opacity);
  bool use_alpha() const;
  // A null wrapper when there is none.
  Texture TEXTURE() const;
  // The material takes the texture over.
  void texture(Texture& texture);
};

}  // namespace CW
