// The way of a face from the host to the mesh, in its steps.
#include <cstring>
#include <set>
#include <vector>

#include <benchmark/benchmark.h>

#include "GeneratedScene.h"
#include "PartsRegistry.h"
#include "geometry/FaceCollector.h"
#include "geometry/HostMesh.h"
#include "geometry/MeshBuilder.h"
#include "geometry/Tessellation.h"

namespace bench {

namespace {

using namespace quellix;

constexpr std::size_t kFaces = 20000;

// A definition of the mixed scene.
struct Collection {
  SUEntitiesRef su_entities;
  std::vector<SUFaceRef> su_faces;
};

const std::vector<Collection>& Collections() {
  static const std::vector<Collection> collections = [] {
    const SUModelRef su_model = BuildScene({kFaces, 20, 20, false, 0, 1});
    std::vector<Collection> all;
    std::size_t count = 0;
    SUModelGetNumComponentDefinitions(su_model, &count);
    std::vector<SUComponentDefinitionRef> su_definitions(count,
                                                         SUComponentDefinitionRef SU_INVALID);
    SUModelGetComponentDefinitions(su_model, count, su_definitions.data(), &count);
    for (const SUComponentDefinitionRef su_definition : su_definitions) {
      Collection& collection = all.emplace_back();
      SUComponentDefinitionGetEntities(su_definition, &collection.su_entities);
      SUEntitiesGetNumFaces(collection.su_entities, &count);
      collection.su_faces.assign(count, SUFaceRef SU_INVALID);
      SUEntitiesGetFaces(collection.su_entities, count, collection.su_faces.data(), &count);
    }
    return all;
  }();
  return collections;
}

const std::vector<SUFaceRef>& Faces() {
  static const std::vector<SUFaceRef> faces = [] {
    std::vector<SUFaceRef> all;
    for (const Collection& collection : Collections()) {
      all.insert(all.end(), collection.su_faces.begin(), collection.su_faces.end());
    }
    return all;
  }();
  return faces;
}

// Collects all faces, each in its own collection; `visit` gets the index of each.
template <class Visit>
void CollectAll(FaceCollector& collector, Visit&& visit) {
  for (const Collection& collection : Collections()) {
    collector.EnterScope(collection.su_entities, collection.su_faces.size());
    for (const SUFaceRef su_face : collection.su_faces) {
      visit(collector.CollectSmoothingGroup(su_face));
    }
  }
}

// Into a buffer as an export fills it: not touched before, grown as it goes.
void AppendOwn(FaceCollector& collector, std::uint32_t face, TessMesh& mesh, MeshBuffer& buffer) {
  if (!TessellateFace(collector, face, mesh)) return;
  AppendFace({mesh.positions, mesh.normals, mesh.indexes, {}, {}, 0, 1}, FaceTransform(), buffer);
}

std::size_t OwnPath(MeshBuffer& buffer) {
  FaceCollector collector;
  TessMesh mesh;
  CollectAll(collector, [&](std::uint32_t face) { AppendOwn(collector, face, mesh, buffer); });
  return buffer.vertices.size();
}

void BM_OwnPath(benchmark::State& state) {
  for (auto _ : state) {
    MeshBuffer buffer;
    benchmark::DoNotOptimize(OwnPath(buffer));
  }
}

void BM_Collection(benchmark::State& state) {
  for (auto _ : state) {
    FaceCollector collector;
    CollectAll(collector, [](std::uint32_t) {});
    benchmark::ClobberMemory();
  }
}

// What collection asks of the host, with the answers thrown away. Each edge is asked once.
class HostCalls {
 public:
  HostCalls() {
    for (const SUFaceRef su_face : Faces()) Add(su_face);
  }
  void Make() {
    SUPlane3D plane{};
    SUPoint3D point{};
    SULoopRef su_loop = SU_INVALID;
    std::size_t count = 0;
    bool smooth = false;
    for (const Loops& face : faces) {
      SUFaceGetPlane(face.su_face, &plane);
      SUFaceGetOuterLoop(face.su_face, &su_loop);
      SUFaceGetNumInnerLoops(face.su_face, &count);
      if (count > 0) SUFaceGetInnerLoops(face.su_face, count, su_loops, &count);
      for (std::size_t l = face.begin; l < face.end; ++l) {
        const One& loop = loops[l];
        SULoopGetNumVertices(loop.su_loop, &count);
        SULoopGetVertices(loop.su_loop, loop.corners, su_vertices, &count);
        SULoopGetEdges(loop.su_loop, loop.corners, su_edges, &count);
        for (std::size_t i = 0; i < loop.corners; ++i) {
          SUVertexGetPosition(su_vertices[i], &point);
        }
      }
      SUFaceGetNumOpenings(face.su_face, &count);
      for (std::size_t e = face.firstEdge; e < face.lastEdge; ++e) {
        SUEdgeGetSmooth(edges[e], &smooth);
        if (!smooth) continue;
        SUEdgeGetNumFaces(edges[e], &count);
        SUEdgeGetFaces(edges[e], count, su_faces, &count);
      }
    }
  }

 private:
  static constexpr std::size_t kMost = 64;
  struct One {
    SULoopRef su_loop;
    std::size_t corners;
  };
  struct Loops {
    SUFaceRef su_face;
    std::size_t begin, end;
    std::size_t firstEdge, lastEdge;
  };

  void Add(SUFaceRef su_face) {
    Loops face{su_face, loops.size(), 0, edges.size(), 0};
    SULoopRef su_outer = SU_INVALID;
    SUFaceGetOuterLoop(su_face, &su_outer);
    AddLoop(su_outer);
    std::size_t count = 0;
    SUFaceGetInnerLoops(su_face, kMost, su_loops, &count);
    for (std::size_t i = 0; i < count; ++i) AddLoop(su_loops[i]);
    face.end = loops.size();
    face.lastEdge = edges.size();
    faces.push_back(face);
  }
  void AddLoop(SULoopRef su_loop) {
    std::size_t count = 0;
    SULoopGetEdges(su_loop, kMost, su_edges, &count);
    loops.push_back({su_loop, count});
    for (std::size_t i = 0; i < count; ++i) {
      if (known.insert(su_edges[i].ptr).second) edges.push_back(su_edges[i]);
    }
  }

  std::vector<Loops> faces;
  std::vector<One> loops;
  std::vector<SUEdgeRef> edges;
  std::set<void*> known;
  SULoopRef su_loops[kMost];
  SUVertexRef su_vertices[kMost];
  SUEdgeRef su_edges[kMost];
  SUFaceRef su_faces[kMost];
};

void BM_CollectionHostCalls(benchmark::State& state) {
  static HostCalls calls;
  for (auto _ : state) calls.Make();
}

void BM_TessellationAndPacking(benchmark::State& state) {
  static FaceCollector collector;
  std::vector<std::uint32_t> faces;
  CollectAll(collector, [&](std::uint32_t face) { faces.push_back(face); });
  TessMesh mesh;
  for (auto _ : state) {
    MeshBuffer buffer;
    for (const std::uint32_t face : faces) AppendOwn(collector, face, mesh, buffer);
    benchmark::ClobberMemory();
  }
}

void BM_MeshHelperPath(benchmark::State& state) {
  TessMesh mesh;
  for (auto _ : state) {
    MeshBuffer buffer;
    for (const SUFaceRef su_face : Faces()) {
      MeshHelper helper;
      helper.Create(su_face);
      helper.Read(mesh);
      AppendFace({mesh.positions, mesh.normals, mesh.indexes, {}, {}, 0, 1}, FaceTransform(),
                 buffer);
    }
    benchmark::ClobberMemory();
  }
}

const MeshBuffer& Finished() {
  static const MeshBuffer buffer = [] {
    MeshBuffer mesh;
    OwnPath(mesh);
    return mesh;
  }();
  return buffer;
}

// Face by face into a buffer that is as fresh and grows as the own path's does.
void BM_CopyFresh(benchmark::State& state) {
  const MeshBuffer& source = Finished();
  const std::size_t vertices = source.vertices.size() / kFaces;
  const std::size_t words = source.triangles.size() / kFaces;
  for (auto _ : state) {
    MeshBuffer copy;
    for (std::size_t i = 0; i < kFaces; ++i) {
      const auto vertex = source.vertices.begin() + static_cast<std::ptrdiff_t>(i * vertices);
      const auto word = source.triangles.begin() + static_cast<std::ptrdiff_t>(i * words);
      copy.vertices.insert(copy.vertices.end(), vertex,
                           vertex + static_cast<std::ptrdiff_t>(vertices));
      copy.triangles.insert(copy.triangles.end(), word, word + static_cast<std::ptrdiff_t>(words));
    }
    benchmark::ClobberMemory();
  }
}

// The same bytes in one piece into memory that was written before.
void BM_CopyWarm(benchmark::State& state) {
  const MeshBuffer& source = Finished();
  MeshBuffer copy = source;
  for (auto _ : state) {
    std::memcpy(copy.vertices.data(), source.vertices.data(),
                source.vertices.size() * sizeof(MeshVertex));
    std::memcpy(copy.triangles.data(), source.triangles.data(),
                source.triangles.size() * sizeof(std::uint32_t));
    benchmark::ClobberMemory();
  }
}

void BM_ConeOf4000Faces(benchmark::State& state) {
  const SUModelRef su_model = BuildCone(4000);
  SUEntitiesRef su_entities = SU_INVALID;
  SUModelGetEntities(su_model, &su_entities);
  std::vector<SUFaceRef> su_faces(4000, SUFaceRef SU_INVALID);
  std::size_t count = 0;
  SUEntitiesGetFaces(su_entities, su_faces.size(), su_faces.data(), &count);
  for (auto _ : state) {
    FaceCollector collector;
    TessMesh mesh;
    MeshBuffer buffer;
    for (const SUFaceRef su_face : su_faces) {
      AppendOwn(collector, collector.CollectSmoothingGroup(su_face), mesh, buffer);
    }
  }
  SUModelRef su_released = su_model;
  SUModelRelease(&su_released);
}

void BM_FaceOf20000Corners(benchmark::State& state) {
  const SUModelRef su_model = BuildLargeFace(20000, 1000);
  SUEntitiesRef su_entities = SU_INVALID;
  SUModelGetEntities(su_model, &su_entities);
  SUFaceRef su_face = SU_INVALID;
  std::size_t count = 0;
  SUEntitiesGetFaces(su_entities, 1, &su_face, &count);
  for (auto _ : state) {
    FaceCollector collector;
    TessMesh mesh;
    MeshBuffer buffer;
    AppendOwn(collector, collector.CollectSmoothingGroup(su_face), mesh, buffer);
  }
  SUModelRef su_released = su_model;
  SUModelRelease(&su_released);
}

BENCHMARK(BM_OwnPath)->Unit(benchmark::kNanosecond);
BENCHMARK(BM_Collection);
BENCHMARK(BM_CollectionHostCalls);
BENCHMARK(BM_TessellationAndPacking);
BENCHMARK(BM_MeshHelperPath);
BENCHMARK(BM_CopyFresh);
BENCHMARK(BM_CopyWarm);
BENCHMARK(BM_ConeOf4000Faces);
BENCHMARK(BM_FaceOf20000Corners);

double OwnWork(const Times& t) {
  return t.at("BM_OwnPath") - t.at("BM_CollectionHostCalls");
}

constexpr auto kLower = Figures::Better::Lower;

const Figure kFigures[] = {
    {"own_path_vs_copy", "x", kLower, 30.0,
     [](const Times& t) { return OwnWork(t) / t.at("BM_CopyFresh"); }},
    {"own_path_vs_warm_copy",
     "x",
     kLower,
     {},
     [](const Times& t) { return OwnWork(t) / t.at("BM_CopyWarm"); }},
    {"own_path_vs_mesh_helper", "x", kLower, 1.0,
     [](const Times& t) { return t.at("BM_OwnPath") / t.at("BM_MeshHelperPath"); }},
    {"own_path_ns_per_face",
     "ns",
     kLower,
     {},
     [](const Times& t) { return OwnWork(t) / static_cast<double>(kFaces); }},
    {"cone_4k_ms", "ms", kLower, 1000.0,
     [](const Times& t) { return t.at("BM_ConeOf4000Faces") / 1e6; }},
    {"face_20k_corners_ms", "ms", kLower, 2000.0,
     [](const Times& t) { return t.at("BM_FaceOf20000Corners") / 1e6; }},
};

}  // namespace

}  // namespace bench
