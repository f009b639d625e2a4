#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kvapp {

struct Finding {
  std::uint64_t command = 0;  // its number, from 1; 0 outside of commands
  std::string name;           // of the command, or what was at work
  std::string text;           // what was sent and what was wanted
};

// What a peer may leave dangling without being at fault.
enum class NoteKind {
  DanglingMesh,       // a placement of a mesh that came out empty
  DanglingOwner,      // a cached owner whose mesh came out empty
  DanglingTransform,  // a new transform for an owner without a mesh
  DanglingMaterial,   // the material index of an image whose pixels could not be read
  MeshIdSentTwice,    // two meshes under one id in one export
};

const char* NoteName(NoteKind kind);

// Collects what is wrong (faults) and what is only remarkable (notes). Long lists are cut, counts
// are not.
class Findings {
 public:
  static constexpr std::size_t kMostListed = 500;

  // The command that later findings are about. The name is kept as it is given: one for good.
  void SetContext(std::uint64_t command, const char* name);
  // The first few different ones go to standard error too, each once however often it comes.
  void Fault(std::string text);
  void Note(NoteKind kind, std::string text);

  std::uint64_t FaultCount() const { return faultCount_; }
  const std::vector<Finding>& Faults() const { return faults_; }
  const std::vector<Finding>& Notes() const { return notes_; }
  const std::map<std::string, std::uint64_t>& NoteCounts() const { return noteCounts_; }

 private:
  std::uint64_t command_ = 0;
  const char* name_ = "";
  std::uint64_t faultCount_ = 0;
  std::set<std::string> printed_;
  std::vector<Finding> faults_;
  std::vector<Finding> notes_;
  std::map<std::string, std::uint64_t> noteCounts_;
};

}  // namespace kvapp
