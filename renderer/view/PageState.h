#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "view/Mirror.h"

namespace kvapp::view {

// One message to a page: the head, then bytes that `owner` keeps alive.
struct Frame {
  bool text = false;
  std::string head;
  std::shared_ptr<const void> owner;
  std::array<std::span<const std::byte>, 2> body;
};

// What one page has, and what it is to be told next. What changes while the page is busy is told
// once, as it is then, so this never grows beyond the scene however long the page takes. The
// server's thread.
class PageState {
 public:
  // The page has nothing.
  explicit PageState(const Mirror& mirror);

  // These are no longer what the page was told.
  void Mark(const std::vector<Part>& parts);
  // The next message; empty when the page has everything.
  std::optional<Frame> Next();
  // The last one that Next told of.
  std::uint64_t Sequence() const { return sequence_; }

 private:
  struct PartHash {
    std::size_t operator()(const Part& part) const {
      return std::hash<std::uint64_t>()(part.id * 16 + static_cast<std::uint64_t>(part.kind));
    }
  };
  struct KnownOwner {
    std::uint64_t generation = 0;
    std::size_t items = 0;
  };
  // Gathers an update until it is large enough.
  struct Update {
    nlohmann::json fields = nlohmann::json::object();
    std::string placements;
    std::size_t size = 0;

    void Add(const char* list, nlohmann::json entry, std::size_t bytes);
    bool Empty() const { return fields.empty() && placements.empty(); }
    Frame Message() const;
  };

  void First(Part part);
  // Empty when the part went into the update or needs nothing; else a frame that must come before.
  std::optional<Frame> Tell(const Part& part, Update& update);
  void TellFindings(Update& update);
  void TellMaterial(std::uint64_t key, Update& update);
  void TellOwner(std::uint64_t id, Update& update);
  void TellSlots(std::uint64_t number, Update& update);
  std::optional<Frame> TellMesh(std::uint64_t number);
  std::optional<Frame> TellTexture(std::uint64_t number);

  const Mirror& mirror_;
  std::deque<Part> order_;
  std::unordered_set<Part, PartHash> due_;
  std::optional<Frame> held_;
  std::uint64_t sequence_ = 0;
  std::size_t faults_ = 0;
  std::size_t notes_ = 0;
  std::unordered_set<std::uint64_t> materials_;
  std::unordered_set<std::uint64_t> textures_;
  std::unordered_set<std::uint64_t> meshes_;
  std::unordered_map<std::uint64_t, KnownOwner> owners_;
};

}  // namespace kvapp::view
