#include "view/Mirror.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "app/GlbMaterials.h"
#include "app/SceneJson.h"

namespace kvapp::view {

using nlohmann::json;

void Mirror::Apply(Step step) {
  for (Change& change : step.changes) {
    std::visit([this](auto& taken) { Take(taken); }, change);
  }
  sequence_ = step.command;
  taken_ = step.taken;
}

std::vector<Part> Mirror::TakeChanged() {
  return std::exchange(changed_, {});
}

std::vector<Part> Mirror::AllParts() const {
  std::vector<Part> parts;
  for (std::size_t i = 0; i < fields_.size(); ++i) parts.push_back({Kind::Field, i});
  parts.push_back({Kind::Findings, 0});
  for (const auto& [key, material] : materials_) parts.push_back({Kind::Material, key});
  for (const auto& [id, owner] : owners_) {
    for (const Item& item : owner.items) parts.push_back({Kind::Mesh, item.mesh});
    parts.push_back({Kind::Owner, id});
  }
  return parts;
}

void Mirror::Take(change::SetField& change) {
  json& value = fields_[static_cast<std::size_t>(change.field)];
  if (value == change.value) return;
  value = std::move(change.value);
  Changed(Kind::Field, static_cast<std::uint64_t>(change.field));
}

void Mirror::Take(change::ExportBegan&) {
  keyOfIndex_.clear();
  awaitingIndex_.clear();
}

void Mirror::Take(change::TookMaterial& change) {
  SetMaterial(*change.material);
}

void Mirror::Take(change::TookIndex& change) {
  keyOfIndex_[change.index] = change.key;
  const auto awaiting = awaitingIndex_.find(change.index);
  if (awaiting == awaitingIndex_.end()) return;
  for (const Number number : awaiting->second) {
    const auto mesh = meshes_.find(number);
    if (mesh == meshes_.end()) continue;
    for (Slot& slot : mesh->second.slots) {
      if (!slot.key && slot.index == change.index) slot.key = change.key;
    }
    Changed(Kind::Slots, number);
  }
  awaitingIndex_.erase(awaiting);
}

void Mirror::Take(change::Placed& change) {
  const Number mesh = MeshNumber(change.mesh, std::move(change.slots));
  // Counted before the old items go, which may show the same mesh.
  ++meshes_.at(mesh).uses;
  OwnerEntry& owner = owners_[change.owner];
  if (change.first || owner.generation == 0) {
    DropItems(std::exchange(owner.items, {}));
    owner.generation = ++lastGeneration_;
  }
  owner.items.push_back({mesh, change.transform});
  Changed(Kind::Owner, change.owner);
}

void Mirror::Take(change::Moved& change) {
  const auto owner = owners_.find(change.owner);
  if (owner == owners_.end()) return;
  for (Item& item : owner->second.items) item.transform = change.transform;
  owner->second.generation = ++lastGeneration_;
  Changed(Kind::Owner, change.owner);
}

void Mirror::Take(change::Everything& all) {
  keyOfIndex_ = std::move(all.keyOfIndex);
  awaitingIndex_.clear();
  std::unordered_set<std::uint64_t> keys;
  for (const auto& material : all.materials) {
    keys.insert(material->key);
    SetMaterial(*material);
  }
  for (auto it = materials_.begin(); it != materials_.end();) {
    const auto next = std::next(it);
    if (!keys.contains(it->first)) DropMaterial(it);
    it = next;
  }
  // A mesh may pass from one owner to another; it stays until all owners are settled.
  std::vector<Item> held;
  for (std::size_t i = 0; i < all.meshes.size(); ++i) {
    const Number number = MeshNumber(all.meshes[i], all.slots[i]);
    MeshEntry& mesh = meshes_.at(number);
    Resolve(number, all.slots[i]);
    const auto sameKey = [](const Slot& a, const Slot& b) { return a.key == b.key; };
    if (!std::ranges::equal(mesh.slots, all.slots[i], sameKey)) Changed(Kind::Slots, number);
    mesh.slots = std::move(all.slots[i]);
    ++mesh.uses;
    held.push_back({number, {}});
  }
  std::unordered_set<std::uint64_t> owners;
  for (auto item = all.items.begin(); item != all.items.end();) {
    const std::uint64_t owner = item->owner;
    std::vector<Item> items;
    for (; item != all.items.end() && item->owner == owner; ++item) {
      items.push_back({held[item->mesh].mesh, item->transform});
    }
    owners.insert(owner);
    SetItems(owner, std::move(items));
  }
  for (auto it = owners_.begin(); it != owners_.end();) {
    if (owners.contains(it->first)) {
      ++it;
      continue;
    }
    DropItems(it->second.items);
    Changed(Kind::Owner, it->first);
    it = owners_.erase(it);
  }
  DropItems(held);
}

void Mirror::Take(change::Found& change) {
  findings_.faultCount = change.faultCount;
  findings_.noteCounts = std::move(change.noteCounts);
  std::ranges::move(change.faults, std::back_inserter(findings_.faults));
  std::ranges::move(change.notes, std::back_inserter(findings_.notes));
  Changed(Kind::Findings);
}

void Mirror::SetMaterial(const kvapp::Material& material) {
  MaterialEntry entry;
  MaterialEntry& known = materials_[material.key];
  const kvapp::Texture* normal = &material.pbr.normalTexture;
  entry.described = MaterialToJson(material, [&](const kvapp::Texture& texture) -> json {
    if (!texture.HasPixels()) return nullptr;
    // Most materials come back with the very pixels that they had.
    const auto found = std::ranges::find(known.textures, texture.pixels, &TextureUse::pixels);
    const Number number =
        found != known.textures.end() ? found->number : TextureNumber(texture, &texture != normal);
    ++textures_.at(number).uses;
    entry.textures.push_back({texture.pixels, number});
    return number;
  });
  entry.described["key"] = std::to_string(material.key);
  // What tells the alpha mode looks at every pixel.
  entry.described["alphaMode"] = nullptr;
  const json mode = std::exchange(known.described["alphaMode"], nullptr);
  const bool same = known.described == entry.described;
  entry.described["alphaMode"] = same ? mode : json(GlbMaterials::AlphaMode(material));
  const auto dropped = std::exchange(known.textures, std::move(entry.textures));
  known.described = std::move(entry.described);
  if (!same) Changed(Kind::Material, material.key);
  DropTextures(dropped);
}

void Mirror::DropMaterial(std::map<std::uint64_t, MaterialEntry>::iterator material) {
  DropTextures(material->second.textures);
  Changed(Kind::Material, material->first);
  materials_.erase(material);
}

// The same pixels are one texture, however often and for however many materials they are sent.
Mirror::Number Mirror::TextureNumber(const kvapp::Texture& texture, bool blueFirst) {
  const std::vector<std::uint8_t>& pixels = *texture.pixels;
  const std::size_t hash =
      std::hash<std::string_view>()({reinterpret_cast<const char*>(pixels.data()), pixels.size()});
  const auto [from, to] = textureOfHash_.equal_range(hash);
  for (auto it = from; it != to; ++it) {
    const TextureEntry& known = textures_.at(it->second);
    if (known.width == texture.width && known.height == texture.height &&
        known.blueFirst == blueFirst &&
        (known.pixels == texture.pixels || *known.pixels == pixels)) {
      return it->second;
    }
  }
  const Number number = ++lastTexture_;
  textures_[number] = {texture.pixels, texture.width, texture.height, blueFirst, hash, 0};
  textureOfHash_.emplace(hash, number);
  Changed(Kind::Texture, number);
  return number;
}

void Mirror::DropTextures(const std::vector<TextureUse>& uses) {
  for (const auto& [pixels, number] : uses) {
    const auto texture = textures_.find(number);
    if (--texture->second.uses > 0) continue;
    const auto [from, to] = textureOfHash_.equal_range(texture->second.hash);
    textureOfHash_.erase(std::find_if(
        from, to, [&, gone = number](const auto& entry) { return entry.second == gone; }));
    textures_.erase(texture);
    Changed(Kind::TextureGone, number);
  }
}

Mirror::Number Mirror::MeshNumber(const MeshContent& content, std::vector<Slot> slots) {
  const auto [found, added] = meshOfGeometry_.try_emplace(content.geometry.get(), lastMesh_ + 1);
  if (!added) return found->second;
  const Number number = ++lastMesh_;
  Resolve(number, slots);
  meshes_[number] = {content, std::move(slots), 0};
  Changed(Kind::Mesh, number);
  return number;
}

void Mirror::Resolve(Number number, std::vector<Slot>& slots) {
  for (Slot& slot : slots) {
    if (slot.key) continue;
    const auto known = keyOfIndex_.find(slot.index);
    if (known != keyOfIndex_.end()) {
      slot.key = known->second;
    } else {
      awaitingIndex_[slot.index].push_back(number);
    }
  }
}

void Mirror::SetItems(std::uint64_t id, std::vector<Item> items) {
  OwnerEntry& owner = owners_[id];
  if (owner.items == items) return;
  for (const Item& item : items) ++meshes_.at(item.mesh).uses;
  DropItems(std::exchange(owner.items, std::move(items)));
  owner.generation = ++lastGeneration_;
  Changed(Kind::Owner, id);
}

void Mirror::DropItems(const std::vector<Item>& items) {
  for (const Item& item : items) {
    const auto mesh = meshes_.find(item.mesh);
    if (--mesh->second.uses > 0) continue;
    meshOfGeometry_.erase(mesh->second.content.geometry.get());
    meshes_.erase(mesh);
    Changed(Kind::MeshGone, item.mesh);
  }
}

}  // namespace kvapp::view
