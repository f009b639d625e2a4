#include "model/Material.h"

#include "model/Model.h"

namespace modelhost {

Colorize Material::colorize() const {
  if (!colorized()) return {};
  if (deltas) return {*deltas, colorizeType};
  if (!color) return {};
  return {deltasBetween(meanColor(*texture->pixels), *color), colorizeType};
}

std::shared_ptr<const Pixels> Material::shownPixels() const {
  if (!texture) return nullptr;
  return colorized() ? std::make_shared<Pixels>(colorizedCopy(*texture->pixels, colorize()))
                     : texture->pixels;
}

SUColor Material::shownColor() const {
  if (color && (!texture || colorized())) return *color;
  if (texture) return meanColor(*texture->pixels);
  return {255, 255, 255, 255};
}

void Material::setTexture(std::unique_ptr<Texture> with) {
  texture = std::move(with);
  if (texture) {
    texture->material = this;
    if (model() != nullptr) model()->adopt(*texture);
    if (type == SUMaterialType_Colored) type = SUMaterialType_Textured;
  } else {
    type = SUMaterialType_Colored;
  }
}

}  // namespace modelhost
