// Materials and their textures.
#pragma once

#include <SketchUpAPI/color.h>
#include <SketchUpAPI/model/material.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "model/Entity.h"
#include "model/UvMapping.h"
#include "pixels/Colorize.h"
#include "pixels/Pixels.h"

namespace modelhost {

class Texture : public Entity {
 public:
  Texture(std::shared_ptr<const Pixels> image, const TileSize& size)
      : Entity(Kind::Texture), pixels(std::move(image)), tile(size) {
    useAlpha = pixels->bitsPerPixel == 32;
  }
  std::shared_ptr<const Pixels> pixels;
  TileSize tile;
  std::string fileName;
  bool useAlpha;
  // Null while the texture belongs to its maker.
  Material* material = nullptr;
};

// One measure of a metallic-roughness material.
struct Channel {
  bool enabled = false;
  double factor;
  std::shared_ptr<Texture> texture;
};

class Material : public Entity {
 public:
  Material() : Entity(Kind::Material) {}

  bool colorized() const { return texture && type == SUMaterialType_ColorizedTexture; }
  // How the texture's colours are changed; nothing for one that is shown as it is.
  Colorize colorize() const;
  // The texture as it is seen.
  std::shared_ptr<const Pixels> shownPixels() const;
  // The colour; of a texture shown as it is, its mean.
  SUColor shownColor() const;
  void setTexture(std::unique_ptr<Texture> with);

  std::string name;
  SUMaterialType type = SUMaterialType_Colored;
  std::optional<SUColor> color;
  double opacity = 1;
  bool useOpacity = false;
  std::shared_ptr<Texture> texture;
  SUMaterialColorizeType colorizeType = SUMaterialColorizeType_Shift;
  // Overrides what follows from the colour.
  std::optional<ColorDeltas> deltas;

  // Follows from the channels when not set.
  std::optional<SUMaterialWorkflow> workflow;
  Channel metalness{false, 0, nullptr};
  Channel roughness{false, 1, nullptr};
  Channel normal{false, 1, nullptr};
  SUMaterialNormalMapStyle normalStyle = SUMaterialNormalMapStyle_OpenGL;

  // Whether it is in the model's list or still belongs to its maker.
  bool listed = false;
};

}  // namespace modelhost
