// Conversion of texture pixels.
#include <algorithm>
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>

#include "PartsRegistry.h"
#include "export/TextureConversion.h"

namespace bench {

namespace {

using namespace quellix;

constexpr std::uint64_t kSide = 4096;
constexpr double kMegapixels = static_cast<double>(kSide) * kSide / 1e6;

RawTextureData Block(std::uint64_t side, std::uint64_t bits, TextureMode mode, bool alpha) {
  RawTextureData block;
  block.valid = true;
  block.mode = mode;
  block.useAlpha = alpha;
  block.width = block.height = side;
  block.bitsPerPixel = bits;
  block.pixels.resize(side * side * bits / 8);
  for (std::size_t i = 0; i < block.pixels.size(); ++i) {
    block.pixels[i] = static_cast<std::uint8_t>(i * 7 + i / 4096);
  }
  if (mode == TextureMode::Colorized && alpha) block.alphaSource = block.pixels;
  return block;
}

void Convert(benchmark::State& state, const RawTextureData& block) {
  for (auto _ : state) {
    const ConvertedTexture converted = ConvertTexturePixels(block, true);
    benchmark::DoNotOptimize(converted.bytes);
  }
}

void BM_ConvertPlain24(benchmark::State& state) {
  Convert(state, Block(kSide, 24, TextureMode::Plain, false));
}
void BM_ConvertPlain32(benchmark::State& state) {
  Convert(state, Block(kSide, 32, TextureMode::Plain, false));
}
void BM_ConvertPlain32Alpha(benchmark::State& state) {
  Convert(state, Block(kSide, 32, TextureMode::Plain, true));
}
void BM_ConvertColorized32Alpha(benchmark::State& state) {
  Convert(state, Block(kSide, 32, TextureMode::Colorized, true));
}
void BM_ConvertChannel32(benchmark::State& state) {
  Convert(state, Block(kSide, 32, TextureMode::Channel, false));
}

// The bytes that a conversion writes, in memory that was written before, as a conversion's is.
void BM_CopyPixels(benchmark::State& state) {
  const std::vector<std::uint8_t> source(kSide * kSide * 4, 1);
  std::vector<std::uint8_t> target = source;
  for (auto _ : state) {
    std::memcpy(target.data(), source.data(), source.size());
    benchmark::ClobberMemory();
  }
}

// 8192 x 8192 to half. Pixels that keep their alpha and order need nothing else.
void BM_Downscale(benchmark::State& state) {
  const RawTextureData block = Block(2 * kSide, 32, TextureMode::Plain, true);
  for (auto _ : state) {
    const ConvertedTexture converted = ConvertTexturePixels(block, false);
    benchmark::DoNotOptimize(converted.bytes);
  }
}

void BM_NormalMap(benchmark::State& state) {
  const RawTextureData block = Block(kSide, 32, TextureMode::Plain, true);
  const ConvertedTexture base = ConvertTexturePixels(block, false);
  for (auto _ : state) {
    const PixelBuffer map = MakeNormalMapFromBase(base, 1.0f);
    benchmark::DoNotOptimize(map.Data());
  }
}

BENCHMARK(BM_ConvertPlain24);
BENCHMARK(BM_ConvertPlain32);
BENCHMARK(BM_ConvertPlain32Alpha);
BENCHMARK(BM_ConvertColorized32Alpha);
BENCHMARK(BM_ConvertChannel32);
BENCHMARK(BM_CopyPixels);
BENCHMARK(BM_Downscale);
BENCHMARK(BM_NormalMap);

constexpr auto kHigher = Figures::Better::Higher;

const Figure kFigures[] = {
    {"texture_convert_vs_memcpy", "x speed", kHigher, 0.5,
     [](const Times& t) {
       double slowest = 0.0;
       for (const char* mode : {"BM_ConvertPlain24", "BM_ConvertPlain32", "BM_ConvertPlain32Alpha",
                                "BM_ConvertColorized32Alpha", "BM_ConvertChannel32"}) {
         slowest = std::max(slowest, t.at(mode));
       }
       return t.at("BM_CopyPixels") / slowest;
     }},
    {"downscale_mpix_per_s", "Mpixel/s", kHigher, 150.0,
     [](const Times& t) { return 4 * kMegapixels / (t.at("BM_Downscale") / 1e9); }},
    {"normal_map_mpix_per_s", "Mpixel/s", kHigher, 150.0,
     [](const Times& t) { return kMegapixels / (t.at("BM_NormalMap") / 1e9); }},
};

}  // namespace

}  // namespace bench
