#include <charconv>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "app/Png.h"
#include "picture/GltfLoader.h"
#include "picture/OffscreenContext.h"
#include "picture/Painter.h"

namespace {

constexpr char kUsage[] = "usage: kvpicture <scene.glb> <picture.png> [--size <width>x<height>]";
constexpr int kLargestSide = 8192;

struct Arguments {
  std::string scene;
  std::string picture;
  int width = 1600;
  int height = 1000;
};

void ParseSize(std::string_view text, Arguments& arguments) {
  const std::size_t cross = text.find('x');
  const auto number = [&](std::string_view digits, int& side) {
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, side);
    if (error != std::errc{} || stop != end || side < 1 || side > kLargestSide) {
      throw std::runtime_error(std::string(text) + " is not a size; " + kUsage);
    }
  };
  if (cross == std::string_view::npos) throw std::runtime_error(kUsage);
  number(text.substr(0, cross), arguments.width);
  number(text.substr(cross + 1), arguments.height);
}

Arguments Parse(int count, char** values) {
  Arguments arguments;
  if (count != 3 && count != 5) throw std::runtime_error(kUsage);
  arguments.scene = values[1];
  arguments.picture = values[2];
  if (count == 5) {
    if (std::string_view(values[3]) != "--size") throw std::runtime_error(kUsage);
    ParseSize(values[4], arguments);
  }
  return arguments;
}

void Save(const kvpicture::Image& image, const std::string& file) {
  const auto png = kvapp::EncodePng(static_cast<std::uint32_t>(image.width),
                                    static_cast<std::uint32_t>(image.height), image.rgba);
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
  stream.close();
  if (!stream) throw std::runtime_error(file + " cannot be written");
}

}  // namespace

int main(int count, char** values) {
  try {
    const Arguments arguments = Parse(count, values);
    const kvpicture::Model model = kvpicture::LoadGltf(arguments.scene);
    const kvpicture::OffscreenContext context;
    Save(kvpicture::Paint(model, arguments.width, arguments.height), arguments.picture);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kvpicture: %s\n", error.what());
    return 1;
  }
}
