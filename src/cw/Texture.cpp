#include "cw/Texture.h"

#include <cstdio>

namespace CW {

namespace {

constexpr char kCopyPath[] = "/tmp/tmptexture";

struct Dimensions {
  size_t width = 0;
  size_t height = 0;
  double s_scale = 0;
  double t_scale = 0;
};

Dimensions dimensions_of(SUTextureRef su_texture) {
  Dimensions d;
  SUTextureGetDimensions(su_texture, &d.width, &d.height, &d.s_scale, &d.t_scale);
  return d;
}

SUEntityRef create(const char* path, double s_scale, double t_scale) {
  SUTextureRef su_texture = SU_INVALID;
  SUTextureCreateFromFile(&su_texture, path, s_scale, t_scale);
  return SUTextureToEntity(su_texture);
}

}  // namespace

Texture::Texture(const std::string& path, double s_scale, double t_scale)
    : Entity(create(path.c_str(), s_scale, t_scale), false) {}

Texture::Texture(SUTextureRef su_texture) : Entity(SUTextureToEntity(su_texture)) {}

Texture::Texture(const Texture& other) : Entity(other) {
  if (!other.owns()) return;
  Texture copied = other.copy();
  swap(copied);
}

Texture& Texture::operator=(Texture other) noexcept {
  swap(other);
  return *this;
}

double Texture::s_scale() const {
  require_valid(is_null(), "Texture", "s_scale");
  return dimensions_of(ref()).s_scale;
}

double Texture::t_scale() const {
  require_valid(is_null(), "Texture", "t_scale");
  return dimensions_of(ref()).t_scale;
}

Texture Texture::copy() const {
  require_valid(is_null(), "Texture", "copy");
  Texture copied;
  if (SUTextureWriteToFile(ref(), kCopyPath) != SU_ERROR_NONE) return copied;
  copied.reset(create(kCopyPath, s_scale(), t_scale()), false);
  std::remove(kCopyPath);
  if (!copied.is_null()) copied.copy_attributes_from(*this);
  return copied;
}

}  // namespace CW
