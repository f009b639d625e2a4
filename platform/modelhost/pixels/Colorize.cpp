#include "pixels/Colorize.h"

#include <algorithm>
#include <cmath>

namespace modelhost {

namespace {

// Hue in degrees, the others in 0..1.
struct Hls {
  double hue = 0;
  double lightness = 0;
  double saturation = 0;
};

Hls toHls(const SUColor& color) {
  const double r = color.red / 255.0;
  const double g = color.green / 255.0;
  const double b = color.blue / 255.0;
  const double high = std::max({r, g, b});
  const double low = std::min({r, g, b});
  Hls hls;
  hls.lightness = (high + low) / 2;
  const double range = high - low;
  if (range <= 0) return hls;
  hls.saturation = range / (1 - std::abs(2 * hls.lightness - 1));
  if (high == r) {
    hls.hue = 60 * std::fmod((g - b) / range + 6, 6);
  } else if (high == g) {
    hls.hue = 60 * ((b - r) / range + 2);
  } else {
    hls.hue = 60 * ((r - g) / range + 4);
  }
  return hls;
}

SUColor toColor(const Hls& hls) {
  const double chroma = (1 - std::abs(2 * hls.lightness - 1)) * hls.saturation;
  const double sector = hls.hue / 60;
  const double second = chroma * (1 - std::abs(std::fmod(sector, 2) - 1));
  const double base = hls.lightness - chroma / 2;
  double rgb[3] = {0, 0, 0};
  // Which of red, green and blue is strongest and which second, by sixth of the circle.
  static constexpr int kOrder[6][2] = {{0, 1}, {1, 0}, {1, 2}, {2, 1}, {2, 0}, {0, 2}};
  const int* order = kOrder[static_cast<int>(sector) % 6];
  rgb[order[0]] = chroma;
  rgb[order[1]] = second;
  const auto byte = [&](double part) {
    return static_cast<SUByte>(std::clamp((part + base) * 255.0 + 0.5, 0.0, 255.0));
  };
  return {byte(rgb[0]), byte(rgb[1]), byte(rgb[2]), 255};
}

double turned(double hue) {
  const double rest = std::fmod(hue, 360.0);
  return rest < 0 ? rest + 360.0 : rest;
}

}  // namespace

ColorDeltas deltasBetween(const SUColor& from, const SUColor& to) {
  const Hls a = toHls(from);
  const Hls b = toHls(to);
  return {b.hue - a.hue, b.saturation - a.saturation, b.lightness - a.lightness};
}

Pixels colorizedCopy(const Pixels& source, const Colorize& how) {
  const double mean = toHls(meanColor(source)).hue;
  Pixels result = blankPixels(source.width, source.height, 32);
  std::uint8_t* out = result.bytes.data();
  for (std::size_t y = 0; y < source.height; ++y) {
    for (std::size_t x = 0; x < source.width; ++x, out += 4) {
      Hls hls = toHls(source.color(x, y));
      const bool tint = how.type == SUMaterialColorizeType_Tint;
      hls.hue = turned((tint ? mean : hls.hue) + how.deltas.hue);
      hls.saturation = std::clamp(hls.saturation + how.deltas.saturation, 0.0, 1.0);
      hls.lightness = std::clamp(hls.lightness + how.deltas.lightness, 0.0, 1.0);
      const SUColor color = toColor(hls);
      out[0] = color.blue;
      out[1] = color.green;
      out[2] = color.red;
      out[3] = 255;
    }
  }
  return result;
}

}  // namespace modelhost
