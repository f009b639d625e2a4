#include "app/GlbDocument.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <utility>

#include "app/Paths.h"

namespace kvapp {

using nlohmann::json;

namespace {

constexpr std::uint32_t kMagic = 0x46546c67;      // "glTF"
constexpr std::uint32_t kJsonChunk = 0x4e4f534a;  // "JSON"
constexpr std::uint32_t kBinaryChunk = 0x004e4942;

void WriteNumber(std::ofstream& stream, std::uint64_t number) {
  const auto value = static_cast<std::uint32_t>(number);
  stream.write(reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace

std::size_t GlbDocument::Add(const char* array, json object) {
  json& list = root_[array];
  if (list.is_null()) list = json::array();
  list.push_back(std::move(object));
  return list.size() - 1;
}

std::size_t GlbDocument::AddView(std::span<const std::byte> bytes, Target target,
                                 std::size_t stride) {
  bytes_.resize((bytes_.size() + 3) / 4 * 4);
  json view = {{"buffer", 0}, {"byteOffset", bytes_.size()}, {"byteLength", bytes.size()}};
  if (target != Target::None) view["target"] = static_cast<int>(target);
  if (stride != 0) view["byteStride"] = stride;
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return Add("bufferViews", std::move(view));
}

void GlbDocument::UseExtension(const std::string& name) {
  json& used = root_["extensionsUsed"];
  if (used.is_null()) used = json::array();
  if (std::find(used.begin(), used.end(), name) == used.end()) used.push_back(name);
}

void GlbDocument::Write(const std::filesystem::path& file) {
  bytes_.resize((bytes_.size() + 3) / 4 * 4);
  if (!bytes_.empty()) root_["buffers"] = json::array({{{"byteLength", bytes_.size()}}});
  std::string text = root_.dump(-1, ' ', false, json::error_handler_t::replace);
  text.resize((text.size() + 3) / 4 * 4, ' ');
  const std::uint64_t binary = bytes_.empty() ? 0 : 8 + std::uint64_t{bytes_.size()};
  const std::uint64_t total = 12 + 8 + text.size() + binary;
  if (total > std::numeric_limits<std::uint32_t>::max()) {
    throw std::runtime_error(Utf8(file) + " would have " + std::to_string(total) +
                             " bytes, more than its format allows");
  }
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  WriteNumber(stream, kMagic);
  WriteNumber(stream, 2);
  WriteNumber(stream, total);
  WriteNumber(stream, text.size());
  WriteNumber(stream, kJsonChunk);
  stream.write(text.data(), static_cast<std::streamsize>(text.size()));
  if (!bytes_.empty()) {
    WriteNumber(stream, bytes_.size());
    WriteNumber(stream, kBinaryChunk);
    stream.write(reinterpret_cast<const char*>(bytes_.data()),
                 static_cast<std::streamsize>(bytes_.size()));
  }
  stream.close();
  if (!stream) throw std::runtime_error(Utf8(file) + " cannot be written");
}

}  // namespace kvapp
