#include "export/TextureConversion.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "support/Switches.h"

// Pixels are handled as little-endian 32-bit words, byte 0 lowest, in loops that the compiler
// vectorises.

namespace quellix {

namespace {

constexpr std::uint32_t kOpaque = 0xFF000000u;
constexpr std::uint32_t kColors = 0x00FFFFFFu;

std::uint32_t Load(const std::uint8_t* bytes) {
  std::uint32_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

void Store(std::uint8_t* bytes, std::uint32_t word) {
  std::memcpy(bytes, &word, sizeof word);
}

template <bool exchange>
std::uint32_t Ordered(std::uint32_t pixel) {
  if constexpr (!exchange) return pixel;
  return (pixel & 0xFF00FF00u) | ((pixel & 0xFFu) << 16) | ((pixel >> 16) & 0xFFu);
}

template <bool exchange>
void CopyOpaque(const std::uint8_t* source, std::uint8_t* target, std::uint64_t pixels) {
  for (std::uint64_t i = 0; i < pixels; ++i) {
    Store(target + 4 * i, Ordered<exchange>(Load(source + 4 * i)) | kOpaque);
  }
}

template <bool exchange>
void CopyKeepingAlpha(const std::uint8_t* source, std::uint8_t* target, std::uint64_t pixels) {
  for (std::uint64_t i = 0; i < pixels; ++i) {
    Store(target + 4 * i, Ordered<exchange>(Load(source + 4 * i)));
  }
}

template <bool exchange>
void CopyWithAlphaOf(const std::uint8_t* source, const std::uint8_t* alpha, std::uint8_t* target,
                     std::uint64_t pixels) {
  for (std::uint64_t i = 0; i < pixels; ++i) {
    const std::uint32_t color = Ordered<exchange>(Load(source + 4 * i)) & kColors;
    Store(target + 4 * i, color | (Load(alpha + 4 * i) & kOpaque));
  }
}

// Four pixels as they are sent: 16 bytes.
using FourPixels = std::uint8_t __attribute__((vector_size(16)));

constexpr FourPixels kFourOpaque = {0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255};

// The first 12 of 16 bytes as four pixels, in one shuffle of bytes and one word operation: pixels
// of 3 bytes lie across the words of the loops above.
template <bool exchange>
FourPixels Opaque24(FourPixels bytes) {
  if constexpr (exchange) {
    bytes = __builtin_shufflevector(bytes, bytes, 2, 1, 0, 0, 5, 4, 3, 0, 8, 7, 6, 0, 11, 10, 9, 0);
  } else {
    bytes = __builtin_shufflevector(bytes, bytes, 0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0);
  }
  return bytes | kFourOpaque;
}

template <bool exchange>
void ExpandFrom24(const std::uint8_t* source, std::uint8_t* target, std::uint64_t pixels) {
  std::uint64_t i = 0;
  // Sixteen bytes are read for each twelve that are used, so the last pixels are left to the end.
  for (; i + 6 <= pixels; i += 4) {
    FourPixels bytes;
    std::memcpy(&bytes, source + 3 * i, sizeof bytes);
    bytes = Opaque24<exchange>(bytes);
    std::memcpy(target + 4 * i, &bytes, sizeof bytes);
  }
  for (; i < pixels; ++i) {
    const std::uint8_t* p = source + 3 * i;
    const std::uint32_t color = p[0] | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16;
    Store(target + 4 * i, Ordered<exchange>(color) | kOpaque);
  }
}

template <bool exchange>
void Convert(const RawTextureData& block, ConvertedTexture& texture, std::uint64_t pixels) {
  const bool keepsAlpha =
      block.mode == TextureMode::Plain && block.bitsPerPixel != 24 && block.useAlpha;
  if (keepsAlpha && !exchange) {
    texture.bytes = block.pixels.data();
    return;
  }
  texture.storage = PixelBuffer(texture.size);
  std::uint8_t* target = texture.storage.Data();
  texture.bytes = target;
  if (block.mode == TextureMode::Plain && block.bitsPerPixel == 24) {
    ExpandFrom24<exchange>(block.pixels.data(), target, pixels);
  } else if (keepsAlpha) {
    CopyKeepingAlpha<exchange>(block.pixels.data(), target, pixels);
  } else if (block.mode == TextureMode::Colorized && block.useAlpha &&
             block.alphaSource.size() == block.pixels.size()) {
    CopyWithAlphaOf<exchange>(block.pixels.data(), block.alphaSource.data(), target, pixels);
  } else {
    CopyOpaque<exchange>(block.pixels.data(), target, pixels);
  }
}

// Where one target row or column lies among the source's.
struct Sample {
  std::uint64_t first;
  std::uint64_t second;
  float weight;  // of the second
};

std::vector<Sample> Samples(std::uint64_t source, std::uint64_t target) {
  std::vector<Sample> samples(target);
  for (std::uint64_t i = 0; i < target; ++i) {
    const float at =
        (static_cast<float>(i) + 0.5f) * static_cast<float>(source) / static_cast<float>(target) -
        0.5f;
    auto first = static_cast<std::int64_t>(at);
    float weight = at - static_cast<float>(first);
    if (first < 0) {
      first = 0;
      weight = 0.0f;
    }
    const auto from = std::min(static_cast<std::uint64_t>(first), source - 1);
    samples[i] = {from, std::min(from + 1, source - 1), weight};
  }
  return samples;
}

void DownscaleRow(const std::uint8_t* upper, const std::uint8_t* lower, float wy,
                  const std::vector<Sample>& columns, std::uint8_t* target) {
  const float vy = 1.0f - wy;
  for (const Sample& column : columns) {
    const std::uint8_t* upper0 = upper + 4 * column.first;
    const std::uint8_t* upper1 = upper + 4 * column.second;
    const std::uint8_t* lower0 = lower + 4 * column.first;
    const std::uint8_t* lower1 = lower + 4 * column.second;
    const float wx = column.weight;
    const float vx = 1.0f - wx;
    for (int c = 0; c < 4; ++c) {
      const float value =
          static_cast<float>(upper1[c]) * wx * vy + static_cast<float>(upper0[c]) * vx * vy +
          static_cast<float>(lower0[c]) * vx * wy + static_cast<float>(lower1[c]) * wx * wy + 0.5f;
      target[c] = static_cast<std::uint8_t>(static_cast<std::int32_t>(value));
    }
    target += 4;
  }
}

// The brightness of a row's pixels, and of the first one once more behind the last.
void Brightness(const std::uint8_t* row, std::uint64_t width, std::int32_t* brightness) {
  for (std::uint64_t x = 0; x < width; ++x) {
    const std::uint32_t pixel = Load(row + 4 * x);
    const std::uint32_t sum = (pixel & 0xFFu) + ((pixel >> 8) & 0xFFu) + ((pixel >> 16) & 0xFFu);
    brightness[x] = static_cast<std::int32_t>(sum / 3);
  }
  brightness[width] = brightness[0];
}

// Truncated toward zero and clamped; clamping first gives the same for every number.
std::uint32_t SlopeByte(std::int32_t slope, float scale) {
  const float value = static_cast<float>(slope) * scale + 128.0f;
  return static_cast<std::uint32_t>(
      static_cast<std::int32_t>(std::min(std::max(value, 0.0f), 255.0f)));
}

}  // namespace

ConvertedTexture ConvertTexturePixels(const RawTextureData& block, bool exchangeRedAndBlue) {
  ConvertedTexture texture;
  if (!block.valid) return texture;
  const std::uint64_t pixels = block.width * block.height;
  texture.width = block.width;
  texture.height = block.height;
  texture.stride = block.width * 4;
  texture.size = pixels * 4;
  if (texture.size == 0) return texture;
  if (exchangeRedAndBlue) {
    Convert<true>(block, texture, pixels);
  } else {
    Convert<false>(block, texture, pixels);
  }
  DownscaleTexture(texture);
  return texture;
}

void DownscaleTexture(ConvertedTexture& texture) {
  const std::uint64_t longer = std::max(texture.width, texture.height);
  if (TexDownscaleDisabled() || longer <= kMaxTextureSide || texture.bytes == nullptr) return;

  const float scale = static_cast<float>(kMaxTextureSide) / static_cast<float>(longer);
  const auto scaled = [scale](std::uint64_t side) {
    return std::max<std::uint64_t>(1, static_cast<std::uint64_t>(static_cast<float>(side) * scale));
  };
  const std::uint64_t width = scaled(texture.width);
  const std::uint64_t height = scaled(texture.height);
  const std::vector<Sample> rows = Samples(texture.height, height);
  const std::vector<Sample> columns = Samples(texture.width, width);
  PixelBuffer shrunk(width * height * 4);
  for (std::uint64_t y = 0; y < height; ++y) {
    DownscaleRow(texture.bytes + rows[y].first * texture.stride,
                 texture.bytes + rows[y].second * texture.stride, rows[y].weight, columns,
                 shrunk.Data() + y * width * 4);
  }
  texture.width = width;
  texture.height = height;
  texture.stride = width * 4;
  texture.size = width * height * 4;
  texture.storage = std::move(shrunk);
  texture.bytes = texture.storage.Data();
}

PixelBuffer MakeNormalMapFromBase(const ConvertedTexture& base, float bumpDepth) {
  if (base.bytes == nullptr) return {};
  PixelBuffer map(base.size);
  const float scale = bumpDepth * 0.1f;
  const std::uint64_t width = base.width;
  std::vector<std::int32_t> here(width + 1);
  std::vector<std::int32_t> below(width + 1);
  Brightness(base.bytes, width, here.data());
  for (std::uint64_t y = 0; y < base.height; ++y) {
    const std::uint64_t next = y + 1 < base.height ? y + 1 : 0;
    Brightness(base.bytes + next * base.stride, width, below.data());
    std::uint8_t* target = map.Data() + y * base.stride;
    const std::int32_t* upper = here.data();
    const std::int32_t* lower = below.data();
    for (std::uint64_t x = 0; x < width; ++x) {
      const std::uint32_t dx = SlopeByte(upper[x + 1] - upper[x], scale);
      const std::uint32_t dy = SlopeByte(lower[x] - upper[x], scale);
      Store(target + 4 * x, dx | dy << 8 | 0xFFFF0000u);
    }
    here.swap(below);
  }
  return map;
}

}  // namespace quellix
