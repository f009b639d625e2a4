#include "PageModel.h"

#include <cstring>
#include <stdexcept>

#include "app/Fnv.h"

namespace kvapp::test {

using nlohmann::json;

namespace {

void Require(bool holds, const std::string& promise) {
  if (!holds) throw std::runtime_error("a message breaks the promise that " + promise);
}

std::uint32_t U32(std::span<const std::byte> bytes, std::size_t at) {
  std::uint32_t value = 0;
  std::memcpy(&value, bytes.data() + at, sizeof value);
  return value;
}

std::string Text(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

constexpr const char* kTextures[] = {"texture", "metallicTexture", "roughnessTexture",
                                     "normalTexture"};

}  // namespace

void PageModel::TakeBinary(std::span<const std::byte> frame) {
  Require(frame.size() > 32, "a frame has a header and content");
  const std::uint32_t kind = U32(frame, 0);
  const std::uint32_t number = U32(frame, 4);
  Require(usedNumbers_.insert(number * 2 + kind % 2).second, "a number comes once");
  if (kind == 2) {
    ++textureFrames_;
    const std::size_t bytes = std::size_t{U32(frame, 8)} * U32(frame, 12) * 4;
    Require(frame.size() == 32 + bytes, "a texture has four bytes a pixel");
    textures_[number] = Text(frame.subspan(8));
    return;
  }
  Require(kind == 1, "a frame is a mesh or a texture");
  ++meshFrames_;
  const std::size_t vertices = U32(frame, 16);
  const std::size_t triangles = U32(frame, 20);
  Require(frame.size() == 32 + 40 * vertices + 20 * triangles,
          "a mesh has the size of its content");
  meshes_[number] = {Text(frame.subspan(8)), U32(frame, 24), nullptr};
}

void PageModel::TakeText(const std::string& text) {
  const json message = json::parse(text);
  if (message.at("type") != "update") return others_.push_back(message);
  for (const auto& [name, value] : message.items()) fields_[name] = value;
  TakeMaterials(message);
  TakePlacements(message);
  TakeRemovals(message);
  if (message.contains("findings")) TakeFindings(message["findings"]);
  if (message.contains("sequence")) {
    Require(message["sequence"] > sequence_, "sequences grow");
    sequence_ = message["sequence"];
    for (const auto& [number, mesh] : meshes_) Require(mesh.slots.is_array(), "a mesh has slots");
  }
}

void PageModel::TakeMaterials(const json& update) {
  for (const json& material : update.value("materials", json::array())) {
    for (const char* field : kTextures) {
      if (material.contains(field) && !material[field].is_null()) {
        Require(textures_.contains(material[field]), "a texture comes before its material");
      }
    }
    materials_[material["key"]] = material;
  }
  for (const json& entry : update.value("meshes", json::array())) {
    Mesh& mesh = meshes_.at(entry["mesh"]);
    Require(entry["slots"].size() == mesh.slotCount, "each slot has a material");
    mesh.slots = entry["slots"];
  }
}

void PageModel::TakePlacements(const json& update) {
  for (const json& entry : update.value("placements", json::array())) {
    auto& items = owners_[entry["owner"]];
    const std::size_t from = entry["from"];
    Require(from <= items.size(), "items are added where others end");
    items.resize(from);
    for (const json& item : entry["items"]) {
      Require(item.size() == 17 && meshes_.contains(item[0]), "a mesh comes before its placement");
      items.push_back(item);
    }
  }
}

void PageModel::TakeRemovals(const json& update) {
  for (const json& id : update.value("removedOwners", json::array())) {
    Require(owners_.erase(id) == 1, "what is removed was there");
  }
  for (const json& key : update.value("removedMaterials", json::array())) {
    Require(materials_.erase(key) == 1, "what is removed was there");
  }
  for (const json& number : update.value("removedTextures", json::array())) {
    Require(textures_.erase(number) == 1, "what is removed was there");
  }
  for (const json& number : update.value("removedMeshes", json::array())) {
    Require(meshes_.erase(number) == 1, "what is removed was there");
    for (const auto& [owner, items] : owners_) {
      for (const json& item : items) Require(item[0] != number, "a removed mesh is not placed");
    }
  }
}

void PageModel::TakeFindings(const json& findings) {
  Require(findings["faultsFrom"] == faults_.size(), "faults are added where others end");
  for (const json& fault : findings["faults"]) faults_.push_back(fault);
}

json PageModel::SeenMaterial(const json& key) const {
  const auto found = materials_.find(key.is_null() ? std::string() : key.get<std::string>());
  if (found == materials_.end()) return nullptr;
  json seen = found->second;
  for (const char* field : kTextures) {
    if (!seen.contains(field) || seen[field].is_null()) continue;
    const std::string& texture = textures_.at(seen[field]);
    seen[field] = HexText(std::as_bytes(std::span(texture)));
  }
  return seen;
}

json PageModel::Seen() const {
  json seen = {{"faults", faults_}};
  for (const auto& [name, value] : fields_) {
    static const std::set<std::string> kParts = {
        "type",          "sequence",         "materials",     "meshes",          "placements",
        "removedOwners", "removedMaterials", "removedMeshes", "removedTextures", "findings"};
    if (!kParts.contains(name)) seen[name] = value;
  }
  for (const auto& [key, material] : materials_) seen["materials"][key] = SeenMaterial(key);
  for (const auto& [owner, items] : owners_) {
    for (json item : items) {
      const Mesh& mesh = meshes_.at(item[0]);
      json slots = json::array();
      for (const json& key : mesh.slots) slots.push_back(SeenMaterial(key));
      Fnv hash;
      hash.Add(mesh.content.data(), mesh.content.size());
      item[0] = {DigestText(hash.Value()), slots};
      seen["owners"][owner].push_back(item);
    }
  }
  seen["textures"] = textures_.size();
  seen["meshes"] = meshes_.size();
  return seen;
}

json PageModel::Field(const std::string& name) const {
  const auto found = fields_.find(name);
  return found == fields_.end() ? json(nullptr) : found->second;
}

}  // namespace kvapp::test
