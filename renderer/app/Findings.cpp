#include "app/Findings.h"

#include <cstdio>
#include <utility>

namespace kvapp {

namespace {

constexpr std::size_t kMostPrinted = 10;

}  // namespace

const char* NoteName(NoteKind kind) {
  switch (kind) {
    case NoteKind::DanglingMesh:
      return "danglingMesh";
    case NoteKind::DanglingOwner:
      return "danglingOwner";
    case NoteKind::DanglingTransform:
      return "danglingTransform";
    case NoteKind::DanglingMaterial:
      return "danglingMaterial";
    case NoteKind::MeshIdSentTwice:
      return "meshIdSentTwice";
  }
  return "?";
}

void Findings::SetContext(std::uint64_t command, const char* name) {
  command_ = command;
  name_ = name;
}

void Findings::Fault(std::string text) {
  ++faultCount_;
  if (printed_.size() < kMostPrinted && printed_.insert(text).second) {
    const std::string where =
        command_ == 0 ? "" : "command " + std::to_string(command_) + " " + std::string(name_) + ": ";
    std::fprintf(stderr, "KvApp: %s%s\n", where.c_str(), text.c_str());
  }
  if (faults_.size() < kMostListed) faults_.push_back({command_, name_, std::move(text)});
}

void Findings::Note(NoteKind kind, std::string text) {
  ++noteCounts_[NoteName(kind)];
  if (notes_.size() < kMostListed) {
    notes_.push_back({command_, NoteName(kind), std::move(text)});
  }
}

}  // namespace kvapp
