#include "pixels/Pixels.h"

#include <algorithm>
#include <cmath>

namespace modelhost {

SUColor Pixels::color(std::size_t x, std::size_t y) const {
  const std::uint8_t* p = at(x, y);
  if (bitsPerPixel == 8) return {p[0], p[0], p[0], 255};
  return {p[2], p[1], p[0], bitsPerPixel == 32 ? p[3] : std::uint8_t{255}};
}

Pixels blankPixels(std::size_t width, std::size_t height, std::size_t bitsPerPixel) {
  Pixels pixels{width, height, bitsPerPixel, {}};
  pixels.bytes.resize(width * height * pixels.bytesPerPixel());
  return pixels;
}

Pixels to32Bits(const Pixels& source) {
  if (source.bitsPerPixel == 32) return source;
  Pixels result = blankPixels(source.width, source.height, 32);
  const std::size_t step = source.bytesPerPixel();
  const std::uint8_t* from = source.bytes.data();
  std::uint8_t* to = result.bytes.data();
  for (std::size_t i = 0; i < source.width * source.height; ++i, from += step, to += 4) {
    to[0] = from[0];
    to[1] = from[step == 1 ? 0 : 1];
    to[2] = from[step == 1 ? 0 : 2];
    to[3] = 255;
  }
  return result;
}

Pixels resized(const Pixels& source, std::size_t width, std::size_t height) {
  Pixels result = blankPixels(width, height, source.bitsPerPixel);
  const std::size_t step = source.bytesPerPixel();
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      std::copy_n(source.at(x * source.width / width, y * source.height / height), step,
                  result.bytes.data() + (y * width + x) * step);
    }
  }
  return result;
}

SUColor meanColor(const Pixels& pixels) {
  const std::size_t n = pixels.width * pixels.height;
  if (n == 0) return {255, 255, 255, 255};
  std::size_t sums[4] = {};
  for (std::size_t y = 0; y < pixels.height; ++y) {
    for (std::size_t x = 0; x < pixels.width; ++x) {
      const SUColor c = pixels.color(x, y);
      sums[0] += c.red;
      sums[1] += c.green;
      sums[2] += c.blue;
      sums[3] += c.alpha;
    }
  }
  const auto mean = [&](int i) { return static_cast<SUByte>((sums[i] + n / 2) / n); };
  return {mean(0), mean(1), mean(2), mean(3)};
}

SUColor sampleRepeated(const Pixels& pixels, double u, double v) {
  const auto place = [](double t, std::size_t size, std::size_t& low, std::size_t& high) {
    const double at = (t - std::floor(t)) * static_cast<double>(size) - 0.5;
    const double floor = std::floor(at);
    // `at` is in -0.5 .. size - 0.5.
    low = floor < 0 ? size - 1 : std::min(static_cast<std::size_t>(floor), size - 1);
    high = (low + 1) % size;
    return at - floor;
  };
  if (!std::isfinite(u) || !std::isfinite(v)) return {0, 0, 0, 255};
  std::size_t x0, x1, y0, y1;
  const double wx = place(u, pixels.width, x0, x1);
  const double wy = place(v, pixels.height, y0, y1);
  const SUColor c[4] = {pixels.color(x0, y0), pixels.color(x1, y0), pixels.color(x0, y1),
                        pixels.color(x1, y1)};
  const auto blend = [&](SUByte SUColor::*part) {
    const double low = c[0].*part * (1 - wx) + c[1].*part * wx;
    const double high = c[2].*part * (1 - wx) + c[3].*part * wx;
    return static_cast<SUByte>(low * (1 - wy) + high * wy + 0.5);
  };
  return {blend(&SUColor::red), blend(&SUColor::green), blend(&SUColor::blue),
          blend(&SUColor::alpha)};
}

}  // namespace modelhost
