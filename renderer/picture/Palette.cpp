#include "picture/Palette.h"

#include <algorithm>
#include <cmath>

namespace kvpicture {

namespace {

const glm::vec3 kDay(0.55f, 0.70f, 0.88f);  // as on the screen

glm::vec3 ToLight(const glm::vec3& coded) {
  glm::vec3 light;
  for (int i = 0; i < 3; ++i) {
    const float c = std::clamp(coded[i], 0.f, 1.f);
    light[i] = c <= 0.04045f ? c / 12.92f : std::pow((c + 0.055f) / 1.055f, 2.4f);
  }
  return light;
}

}  // namespace

Palette PaletteOf(const Model& model) {
  const glm::vec3 sky = ToLight(model.background.value_or(kDay));
  // Even a black background leaves some light in the room, or nothing would be seen.
  const glm::vec3 lit = glm::max(sky, glm::vec3(0.12f));
  Palette palette;
  palette.zenith = lit * 0.92f;
  palette.horizon = glm::mix(lit, glm::vec3(1), 0.62f);
  palette.ground = glm::mix(palette.horizon * 0.45f, glm::vec3(0.40f, 0.375f, 0.33f), 0.75f);
  return palette;
}

}  // namespace kvpicture
