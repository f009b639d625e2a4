#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <SketchUpAPI/sketchup.h>
#include <glm/glm.hpp>

// The calls that the geometry makes of the host, answered from faces that a test writes down: also
// faces that no host would hold, answers that fail, and counts of what was asked and released.
// Programs that use it do not link a host.

namespace scripted {

// A texture that the host has no helper for, and one whose front helper gives (not a number, y).
inline constexpr long kTextureWithoutHelper = 13;
inline constexpr long kTextureWithoutNumbers = 14;

struct Vertex {
  glm::dvec3 position;
};

struct Face;

struct Edge {
  bool smooth = false;
  bool smoothFails = false;
  bool soft = false;
  Vertex* ends[2] = {nullptr, nullptr};
  std::vector<Face*> faces;
};

struct Loop {
  std::vector<Vertex*> vertices;
  std::vector<Edge*> edges;
  // What the host claims to have written, when that is not the number of edges.
  std::size_t edgesWritten = 0;
};

// What the host's own triangulator would give.
struct HelperMesh {
  std::vector<glm::dvec3> positions;
  std::vector<glm::dvec3> normals;
  std::vector<std::size_t> indexes;
};

struct Face {
  int id = 0;
  glm::dvec4 plane{0.0, 0.0, 1.0, 0.0};
  bool planeFails = false;
  std::deque<Loop> loops;  // the outer one first
  std::vector<std::vector<glm::dvec3>> openings;
  HelperMesh helper;
  // Run while the plane is read, and while a mesh helper is made, if set: they may wait or throw.
  std::function<void()> onRead;
  std::function<void()> onHelper;

  SUFaceRef ref() { return SUFaceRef{this}; }
};

class SU_EXPORT Host {
 public:
  Host();
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  Vertex* AddVertex(const glm::dvec3& position);
  // The edge between two vertices, made when there is none yet.
  Edge* EdgeBetween(Vertex* a, Vertex* b);
  // A face with the given outline and holes; the plane's normal follows from the outline.
  Face* AddFace(const std::vector<Vertex*>& outline,
                const std::vector<std::vector<Vertex*>>& holes = {});
  // The same from points that no other face shares.
  Face* AddFace(const std::vector<glm::dvec3>& outline,
                const std::vector<std::vector<glm::dvec3>>& holes = {});
  void AddLoop(Face* face, const std::vector<Vertex*>& vertices);
  // The host's triangulation becomes the fan of the outline.
  void GiveHelperFan(Face* face);
  void MakeSmooth(Vertex* a, Vertex* b) { EdgeBetween(a, b)->smooth = true; }

  // How often a call was made, e.g. "SUFaceGetPlane".
  int Calls(const std::string& name) const;
  // Openings, mesh helpers and UV helpers that were handed out and not released.
  int Outstanding() const { return outstanding; }

  void Count(const char* name) {
    const std::lock_guard lock(callsMutex);
    ++calls[name];
  }
  std::atomic<int> outstanding{0};

 private:
  std::deque<Vertex> vertices;
  std::map<std::pair<Vertex*, Vertex*>, std::unique_ptr<Edge>> edges;
  std::deque<Face> faces;
  mutable std::mutex callsMutex;
  std::map<std::string, int> calls;
};

}  // namespace scripted
