#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include <nlohmann/json.hpp>

#include "view/Change.h"

namespace kvapp::view {

// What a page has to be told about again, as it is when its turn comes.
enum class Kind : std::uint8_t {
  Field,  // id: a Field
  Findings,
  Material,  // id: its key
  Texture,   // id: its number
  TextureGone,
  Mesh,   // id: its number; the geometry
  Slots,  // id: its number
  MeshGone,
  Owner  // id: the owner
};

struct Part {
  Kind kind;
  std::uint64_t id;
  bool operator==(const Part&) const = default;
};

// What every page is to show. Changes go in, and the parts that are no longer what they were come
// out. The server's thread.
class Mirror {
 public:
  using Number = std::uint32_t;

  struct MeshEntry {
    MeshContent content;
    std::vector<Slot> slots;
    std::size_t uses = 0;  // items that show it
  };
  struct TextureEntry {
    std::shared_ptr<const std::vector<std::uint8_t>> pixels;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool blueFirst = true;
    std::size_t hash = 0;
    std::size_t uses = 0;  // places in materials
  };
  struct TextureUse {
    std::shared_ptr<const std::vector<std::uint8_t>> pixels;  // as the material has them
    Number number;
  };
  struct MaterialEntry {
    nlohmann::json described;
    std::vector<TextureUse> textures;
  };
  struct Item {
    Number mesh;
    Matrix transform;
    bool operator==(const Item&) const = default;
  };
  struct OwnerEntry {
    // Grows when items are not only added.
    std::uint64_t generation = 0;
    std::vector<Item> items;
  };

  void Apply(Step step);
  // The parts that changed since the last call.
  std::vector<Part> TakeChanged();
  // All there is, in the order in which a new page shows it best.
  std::vector<Part> AllParts() const;

  std::uint64_t Sequence() const { return sequence_; }
  std::chrono::steady_clock::time_point Taken() const { return taken_; }
  // Null: nothing is known.
  const nlohmann::json& Value(Field field) const {
    return fields_[static_cast<std::size_t>(field)];
  }
  const change::Found& Findings() const { return findings_; }
  // Null when there is no such thing (any more).
  const MeshEntry* Mesh(std::uint64_t number) const { return Find(meshes_, number); }
  const TextureEntry* Texture(std::uint64_t number) const { return Find(textures_, number); }
  const MaterialEntry* Material(std::uint64_t key) const { return Find(materials_, key); }
  const OwnerEntry* Owner(std::uint64_t id) const { return Find(owners_, id); }

 private:
  template <class Map>
  static const typename Map::mapped_type* Find(const Map& map, std::uint64_t id) {
    const auto found = map.find(static_cast<typename Map::key_type>(id));
    return found == map.end() ? nullptr : &found->second;
  }

  void Take(change::SetField& change);
  void Take(change::ExportBegan& change);
  void Take(change::TookMaterial& change);
  void Take(change::TookIndex& change);
  void Take(change::Placed& change);
  void Take(change::Moved& change);
  void Take(change::Everything& change);
  void Take(change::Found& change);

  void Changed(Kind kind, std::uint64_t id = 0) { changed_.push_back({kind, id}); }
  void SetMaterial(const kvapp::Material& material);
  void DropMaterial(std::map<std::uint64_t, MaterialEntry>::iterator material);
  Number TextureNumber(const kvapp::Texture& texture, bool blueFirst);
  void DropTextures(const std::vector<TextureUse>& uses);
  Number MeshNumber(const MeshContent& content, std::vector<Slot> slots);
  // Finds the keys of slots known by index, or has them found when the index is taken.
  void Resolve(Number mesh, std::vector<Slot>& slots);
  void SetItems(std::uint64_t owner, std::vector<Item> items);
  void DropItems(const std::vector<Item>& items);

  std::uint64_t sequence_ = 0;
  std::chrono::steady_clock::time_point taken_;
  std::vector<Part> changed_;
  std::array<nlohmann::json, kNames.size()> fields_;
  change::Found findings_{};
  std::map<std::uint64_t, MaterialEntry> materials_;
  std::map<Number, TextureEntry> textures_;
  std::unordered_multimap<std::size_t, Number> textureOfHash_;
  std::unordered_map<Number, MeshEntry> meshes_;
  std::unordered_map<const Geometry*, Number> meshOfGeometry_;
  std::map<std::uint64_t, OwnerEntry> owners_;
  Number lastMesh_ = 0;
  Number lastTexture_ = 0;
  std::uint64_t lastGeneration_ = 0;

  // Of the export that runs: a mesh may come before the materials that it names by index.
  std::unordered_map<std::uint32_t, std::uint64_t> keyOfIndex_;
  std::unordered_map<std::uint32_t, std::vector<Number>> awaitingIndex_;
};

}  // namespace kvapp::view
