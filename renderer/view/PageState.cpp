#include "view/PageState.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "app/Report.h"

namespace kvapp::view {

using nlohmann::json;

namespace {

// An update of about this size is sent; what follows comes in the next.
constexpr std::size_t kUpdateBytes = 1 << 16;
constexpr std::size_t kMostItems = 1000;

constexpr std::uint32_t kMeshFrame = 1;
constexpr std::uint32_t kTextureFrame = 2;
constexpr std::uint32_t kFacesCamera = 1;
constexpr std::uint32_t kManifold = 2;

template <class... Values>
std::string Header(Values... values) {
  std::string header;
  (header.append(reinterpret_cast<const char*>(&values), sizeof values), ...);
  header.resize(32);
  return header;
}

// The shortest text that reads as the same float, unlike a JSON library's doubles.
void AppendFloat(std::string& text, float value) {
  char digits[32];
  const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value);
  text.append(digits, end);
}

Frame MeshFrame(std::uint32_t number, const Mirror::MeshEntry& mesh) {
  const Geometry& geometry = *mesh.content.geometry;
  const std::uint32_t flags =
      (mesh.content.facesCamera ? kFacesCamera : 0) | (mesh.content.manifold ? kManifold : 0);
  return {false,
          Header(kMeshFrame, number, mesh.content.id, geometry.vertexCount, geometry.triangleCount,
                 static_cast<std::uint32_t>(mesh.slots.size()), flags),
          mesh.content.geometry,
          {std::as_bytes(geometry.Vertices()), std::as_bytes(geometry.Triangles())}};
}

Frame TextureFrame(std::uint32_t number, const Mirror::TextureEntry& texture) {
  auto pixels = std::make_shared<std::vector<std::uint8_t>>(*texture.pixels);
  if (texture.blueFirst) {
    for (std::size_t i = 0; i + 2 < pixels->size(); i += 4) {
      std::swap((*pixels)[i], (*pixels)[i + 2]);
    }
  }
  return {false,
          Header(kTextureFrame, number, texture.width, texture.height),
          pixels,
          {std::as_bytes(std::span(*pixels)), {}}};
}

template <class Findings>
json Listed(const Findings& findings, std::size_t from) {
  json list = json::array();
  for (; from < findings.size(); ++from) list.push_back(FindingToJson(findings[from]));
  return list;
}

}  // namespace

PageState::PageState(const Mirror& mirror) : mirror_(mirror) {
  Mark(mirror.AllParts());
}

void PageState::Mark(const std::vector<Part>& parts) {
  for (const Part& part : parts) {
    if (due_.insert(part).second) order_.push_back(part);
  }
}

void PageState::First(Part part) {
  due_.insert(part);
  order_.push_front(part);
}

std::optional<Frame> PageState::Next() {
  if (held_) return std::exchange(held_, std::nullopt);
  Update update;
  while (!order_.empty() && update.size < kUpdateBytes) {
    const Part part = order_.front();
    order_.pop_front();
    if (due_.erase(part) == 0) continue;
    if (auto frame = Tell(part, update)) {
      if (update.Empty()) return frame;
      held_ = std::move(frame);
      return update.Message();
    }
  }
  if (order_.empty() && mirror_.Sequence() > sequence_) {
    update.fields["sequence"] = sequence_ = mirror_.Sequence();
  }
  if (update.Empty()) return std::nullopt;
  return update.Message();
}

std::optional<Frame> PageState::Tell(const Part& part, Update& update) {
  switch (part.kind) {
    case Kind::Field:
      if (const json& value = mirror_.Value(static_cast<Field>(part.id)); !value.is_null()) {
        update.fields[kNames[part.id]] = value;
        update.size += 500;
      }
      break;
    case Kind::Findings:
      TellFindings(update);
      break;
    case Kind::Material:
      TellMaterial(part.id, update);
      break;
    case Kind::Texture:
      return TellTexture(part.id);
    case Kind::TextureGone:
      if (textures_.erase(part.id) > 0) update.Add("removedTextures", part.id, 10);
      break;
    case Kind::Mesh:
      return TellMesh(part.id);
    case Kind::Slots:
      TellSlots(part.id, update);
      break;
    case Kind::MeshGone:
      if (meshes_.erase(part.id) > 0) update.Add("removedMeshes", part.id, 10);
      break;
    case Kind::Owner:
      TellOwner(part.id, update);
      break;
  }
  return std::nullopt;
}

void PageState::TellFindings(Update& update) {
  const change::Found& findings = mirror_.Findings();
  if (findings.faultCount == 0 && findings.noteCounts.empty()) return;
  update.fields["findings"] = {{"faultCount", findings.faultCount},
                               {"noteCounts", findings.noteCounts},
                               {"faultsFrom", faults_},
                               {"faults", Listed(findings.faults, faults_)},
                               {"notesFrom", notes_},
                               {"notes", Listed(findings.notes, notes_)}};
  update.size += 200 * (findings.faults.size() - faults_ + findings.notes.size() - notes_ + 1);
  faults_ = findings.faults.size();
  notes_ = findings.notes.size();
}

void PageState::TellMaterial(std::uint64_t key, Update& update) {
  const Mirror::MaterialEntry* material = mirror_.Material(key);
  if (material == nullptr) {
    if (materials_.erase(key) > 0) update.Add("removedMaterials", std::to_string(key), 25);
    return;
  }
  for (const auto& use : material->textures) {
    if (textures_.contains(use.number)) continue;
    First({Kind::Material, key});
    First({Kind::Texture, use.number});
    return;
  }
  materials_.insert(key);
  update.Add("materials", material->described, 800);
}

std::optional<Frame> PageState::TellTexture(std::uint64_t number) {
  const Mirror::TextureEntry* texture = mirror_.Texture(number);
  if (texture == nullptr || !textures_.insert(number).second) return std::nullopt;
  return TextureFrame(static_cast<std::uint32_t>(number), *texture);
}

std::optional<Frame> PageState::TellMesh(std::uint64_t number) {
  const Mirror::MeshEntry* mesh = mirror_.Mesh(number);
  if (mesh == nullptr || !meshes_.insert(number).second) return std::nullopt;
  First({Kind::Slots, number});
  return MeshFrame(static_cast<std::uint32_t>(number), *mesh);
}

void PageState::TellSlots(std::uint64_t number, Update& update) {
  const Mirror::MeshEntry* mesh = mirror_.Mesh(number);
  // They follow the geometry, which may be still to come.
  if (mesh == nullptr || !meshes_.contains(number)) return;
  json keys = json::array();
  for (const Slot& slot : mesh->slots) {
    keys.push_back(slot.key ? json(std::to_string(*slot.key)) : json(nullptr));
  }
  update.Add("meshes", {{"mesh", number}, {"slots", std::move(keys)}},
             30 + 25 * mesh->slots.size());
}

void PageState::TellOwner(std::uint64_t id, Update& update) {
  const Mirror::OwnerEntry* owner = mirror_.Owner(id);
  if (owner == nullptr) {
    if (owners_.erase(id) > 0) update.Add("removedOwners", std::to_string(id), 25);
    return;
  }
  KnownOwner& known = owners_[id];
  if (known.generation != owner->generation) known = {owner->generation, 0};
  const auto& items = owner->items;
  const std::size_t from = known.items;
  const std::size_t end = std::min(items.size(), from + kMostItems);
  std::string list;
  for (; known.items < end && meshes_.contains(items[known.items].mesh); ++known.items) {
    const Mirror::Item& item = items[known.items];
    list += list.empty() ? "[" : ",[";
    list += std::to_string(item.mesh);
    for (const float value : item.transform) AppendFloat(list += ',', value);
    list += ']';
  }
  if (known.items < items.size()) {
    First({Kind::Owner, id});
    if (known.items < end) First({Kind::Mesh, items[known.items].mesh});
  }
  if (list.empty()) return;
  update.size += list.size();
  update.placements += (update.placements.empty() ? R"({"owner":")" : R"(,{"owner":")") +
                       std::to_string(id) + R"(","from":)" + std::to_string(from) +
                       R"(,"items":[)" + list + "]}";
}

void PageState::Update::Add(const char* list, json entry, std::size_t bytes) {
  fields[list].push_back(std::move(entry));
  size += bytes;
}

Frame PageState::Update::Message() const {
  std::string text = R"({"type":"update",)";
  if (!placements.empty()) text += R"("placements":[)" + placements + "],";
  const std::string rest = fields.dump(-1, ' ', false, json::error_handler_t::replace);
  if (rest == "{}") {
    text.back() = '}';
  } else {
    text += rest.substr(1);
  }
  return {true, std::move(text), nullptr, {}};
}

}  // namespace kvapp::view
