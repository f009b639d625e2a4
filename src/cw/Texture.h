#pragma once

#include "cw/Entity.h"

namespace CW {

class Texture : public Entity {
 public:
  Texture() = default;
  // Makes a texture of an image file, not yet of a material. The scales are repeats per length
  // unit. Null when the file cannot be read.
  Texture(const std::string& path, double s_scale, double t_scale);
  Texture(SUTextureRef su_texture);
  Texture(const Texture& other);
  Texture(Texture&&) noexcept = default;
  Texture& operator=(Texture other) noexcept;

  SUTextureRef ref() const { return SUTextureFromEntity(entity_ref()); }

  double s_scale() const;
  double t_scale() const;
  // Another texture with the same image and scales, not attached. The image goes through a file of
  // one fixed name, so only one copy may be under way on a machine at a time.
  Texture copy() const;
};

}  // namespace CW
