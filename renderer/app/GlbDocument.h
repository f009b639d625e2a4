#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace kvapp {

// A glTF document with one binary buffer, while it is being put together. Arrays that stay empty
// are left out of the file, as the format wants.
class GlbDocument {
 public:
  enum class Target { None = 0, Vertices = 34962, Indices = 34963 };

  // Appends an object to a top-level array and returns its index.
  std::size_t Add(const char* array, nlohmann::json object);
  // Appends bytes, aligned to four, and returns the index of the view of them. `stride` is 0 for
  // bytes that are no interleaved vertices.
  std::size_t AddView(std::span<const std::byte> bytes, Target target, std::size_t stride = 0);
  // Notes that the file needs an extension to be understood as meant.
  void UseExtension(const std::string& name);

  nlohmann::json& Root() { return root_; }

  // Throws std::runtime_error with one sentence.
  void Write(const std::filesystem::path& file);

 private:
  nlohmann::json root_ = nlohmann::json::object();
  std::vector<std::byte> bytes_;
};

}  // namespace kvapp
