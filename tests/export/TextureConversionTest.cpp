// Pixels as they go over the wire, against values worked out by hand.

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "export/TextureConversion.h"

namespace quellix {
namespace {

using Bytes = std::vector<std::uint8_t>;

RawTextureData Block(TextureMode mode, bool useAlpha, std::uint64_t width, std::uint64_t height,
                     std::uint64_t bits, Bytes pixels, Bytes alphaSource = {}) {
  return {true, mode, useAlpha, width, height, bits, std::move(pixels), std::move(alphaSource)};
}

Bytes Of(const ConvertedTexture& texture) {
  return texture.bytes == nullptr ? Bytes() : Bytes(texture.bytes, texture.bytes + texture.size);
}

TEST(ConvertTexturePixels, ChannelsAndAlphaByMode) {
  const Bytes two = {1, 2, 3, 4, 5, 6, 7, 8};
  const Bytes alpha = {9, 9, 9, 40, 9, 9, 9, 80};
  struct Case {
    const char* what;
    RawTextureData block;
    bool exchange;
    Bytes wanted;
  };
  const Case cases[] = {
      {"32 bits with alpha", Block(TextureMode::Plain, true, 2, 1, 32, two), false, two},
      {"32 bits with alpha, exchanged",
       Block(TextureMode::Plain, true, 2, 1, 32, two),
       true,
       {3, 2, 1, 4, 7, 6, 5, 8}},
      {"32 bits without alpha",
       Block(TextureMode::Plain, false, 2, 1, 32, two),
       false,
       {1, 2, 3, 255, 5, 6, 7, 255}},
      {"24 bits",
       Block(TextureMode::Plain, true, 2, 1, 24, {1, 2, 3, 4, 5, 6}),
       false,
       {1, 2, 3, 255, 4, 5, 6, 255}},
      {"colorized with alpha",
       Block(TextureMode::Colorized, true, 2, 1, 32, two, alpha),
       false,
       {1, 2, 3, 40, 5, 6, 7, 80}},
      {"colorized with alpha, exchanged",
       Block(TextureMode::Colorized, true, 2, 1, 32, two, alpha),
       true,
       {3, 2, 1, 40, 7, 6, 5, 80}},
      {"colorized without its plain image",
       Block(TextureMode::Colorized, true, 2, 1, 32, two),
       false,
       {1, 2, 3, 255, 5, 6, 7, 255}},
      {"colorized without alpha",
       Block(TextureMode::Colorized, false, 2, 1, 32, two, alpha),
       false,
       {1, 2, 3, 255, 5, 6, 7, 255}},
      {"channel",
       Block(TextureMode::Channel, true, 2, 1, 32, two),
       true,
       {3, 2, 1, 255, 7, 6, 5, 255}},
      {"no pixels", Block(TextureMode::Plain, true, 0, 0, 32, {}), false, {}},
      {"not valid", RawTextureData(), false, {}}};
  for (const Case& c : cases) {
    const ConvertedTexture texture = ConvertTexturePixels(c.block, c.exchange);
    EXPECT_EQ(Of(texture), c.wanted) << c.what;
    EXPECT_EQ(texture.stride, texture.width * 4) << c.what;
    EXPECT_EQ(texture.size, texture.width * texture.height * 4) << c.what;
  }
}

// Several pixels at a time and the rest one by one, whatever their number leaves over.
TEST(ConvertTexturePixels, ThreeBytesAPixelAtEveryCount) {
  for (std::uint64_t pixels = 1; pixels <= 40; ++pixels) {
    Bytes source;
    Bytes kept;
    Bytes exchanged;
    for (std::uint64_t i = 0; i < pixels; ++i) {
      const auto first = static_cast<std::uint8_t>(3 * i + 1);
      const auto second = static_cast<std::uint8_t>(first + 1);
      const auto third = static_cast<std::uint8_t>(first + 2);
      source.insert(source.end(), {first, second, third});
      kept.insert(kept.end(), {first, second, third, 255});
      exchanged.insert(exchanged.end(), {third, second, first, 255});
    }
    const RawTextureData block = Block(TextureMode::Plain, true, pixels, 1, 24, source);
    EXPECT_EQ(Of(ConvertTexturePixels(block, false)), kept) << pixels;
    EXPECT_EQ(Of(ConvertTexturePixels(block, true)), exchanged) << pixels;
  }
}

ConvertedTexture Plain(std::uint64_t width, std::uint64_t height) {
  ConvertedTexture texture;
  texture.width = width;
  texture.height = height;
  texture.stride = width * 4;
  texture.size = width * height * 4;
  texture.storage = PixelBuffer(texture.size);
  std::fill_n(texture.storage.Data(), texture.size, std::uint8_t{0});
  texture.bytes = texture.storage.Data();
  return texture;
}

TEST(DownscaleTexture, TheLongerSideBecomes4096) {
  const std::pair<std::pair<std::uint64_t, std::uint64_t>, std::pair<std::uint64_t, std::uint64_t>>
      cases[] = {{{4096, 4096}, {4096, 4096}}, {{4097, 10}, {4096, 9}},
                 {{10000, 1}, {4096, 1}},      {{1, 10000}, {1, 4096}},
                 {{8192, 4096}, {4096, 2048}}, {{10, 4097}, {9, 4096}}};
  for (const auto& [from, to] : cases) {
    ConvertedTexture texture = Plain(from.first, from.second);
    DownscaleTexture(texture);
    EXPECT_EQ(std::pair(texture.width, texture.height), to) << from.first << " x " << from.second;
    EXPECT_EQ(texture.size, to.first * to.second * 4);
    EXPECT_EQ(texture.stride, to.first * 4);
  }
}

// Halving takes the mean of each pair, rounded; all four channels alike.
TEST(DownscaleTexture, InterpolatesEveryChannel) {
  ConvertedTexture texture = Plain(8192, 2);
  for (std::uint64_t x = 0; x < 8192; ++x) {
    for (std::uint64_t y = 0; y < 2; ++y) {
      std::uint8_t* pixel = texture.storage.Data() + y * texture.stride + 4 * x;
      pixel[0] = static_cast<std::uint8_t>(x % 256);
      pixel[1] = static_cast<std::uint8_t>(y * 100);
      pixel[2] = static_cast<std::uint8_t>(255 - x % 256);
      pixel[3] = static_cast<std::uint8_t>(x % 2 == 0 ? 0 : 255);
    }
  }
  DownscaleTexture(texture);
  ASSERT_EQ(texture.width, 4096u);
  ASSERT_EQ(texture.height, 1u);
  for (std::uint64_t x = 0; x < 4096; ++x) {
    const std::uint8_t* pixel = texture.bytes + 4 * x;
    const std::uint64_t even = 2 * x % 256;
    // (even + even + 1) / 2 + 0.5, truncated.
    ASSERT_EQ(pixel[0], even + 1) << x;
    ASSERT_EQ(pixel[1], 50) << x;
    ASSERT_EQ(pixel[2], 255 - even) << x;
    ASSERT_EQ(pixel[3], 128) << x;
  }
}

// A factor that divides nothing evenly: the formula, worked out for single pixels.
TEST(DownscaleTexture, UnevenFactorsFollowTheFormula) {
  ConvertedTexture texture = Plain(6000, 1);
  for (std::uint64_t x = 0; x < 6000; ++x) {
    texture.storage.Data()[4 * x] = static_cast<std::uint8_t>(x * 7 % 251);
  }
  const ConvertedTexture original = Plain(6000, 1);
  std::copy_n(texture.bytes, texture.size, original.storage.Data());
  DownscaleTexture(texture);
  ASSERT_EQ(texture.width, 4096u);
  for (const std::uint64_t x : {0u, 1u, 2u, 1000u, 2047u, 4095u}) {
    const float at = (static_cast<float>(x) + 0.5f) * 6000.0f / 4096.0f - 0.5f;
    const auto x0 = static_cast<std::uint64_t>(at);
    const float wx = at - static_cast<float>(x0);
    const std::uint64_t x1 = std::min<std::uint64_t>(x0 + 1, 5999);
    const float value = static_cast<float>(original.bytes[4 * x1]) * wx +
                        static_cast<float>(original.bytes[4 * x0]) * (1.0f - wx) + 0.5f;
    EXPECT_EQ(texture.bytes[4 * x], static_cast<std::uint8_t>(value)) << x;
  }
}

TEST(MakeNormalMapFromBase, SlopesWrapAround) {
  // Brightness 10, 40 over 70, 100: bytes whose sum is three times that, the last one of a
  // remainder.
  ConvertedTexture base = Plain(2, 2);
  const std::uint8_t pixels[16] = {10, 10, 10, 1, 0, 120, 0, 2, 210, 0, 0, 3, 100, 100, 102, 4};
  std::copy_n(pixels, 16, base.storage.Data());
  const auto map = MakeNormalMapFromBase(base, 10.0f);
  // The last column compares with the first of its row; below the last row lies the first pixel of
  // the first row's same column.
  const std::uint8_t wanted[16] = {128 + 30, 128 + 60, 255, 255, 128 - 30, 128 + 60, 255, 255,
                                   128 + 30, 128 - 60, 255, 255, 128 - 30, 128 - 60, 255, 255};
  for (int i = 0; i < 16; ++i) EXPECT_EQ(map.Data()[i], wanted[i]) << i;
}

TEST(MakeNormalMapFromBase, FlatStaysFlatAndSteepIsClamped) {
  ConvertedTexture base = Plain(3, 1);
  const auto flat = MakeNormalMapFromBase(base, 5.0f);
  for (int i = 0; i < 3; ++i) {
    const Bytes pixel(flat.Data() + 4 * i, flat.Data() + 4 * i + 4);
    EXPECT_EQ(pixel, (Bytes{128, 128, 255, 255}));
  }
  std::fill_n(base.storage.Data() + 4, 4, std::uint8_t{255});
  const auto steep = MakeNormalMapFromBase(base, 100.0f);
  EXPECT_EQ(steep.Data()[0], 255);
  EXPECT_EQ(steep.Data()[4], 0);
  // A slope of 7 x 0.13 = 0.91: 128.91 and 127.09 are truncated.
  std::fill_n(base.storage.Data() + 4, 4, std::uint8_t{7});
  const auto small = MakeNormalMapFromBase(base, 1.3f);
  EXPECT_EQ(small.Data()[0], 128);
  EXPECT_EQ(small.Data()[4], 127);
  EXPECT_EQ(MakeNormalMapFromBase(ConvertedTexture(), 1.0f).Data(), nullptr);
}

}  // namespace
}  // namespace quellix
