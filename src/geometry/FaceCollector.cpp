#include "geometry/FaceCollector.h"

#include <cmath>

#include "support/Gates.h"

namespace quellix {

namespace {

// A plane whose (a, b, c) is shorter has no direction.
constexpr double kNoDirection = 1e-30;
// The first and last point of an opening are one when their L1 distance is below this.
constexpr double kSamePoint = 1e-9;

// Openings belong to whoever asked for them.
struct OwnedOpenings {
  std::vector<SUOpeningRef> su_openings;

  explicit OwnedOpenings(SUFaceRef su_face) {
    std::size_t count = 0;
    if (SUFaceGetNumOpenings(su_face, &count) != SU_ERROR_NONE || count == 0) return;
    su_openings.assign(count, SUOpeningRef SU_INVALID);
    SUFaceGetOpenings(su_face, count, su_openings.data(), &count);
  }
  OwnedOpenings(const OwnedOpenings&) = delete;
  OwnedOpenings& operator=(const OwnedOpenings&) = delete;
  ~OwnedOpenings() {
    for (SUOpeningRef& su_opening : su_openings) {
      if (SUIsValid(su_opening)) SUOpeningRelease(&su_opening);
    }
  }
};

// The points of an opening, without a repeat of the first at the end; fewer than 3 when it is none.
std::vector<Point> ReadOpening(SUOpeningRef su_opening) {
  std::size_t count = 0;
  if (SUOpeningGetNumPoints(su_opening, &count) != SU_ERROR_NONE || count < 3) return {};
  std::vector<SUPoint3D> su_points(count);
  if (SUOpeningGetPoints(su_opening, count, su_points.data(), &count) != SU_ERROR_NONE) return {};
  std::vector<Point> points;
  for (std::size_t i = 0; i < count && i < su_points.size(); ++i) {
    points.emplace_back(su_points[i].x, su_points[i].y, su_points[i].z);
  }
  if (points.size() >= 2) {
    const Point gap = glm::abs(points.front() - points.back());
    if (gap.x + gap.y + gap.z < kSamePoint) points.pop_back();
  }
  return points;
}

}  // namespace

void FaceCollector::Clear() {
  faceIndexes.Clear();
  edgeIndexes.Clear();
  faces.Clear();
  edges.Clear();
  memory.release();
  fans.Clear();
}

void FaceCollector::Reserve(std::uint64_t faceCount) {
  // Four corners a face and two faces an edge would be two; not all are welded.
  constexpr std::uint64_t kEdgesPerFace = 3;
  faceIndexes.Reserve(faceCount);
  edgeIndexes.Reserve(kEdgesPerFace * faceCount);
}

std::uint32_t FaceCollector::FaceIndex(SUFaceRef su_face) {
  const auto next = static_cast<std::uint32_t>(faces.size());
  const std::uint32_t index = faceIndexes.FindOrInsert(
      HandleKey(su_face), next, [this](std::uint32_t i) { return HandleKey(faces[i].su_face); });
  if (index == next) faces.Append().su_face = su_face;
  return index;
}

std::uint32_t FaceCollector::EdgeIndex(SUEdgeRef su_edge) {
  const auto next = static_cast<std::uint32_t>(edges.size());
  const std::uint64_t key = HandleKey(su_edge);
  const std::uint32_t index =
      edgeIndexes.FindOrInsert(key, next, [this](std::uint32_t i) { return edges[i].key; });
  if (index == next) edges.Append().key = key;
  return index;
}

const FaceData& FaceCollector::CollectFaceData(SUFaceRef su_face) {
  const std::uint32_t face = FaceIndex(su_face);
  Collect(face);
  return faces[face];
}

void FaceCollector::Collect(std::uint32_t face) {
  FaceData& data = faces[face];
  if (data.started) return;
  data.started = 1;
  {
    const GateGuard gate = GateAcquire(Gate::FaceData);
    if (!ReadFace(data)) return;
  }
  // Each look-up ends at the edge's own record, which is fetched while the others are looked for.
  for (std::size_t l = 0; l < loopsRead; ++l) {
    for (const SUEdgeRef su_edge : loopScratch[l].edges) {
      edgeIndexes.PrefetchEntry(HandleKey(su_edge), [this](std::uint32_t i) { return &edges[i]; });
    }
  }
  edgeScratch.clear();
  for (std::size_t l = 0; l < loopsRead; ++l) {
    for (const SUEdgeRef su_edge : loopScratch[l].edges) edgeScratch.push_back(EdgeIndex(su_edge));
  }
  data.Pack({loopScratch.data(), loopsRead}, edgeScratch, memory);
  ReadEdges(face);
  data.valid = 1;
}

bool FaceCollector::ReadFace(FaceData& data) {
  SUPlane3D su_plane = {};
  if (SUFaceGetPlane(data.su_face, &su_plane) != SU_ERROR_NONE) return false;
  const Point direction(su_plane.a, su_plane.b, su_plane.c);
  const double length = glm::length(direction);
  if (!(length >= kNoDirection)) return false;
  data.normal = direction / length;
  if (!ReadLoops(data.su_face)) return false;
  ReadOpenings(data);
  return true;
}

// An inner loop that cannot be read is left out.
bool FaceCollector::ReadLoops(SUFaceRef su_face) {
  const auto read = [this](SULoopRef su_loop) {
    if (loopsRead == loopScratch.size()) loopScratch.emplace_back();
    const LoopData& loop = loopScratch[loopsRead];
    if (!ReadLoop(su_loop, loopScratch[loopsRead])) return false;
    ++loopsRead;
    // They are looked up once the host has told the rest of the face.
    for (const SUEdgeRef su_edge : loop.edges) edgeIndexes.Prefetch(HandleKey(su_edge));
    return true;
  };
  loopsRead = 0;
  SULoopRef su_outer = SU_INVALID;
  if (SUFaceGetOuterLoop(su_face, &su_outer) != SU_ERROR_NONE || !read(su_outer)) return false;
  std::size_t count = 0;
  if (SUFaceGetNumInnerLoops(su_face, &count) != SU_ERROR_NONE || count == 0) return true;
  std::vector<SULoopRef> su_inner(count, SULoopRef SU_INVALID);
  if (SUFaceGetInnerLoops(su_face, count, su_inner.data(), &count) != SU_ERROR_NONE) return true;
  for (std::size_t i = 0; i < count && i < su_inner.size(); ++i) read(su_inner[i]);
  return true;
}

void FaceCollector::ReadOpenings(FaceData& data) {
  const OwnedOpenings owned(data.su_face);
  for (const SUOpeningRef su_opening : owned.su_openings) {
    std::vector<Point> points = ReadOpening(su_opening);
    if (points.size() < 3) continue;
    if (!data.openings) data.openings = std::make_unique<std::vector<std::vector<Point>>>();
    data.openings->push_back(std::move(points));
  }
}

void FaceCollector::ReadEdges(std::uint32_t face) {
  std::size_t corner = 0;
  for (std::size_t l = 0; l < loopsRead; ++l) {
    for (const SUEdgeRef su_edge : loopScratch[l].edges) {
      EdgeData& edge = edges[edgeScratch[corner++]];
      if (!edge.read) ReadEdge(edge, su_edge, face);
    }
  }
}

void FaceCollector::ReadEdge(EdgeData& edge, SUEdgeRef su_edge, std::uint32_t face) {
  edge.read = 1;
  const GateGuard gate = GateAcquire(Gate::FaceData);
  bool smooth = false;
  if (SUEdgeGetSmooth(su_edge, &smooth) != SU_ERROR_NONE || !smooth) return;
  edge.smooth = 1;
  std::size_t count = 0;
  if (SUEdgeGetNumFaces(su_edge, &count) != SU_ERROR_NONE || count == 0) return;
  su_faceScratch.assign(count, SUFaceRef SU_INVALID);
  if (SUEdgeGetFaces(su_edge, count, su_faceScratch.data(), &count) != SU_ERROR_NONE) return;
  if (count < su_faceScratch.size()) su_faceScratch.resize(count);
  edge.faceCount = static_cast<std::uint32_t>(su_faceScratch.size()) & 0x3fffffffu;
  std::uint32_t* indexes = edge.faces;
  if (su_faceScratch.size() > 2) {
    indexes = std::pmr::polymorphic_allocator<std::uint32_t>(&memory).allocate(edge.faceCount);
    edge.manyFaces = indexes;
  }
  const SUFaceRef su_own = faces[face].su_face;
  for (std::size_t i = 0; i < su_faceScratch.size(); ++i) {
    const SUFaceRef su_face = su_faceScratch[i];
    indexes[i] = SUAreEqual(su_face, su_own) ? face : FaceIndex(su_face);
  }
}

std::uint32_t FaceCollector::CollectSmoothingGroup(SUFaceRef su_face) {
  const std::uint32_t start = FaceIndex(su_face);
  FaceData& first = faces[start];
  if (first.visited) return first.valid ? start : kNone;
  Collect(start);
  first.visited = 1;
  if (!first.valid) return kNone;

  std::vector<std::uint32_t>& stack = walkScratch;
  stack.assign(1, start);
  while (!stack.empty()) {
    const FaceData& face = faces[stack.back()];
    stack.pop_back();
    if (!face.valid) continue;
    for (const std::uint32_t edge : face.Edges()) {
      for (const std::uint32_t neighbour : FacesAt(edge)) {
        if (faces[neighbour].visited) continue;
        faces[neighbour].visited = 1;
        Collect(neighbour);
        stack.push_back(neighbour);
      }
    }
  }
  return start;
}

bool FaceCollector::GatherFacePoints(std::uint32_t face, std::vector<Point>& points) const {
  points.clear();
  if (face == kNone || !faces[face].valid) return false;
  const FaceData& data = faces[face];
  const std::span<const Point> corners = data.Positions();
  points.assign(corners.begin(), corners.end());
  for (const std::vector<Point>& opening : data.Openings()) {
    points.insert(points.end(), opening.begin(), opening.end());
  }
  return true;
}

std::uint32_t FaceCollector::FindFace(SUFaceRef su_face) const {
  return faceIndexes.Find(HandleKey(su_face),
                          [this](std::uint32_t i) { return HandleKey(faces[i].su_face); });
}

const FaceData* FaceCollector::FindFaceData(SUFaceRef su_face) const {
  const std::uint32_t face = FindFace(su_face);
  return face == kNone || !faces[face].started ? nullptr : &faces[face];
}

}  // namespace quellix
