#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace kvapp::test {

// A page's scene, built from the messages alone as their description says. A message that breaks a
// promise of the description throws std::runtime_error.
class PageModel {
 public:
  void TakeText(const std::string& text);
  void TakeBinary(std::span<const std::byte> frame);

  // All that there is to be seen, the same for pages that show the same: numbers of meshes and
  // textures are replaced by what they stand for.
  nlohmann::json Seen() const;
  // The last value of a field of an update; null when none came.
  nlohmann::json Field(const std::string& name) const;
  std::uint64_t Sequence() const { return sequence_; }
  std::size_t MeshFrames() const { return meshFrames_; }
  std::size_t TextureFrames() const { return textureFrames_; }
  std::size_t Meshes() const { return meshes_.size(); }
  // Messages that are no update.
  std::vector<nlohmann::json>& Others() { return others_; }

 private:
  struct Mesh {
    std::string content;  // id, flags, vertices, triangles
    std::size_t slotCount = 0;
    nlohmann::json slots;
  };

  void TakeMaterials(const nlohmann::json& update);
  void TakePlacements(const nlohmann::json& update);
  void TakeRemovals(const nlohmann::json& update);
  void TakeFindings(const nlohmann::json& findings);
  nlohmann::json SeenMaterial(const nlohmann::json& key) const;

  std::map<std::string, nlohmann::json> fields_;
  std::map<std::uint32_t, Mesh> meshes_;
  std::map<std::uint32_t, std::string> textures_;
  std::map<std::string, nlohmann::json> materials_;
  std::map<std::string, std::vector<nlohmann::json>> owners_;
  nlohmann::json faults_ = nlohmann::json::array();
  std::set<std::uint32_t> usedNumbers_;
  std::vector<nlohmann::json> others_;
  std::uint64_t sequence_ = 0;
  std::size_t meshFrames_ = 0;
  std::size_t textureFrames_ = 0;
};

}  // namespace kvapp::test
