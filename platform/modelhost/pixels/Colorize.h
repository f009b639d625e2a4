// How a texture takes on the colour of its material.
#pragma once

#include <SketchUpAPI/model/material.h>

#include "pixels/Pixels.h"

namespace modelhost {

// Hue in degrees, saturation and lightness in -1..1.
struct ColorDeltas {
  double hue = 0;
  double saturation = 0;
  double lightness = 0;
};

struct Colorize {
  ColorDeltas deltas;
  SUMaterialColorizeType type = SUMaterialColorizeType_Shift;
};

// What takes `from` to `to`.
ColorDeltas deltasBetween(const SUColor& from, const SUColor& to);
// Every pixel changed; 32 bits, opaque. A shift moves every hue, a tint gives all pixels the hue
// of the changed mean.
Pixels colorizedCopy(const Pixels& source, const Colorize& how);

}  // namespace modelhost
