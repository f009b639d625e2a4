#include "import/ScenePictures.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <numbers>

#include "core/Paths.h"

namespace modelhost {

namespace {

void put(Pixels& pixels, std::size_t x, std::size_t y, const SUColor& color) {
  std::uint8_t* out = pixels.bytes.data() + (y * pixels.width + x) * pixels.bytesPerPixel();
  if (pixels.bitsPerPixel == 8) {
    out[0] =
        static_cast<std::uint8_t>((color.red * 299 + color.green * 587 + color.blue * 114) / 1000);
    return;
  }
  out[0] = color.blue;
  out[1] = color.green;
  out[2] = color.red;
  if (pixels.bitsPerPixel == 32) out[3] = color.alpha;
}

SUColor blend(const SUColor& a, const SUColor& b, double t) {
  const auto part = [&](SUByte from, SUByte to) {
    return static_cast<SUByte>(from + (to - from) * std::clamp(t, 0.0, 1.0) + 0.5);
  };
  return {part(a.red, b.red), part(a.green, b.green), part(a.blue, b.blue), part(a.alpha, b.alpha)};
}

// Numbers in 0..1 that depend on nothing but their arguments.
double noiseAt(std::int64_t x, std::int64_t y) {
  auto h = static_cast<std::uint64_t>(x) * 0x9e3779b97f4a7c15u ^
           static_cast<std::uint64_t>(y) * 0xc2b2ae3d27d4eb4fu;
  h = (h ^ h >> 29) * 0xbf58476d1ce4e5b9u;
  h ^= h >> 32;
  return static_cast<double>(h & 0xffff) / 65535;
}

// Noise that repeats after `cells` and changes gently.
double smoothNoise(double u, double v, std::int64_t cells) {
  const double x = u * static_cast<double>(cells);
  const double y = v * static_cast<double>(cells);
  const auto x0 = static_cast<std::int64_t>(std::floor(x));
  const auto y0 = static_cast<std::int64_t>(std::floor(y));
  const double fx = x - static_cast<double>(x0);
  const double fy = y - static_cast<double>(y0);
  const auto at = [&](std::int64_t i, std::int64_t j) {
    return noiseAt((i % cells + cells) % cells, (j % cells + cells) % cells);
  };
  const double low = at(x0, y0) * (1 - fx) + at(x0 + 1, y0) * fx;
  const double high = at(x0, y0 + 1) * (1 - fx) + at(x0 + 1, y0 + 1) * fx;
  return low * (1 - fy) + high * fy;
}

// How much of the second colour a pattern shows at (u, v), both in 0..1.
double brick(double u, double v, double cells) {
  const double row = v * cells * 2;
  const double x = u * cells + (static_cast<int>(row) % 2 == 0 ? 0.0 : 0.5);
  const double fx = x - std::floor(x);
  const double fy = row - std::floor(row);
  if (fx < 0.04 || fx > 0.96 || fy < 0.08 || fy > 0.92) return 1;
  return 0.25 * noiseAt(static_cast<std::int64_t>(std::floor(x)) % static_cast<int>(cells),
                        static_cast<std::int64_t>(row));
}

double wood(double u, double v, std::int64_t cells) {
  const double bent = v * static_cast<double>(cells) + 0.8 * smoothNoise(u, v, 4);
  const double rings = 0.5 + 0.5 * std::sin(bent * 2 * std::numbers::pi);
  return 0.7 * rings + 0.3 * smoothNoise(u * 0.25, v, 64);
}

double patternAt(const std::string& pattern, double u, double v, std::int64_t cells) {
  const auto n = static_cast<double>(cells);
  const auto cell = [&](double t) { return static_cast<std::int64_t>(t * n); };
  if (pattern == "checker") return (cell(u) + cell(v)) % 2 == 0 ? 0 : 1;
  if (pattern == "stripes") return cell(u) % 2 == 0 ? 0 : 1;
  if (pattern == "gradient") return v;
  if (pattern == "brick") return brick(u, v, n);
  if (pattern == "wood") return wood(u, v, cells);
  if (pattern == "noise") return smoothNoise(u, v, cells);
  if (pattern == "disc") return std::hypot(u - 0.5, v - 0.5) < 0.5 ? 0 : 1;
  return 0;
}

std::size_t side(const SceneNode& node) {
  const double n = node.positive();
  if (n > 8192 || n != std::floor(n)) node.fail("a whole number to 8192 is wanted here");
  return static_cast<std::size_t>(n);
}

std::size_t bitsOf(const SceneNode& node, bool transparent) {
  const auto bits = node.get("bits");
  if (!bits) return transparent ? 32 : 24;
  const double n = bits->number();
  if (n != 8 && n != 24 && n != 32) bits->fail("8, 24 or 32 is wanted here");
  return static_cast<std::size_t>(n);
}

Pixels fromPattern(const SceneNode& node) {
  static constexpr const char* kPatterns[] = {"solid", "checker", "stripes", "gradient",
                                              "brick", "wood",    "noise",   "disc"};
  const SceneNode patternNode = node.at("pattern");
  const std::string pattern = patternNode.text();
  if (std::find(std::begin(kPatterns), std::end(kPatterns), pattern) == std::end(kPatterns)) {
    patternNode.fail("there is no pattern of this name");
  }
  const SceneNode colors = node.at("colors");
  const std::size_t given = colors.size();
  if (given < 1 || given > 2) colors.fail("one or two colours are wanted here");
  const SUColor first = colors.item(0).color();
  const SUColor second = given == 2 ? colors.item(1).color() : first;
  std::size_t width = 64;
  std::size_t height = 64;
  if (const auto pixels = node.get("pixels")) {
    if (pixels->size() != 2) pixels->fail("width and height are wanted here");
    width = side(pixels->item(0));
    height = side(pixels->item(1));
  }
  const auto cells = node.get("cells");
  const auto n = cells ? static_cast<std::int64_t>(side(*cells)) : 4;
  Pixels result = blankPixels(width, height, bitsOf(node, first.alpha < 255 || second.alpha < 255));
  for (std::size_t y = 0; y < height; ++y) {
    const double v = (static_cast<double>(y) + 0.5) / static_cast<double>(height);
    for (std::size_t x = 0; x < width; ++x) {
      const double u = (static_cast<double>(x) + 0.5) / static_cast<double>(width);
      put(result, x, y, blend(first, second, patternAt(pattern, u, v, n)));
    }
  }
  return result;
}

// Rows of letters from the top down, and what colour each letter is.
Pixels fromRows(const SceneNode& node) {
  const SceneNode rows = node.at("rows");
  std::map<char, SUColor> palette;
  bool transparent = false;
  const SceneNode paletteNode = node.at("palette");
  paletteNode.each([&](const std::string& letter, const SceneNode& color) {
    if (letter.size() != 1) paletteNode.fail("its keys are single letters");
    palette[letter[0]] = color.color();
    transparent = transparent || palette[letter[0]].alpha < 255;
  });
  const std::size_t height = rows.size();
  const std::size_t width = height == 0 ? 0 : rows.item(0).text().size();
  if (width == 0 || width > 8192 || height > 8192)
    rows.fail("1 to 8192 rows of letters are wanted");
  Pixels result = blankPixels(width, height, bitsOf(node, transparent));
  for (std::size_t i = 0; i < height; ++i) {
    const SceneNode rowNode = rows.item(i);
    const std::string row = rowNode.text();
    if (row.size() != width) rowNode.fail("all rows are of one length");
    for (std::size_t x = 0; x < width; ++x) {
      const auto color = palette.find(row[x]);
      if (color == palette.end()) {
        rowNode.fail(std::string("\"") + row[x] + "\" is not in the palette");
      }
      put(result, x, height - 1 - i, color->second);
    }
  }
  return result;
}

}  // namespace

ScenePicture readScenePicture(const SceneNode& node, const std::string& folder) {
  if (node.isString() || node.has("file")) {
    const SceneNode fileNode = node.isString() ? node : node.at("file");
    const std::filesystem::path path = filePath(folder) / filePath(fileNode.text());
    auto pixels = readPicture(utf8(path));
    if (!pixels) fileNode.fail("\"" + utf8(path) + "\" cannot be read as a picture");
    return {std::move(*pixels), utf8(path.filename())};
  }
  ScenePicture picture;
  picture.pixels = node.has("rows") ? fromRows(node) : fromPattern(node);
  if (const auto name = node.get("name")) picture.fileName = name->text();
  return picture;
}

}  // namespace modelhost
