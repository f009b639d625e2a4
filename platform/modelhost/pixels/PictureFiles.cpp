#include <png.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "core/Paths.h"
#include "pixels/Pixels.h"

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_NO_STDIO
#define STBI_NO_PSD
#define STBI_NO_HDR
#define STBI_NO_PIC
#define STBI_NO_PNM
#define STBI_MAX_DIMENSIONS 32768
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <stb/stb_image.h>
#pragma GCC diagnostic pop

namespace modelhost {

namespace {

constexpr std::size_t kMaxFile = std::size_t{1} << 30;

// Turns red, green, blue rows from the top down into ours.
Pixels fromTopDown(const std::uint8_t* rows, std::size_t width, std::size_t height, int channels) {
  const auto from = static_cast<std::size_t>(channels);
  // Grey with alpha has no form of its own here.
  const std::size_t bits = channels == 1 ? 8 : channels == 3 ? 24 : 32;
  Pixels pixels = blankPixels(width, height, bits);
  for (std::size_t y = 0; y < height; ++y) {
    const std::uint8_t* in = rows + (height - 1 - y) * width * from;
    std::uint8_t* out = pixels.bytes.data() + y * width * pixels.bytesPerPixel();
    for (std::size_t x = 0; x < width; ++x, in += from, out += pixels.bytesPerPixel()) {
      if (channels == 1) {
        out[0] = in[0];
        continue;
      }
      out[0] = channels == 2 ? in[0] : in[2];
      out[1] = channels == 2 ? in[0] : in[1];
      out[2] = in[0];
      if (bits == 32) out[3] = in[channels - 1];
    }
  }
  return pixels;
}

}  // namespace

std::optional<Pixels> decodePicture(std::span<const std::uint8_t> file) {
  if (file.empty() || file.size() > kMaxFile) return std::nullopt;
  int width = 0;
  int height = 0;
  int channels = 0;
  const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> rows(
      stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &width, &height, &channels,
                            0),
      &stbi_image_free);
  if (!rows || width <= 0 || height <= 0) return std::nullopt;
  return fromTopDown(rows.get(), static_cast<std::size_t>(width), static_cast<std::size_t>(height),
                     channels);
}

std::optional<Pixels> readPicture(const std::string& path) {
  std::ifstream in(filePath(path), std::ios::binary);
  if (!in) return std::nullopt;
  const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
  return decodePicture({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

bool writePng(const Pixels& pixels, const std::string& path) {
  if (pixels.bytes.empty()) return false;
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(pixels.width);
  image.height = static_cast<png_uint_32>(pixels.height);
  image.format = pixels.bitsPerPixel == 8    ? PNG_FORMAT_GRAY
                 : pixels.bitsPerPixel == 24 ? PNG_FORMAT_BGR
                                             : PNG_FORMAT_BGRA;
  image.flags = PNG_IMAGE_FLAG_FAST;
  // A negative stride is for rows that come from the bottom up.
  const auto stride = -static_cast<png_int_32>(pixels.width * pixels.bytesPerPixel());
  png_alloc_size_t bytes = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::vector<char> file(bytes);
  if (png_image_write_to_memory(&image, file.data(), &bytes, 0, pixels.bytes.data(), stride,
                                nullptr) == 0) {
    return false;
  }
  std::ofstream out(filePath(path), std::ios::binary | std::ios::trunc);
  out.write(file.data(), static_cast<std::streamsize>(bytes));
  out.close();
  return static_cast<bool>(out);
}

}  // namespace modelhost
