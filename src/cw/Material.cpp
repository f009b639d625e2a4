#include "cw/Material.h"

#include "cw/String.h"
#include "cw/Texture.h"

namespace CW {

namespace {

SUEntityRef create() {
  SUMaterialRef su_material = SU_INVALID;
  SUMaterialCreate(&su_material);
  return SUMaterialToEntity(su_material);
}

}  // namespace

Material::Material() : Entity(create(), false) {}

Material::Material(SUMaterialRef su_material) : Entity(SUMaterialToEntity(su_material)) {}

Material::Material(const Material& other) : Entity(other) {
  if (!other.owns()) return;
  reset(create(), false);
  if (is_null()) return;
  name(other.name());
  color(other.color());
  if (other.use_alpha()) opacity(other.opacity());
  const Texture texture_of_other = other.TEXTURE();
  if (!texture_of_other.is_null()) {
    Texture copy = texture_of_other.copy();
    if (!copy.is_null()) texture(copy);
  }
  type(other.type());
  copy_attributes_from(other);
}

Material& Material::operator=(Material other) noexcept {
  swap(other);
  return *this;
}

std::string Material::name() const {
  return fetch_text([this](SUStringRef* su_name) { return SUMaterialGetName(ref(), su_name); });
}

void Material::name(const std::string& name) {
  require_valid(is_null(), "Material", "name");
  SUMaterialSetName(ref(), name.c_str());
}

SUMaterialType Material::type() const {
  require_valid(is_null(), "Material", "type");
  SUMaterialType type = SUMaterialType_Colored;
  SUMaterialGetType(ref(), &type);
  return type;
}

void Material::type(SUMaterialType type) {
  require_valid(is_null(), "Material", "type");
  SUMaterialSetType(ref(), type);
}

SUColor Material::color() const {
  require_valid(is_null(), "Material", "color");
  SUColor color = {};
  SUMaterialGetColor(ref(), &color);
  return color;
}

void Material::color(SUColor color) {
  require_valid(is_null(), "Material", "color");
  SUMaterialSetColor(ref(), &color);
}

double Material::opacity() const {
  require_valid(is_null(), "Material", "opacity");
  double opacity = 0;
  SUMaterialGetOpacity(ref(), &opacity);
  return opacity;
}

void Material::opacity(double opacity) {
  require_valid(is_null(), "Material", "opacity");
  SUMaterialSetUseOpacity(ref(), true);
  SUMaterialSetOpacity(ref(), opacity);
}

bool Material::use_alpha() const {
  require_valid(is_null(), "Material", "use_alpha");
  bool use = false;
  SUMaterialGetUseOpacity(ref(), &use);
  return use;
}

Texture Material::TEXTURE() const {
  require_valid(is_null(), "Material", "TEXTURE");
  SUTextureRef su_texture = SU_INVALID;
  SUMaterialGetTexture(ref(), &su_texture);
  return Texture(su_texture);
}

void Material::texture(Texture& texture) {
  require_valid(is_null(), "Material", "texture");
  if (SUMaterialSetTexture(ref(), texture.ref()) == SU_ERROR_NONE) texture.attach();
}

}  // namespace CW
