#include "view/Feed.h"

#include <iterator>
#include <unordered_map>
#include <utility>

#include "app/Report.h"
#include "app/SceneJson.h"

namespace kvapp::view {

using nlohmann::json;
using quellix::wire::CommandId;

namespace {

MeshContent ContentOf(const std::shared_ptr<Mesh>& mesh) {
  return {{mesh, &mesh->geometry}, mesh->id, mesh->pass != 0, mesh->manifold};
}

std::vector<Slot> SlotsOf(const Mesh& mesh) {
  std::vector<Slot> slots;
  slots.reserve(mesh.slots.size());
  for (const MaterialSlot& slot : mesh.slots) {
    std::optional<std::uint64_t> key;
    if (slot.resolved) key = slot.key;
    slots.push_back({slot.index, key});
  }
  return slots;
}

// Commands that come by the thousand and change no field.
bool IsContent(CommandId id) {
  return id == CommandId::AppendMaterial || id == CommandId::AppendPBRMaterial ||
         id == CommandId::AppendMesh || id == CommandId::InstanciateMesh ||
         id == CommandId::UpdateInstanceTransform;
}

}  // namespace

Feed::Feed(const Scene& scene, const Findings& findings, std::function<void()> wake)
    : scene_(scene), findings_(findings), wake_(std::move(wake)) {
  Set(Field::Session, {{"state", "running"}, {"reason", ""}});
  Set(Field::Export, {{"number", 0}, {"running", false}});
  Put();
}

void Feed::ExportBegan(std::uint64_t number) {
  changes_.emplace_back(change::ExportBegan{});
  Set(Field::Export, {{"number", number}, {"running", true}});
}

void Feed::TookMaterial(const std::shared_ptr<const Material>& material) {
  changes_.emplace_back(change::TookMaterial{material});
}

void Feed::TookIndex(std::uint32_t index, std::uint64_t key) {
  changes_.emplace_back(change::TookIndex{index, key});
}

void Feed::Placed(const Placement& placement, bool first) {
  changes_.emplace_back(change::Placed{ContentOf(placement.mesh), SlotsOf(*placement.mesh),
                                       placement.owner, placement.transform, first});
}

void Feed::Moved(std::uint64_t owner, const Matrix& transform) {
  changes_.emplace_back(change::Moved{owner, transform});
}

void Feed::Commit(std::uint64_t command, CommandId id) {
  command_ = command;
  if (id == CommandId::SetModelName) named_ = std::chrono::steady_clock::now();
  if (!IsContent(id)) SetFields();
  if (std::exchange(exportEnded_, false)) {
    if (!lost_) changes_.emplace_back(Everything());
    SetExport();
  }
  SetFindings();
  Put();
}

void Feed::AtRest() {
  SetFindings();
  if (lost_ || !changes_.empty()) Put();
}

void Feed::SessionEnded(const std::string& reason) {
  SetFindings();
  Set(Field::Session, {{"state", "ended"}, {"reason", reason}});
  Put();
}

void Feed::Set(Field field, json value) {
  json& told = told_[static_cast<std::size_t>(field)];
  if (told == value) return;
  told = value;
  changes_.emplace_back(change::SetField{field, std::move(value)});
}

void Feed::SetFields() {
  Set(Field::Model, scene_.ModelName());
  Set(Field::Message, scene_.LastMessage());
  Set(Field::Progress, std::max(scene_.LastProgress(), 0.f));
  Set(Field::CameraLinked, scene_.Linked().value_or(false));
  if (scene_.Camera()) Set(Field::Camera, CameraToJson(*scene_.Camera()));
  if (scene_.BackgroundSettings()) {
    Set(Field::Background, BackgroundToJson(*scene_.BackgroundSettings()));
  }
}

void Feed::SetExport() {
  const ExportSummary& summary = scene_.Exports().back();
  Set(Field::Export, {{"number", summary.number}, {"running", false}});
  json last = ExportToJson(summary);
  last["ms"] =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - named_).count();
  Set(Field::LastExport, std::move(last));
  json lights = json::array();
  for (const Light& light : scene_.Lights()) lights.push_back(LightToJson(light));
  Set(Field::Lights, std::move(lights));
}

void Feed::SetFindings() {
  const auto& faults = findings_.Faults();
  const auto& notes = findings_.Notes();
  if (findings_.FaultCount() == findingsTold_.faultCount &&
      findings_.NoteCounts() == findingsTold_.noteCounts) {
    return;
  }
  changes_.emplace_back(change::Found{
      findings_.FaultCount(),
      findings_.NoteCounts(),
      {faults.begin() + static_cast<std::ptrdiff_t>(findingsTold_.faults), faults.end()},
      {notes.begin() + static_cast<std::ptrdiff_t>(findingsTold_.notes), notes.end()}});
  findingsTold_ = {findings_.FaultCount(), faults.size(), notes.size(), findings_.NoteCounts()};
}

change::Everything Feed::Everything() const {
  change::Everything all;
  all.keyOfIndex = scene_.KeyOfIndex();
  all.materials = scene_.ShownMaterials();
  std::unordered_map<std::uint64_t, bool> known;
  for (const auto& material : all.materials) known[material->key] = true;
  std::unordered_map<const Mesh*, std::size_t> numbers;
  for (const Placement& placement : scene_.ShownPlacements()) {
    const auto [found, added] = numbers.try_emplace(placement.mesh.get(), all.meshes.size());
    if (added) {
      all.meshes.push_back(ContentOf(placement.mesh));
      all.slots.push_back(SlotsOf(*placement.mesh));
      // A material that is gone is still that of the meshes for which there is no other.
      for (const MaterialSlot& slot : placement.mesh->slots) {
        if (slot.material && std::exchange(known[slot.material->key], true) == false) {
          all.materials.push_back(slot.material);
        }
      }
    }
    all.items.push_back({placement.owner, found->second, placement.transform});
  }
  return all;
}

// A server that fell behind by so much gets all anew; how long that takes does not matter then.
void Feed::Put() {
  std::size_t waiting = 0;
  {
    const std::lock_guard lock(mutex_);
    waiting = steps_.size();
  }
  if (waiting >= kMostSteps || (lost_ && waiting > 0)) {
    lost_ = true;
    changes_.clear();
    return;
  }
  if (std::exchange(lost_, false)) PutAllAnew();
  if (changes_.empty()) return;
  findingsPut_ = findingsTold_;
  bool wake = false;
  {
    const std::lock_guard lock(mutex_);
    wake = steps_.empty();
    steps_.push_back({command_, std::chrono::steady_clock::now(), std::exchange(changes_, {})});
  }
  if (wake) wake_();
}

void Feed::PutAllAnew() {
  changes_.clear();
  changes_.emplace_back(Everything());
  for (std::size_t i = 0; i < told_.size(); ++i) {
    if (!told_[i].is_null()) {
      changes_.emplace_back(change::SetField{static_cast<Field>(i), told_[i]});
    }
  }
  findingsTold_ = findingsPut_;
  SetFindings();
}

std::vector<Step> Feed::Take() {
  const std::lock_guard lock(mutex_);
  return std::exchange(steps_, {});
}

}  // namespace kvapp::view
