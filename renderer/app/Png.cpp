#include "app/Png.h"

#include <memory>
#include <stdexcept>

#include <png.h>

namespace kvapp {

namespace {

// Textures are written once and read once: speed counts more than the last percent of size.
constexpr int kCompression = 3;

void AppendBytes(png_structp png, png_bytep bytes, std::size_t count) {
  auto* out = static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(png));
  out->insert(out->end(), bytes, bytes + count);
}

void RaiseError(png_structp, png_const_charp text) {
  throw std::runtime_error(std::string("a PNG cannot be written: ") + text);
}

void IgnoreWarning(png_structp, png_const_charp) {}

bool IsOpaque(std::span<const std::uint8_t> rgba) {
  for (std::size_t i = 3; i < rgba.size(); i += 4) {
    if (rgba[i] != 255) return false;
  }
  return true;
}

struct Writer {
  Writer()
      : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, RaiseError, IgnoreWarning)) {
    if (png == nullptr) throw std::runtime_error("a PNG cannot be written: no memory");
    info = png_create_info_struct(png);
  }
  ~Writer() { png_destroy_write_struct(&png, &info); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  png_structp png;
  png_infop info = nullptr;
};

}  // namespace

std::vector<std::uint8_t> EncodePng(std::uint32_t width, std::uint32_t height,
                                    std::span<const std::uint8_t> rgba) {
  std::vector<std::uint8_t> bytes;
  const bool opaque = IsOpaque(rgba);
  Writer writer;
  png_set_write_fn(writer.png, &bytes, AppendBytes, nullptr);
  png_set_compression_level(writer.png, kCompression);
  png_set_IHDR(writer.png, writer.info, width, height, 8,
               opaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(writer.png, writer.info);
  if (opaque) png_set_filler(writer.png, 0, PNG_FILLER_AFTER);
  const std::size_t stride = std::size_t{width} * 4;
  for (std::uint32_t row = 0; row < height; ++row) {
    png_write_row(writer.png, rgba.data() + row * stride);
  }
  png_write_end(writer.png, writer.info);
  return bytes;
}

}  // namespace kvapp
