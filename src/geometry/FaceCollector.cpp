#include "geometry/FaceCollector.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <thread>

#include "geometry/GeometryTimings.h"
#include "support/Gates.h"
#include "support/PerThread.h"

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

// Waits for another thread that reads a face or an edge, which takes it a moment.
template <class Done>
void Await(Done&& done) {
  constexpr int kLooks = 64;
  for (int looks = 0; !done(); ++looks) {
    if (looks >= kLooks) std::this_thread::yield();
  }
}

}  // namespace

// Reused from face to face.
struct FaceCollector::Scratch {
  std::vector<LoopData> loops;
  std::size_t loopsRead = 0;
  std::vector<std::uint32_t> edges;  // the collector's indexes, corner by corner

  // An edge that this thread reads, and what it has found.
  struct ClaimedEdge {
    EdgeData* edge;
    std::uint32_t state = kRead;
    std::size_t faceCount = 0;
  };
  std::vector<ClaimedEdge> claimed;
  std::vector<SUFaceRef> su_faces;  // at the claimed edges, one edge after the other

  // Begins a list of claimed edges and publishes them, or others would wait for ever.
  struct EdgeClaims {
    Scratch& scratch;
    explicit EdgeClaims(Scratch& s) : scratch(s) {
      scratch.claimed.clear();
      scratch.claimed.reserve(scratch.edges.size());
      scratch.su_faces.clear();
    }
    EdgeClaims(const EdgeClaims&) = delete;
    EdgeClaims& operator=(const EdgeClaims&) = delete;
    ~EdgeClaims() {
      for (const ClaimedEdge& claim : scratch.claimed) {
        claim.edge->state.store(claim.state, std::memory_order_release);
      }
    }
  };

  std::span<const LoopData> Loops() const { return {loops.data(), loopsRead}; }

  // Reads plane, loops and openings. The places of the edges are fetched meanwhile.
  bool ReadFace(SUFaceRef su_face, const HandleIndex& edgeIndexes, Point& normal,
                std::unique_ptr<std::vector<std::vector<Point>>>& openings);
  bool ReadLoops(SUFaceRef su_face, const HandleIndex& edgeIndexes);
  bool AddLoop(SULoopRef su_loop, const HandleIndex& edgeIndexes);
};

bool FaceCollector::Scratch::ReadFace(SUFaceRef su_face, const HandleIndex& edgeIndexes,
                                      Point& normal,
                                      std::unique_ptr<std::vector<std::vector<Point>>>& openings) {
  SUPlane3D su_plane = {};
  if (SUFaceGetPlane(su_face, &su_plane) != SU_ERROR_NONE) return false;
  const Point direction(su_plane.a, su_plane.b, su_plane.c);
  const double length = glm::length(direction);
  if (!(length >= kNoDirection)) return false;
  normal = direction / length;
  if (!ReadLoops(su_face, edgeIndexes)) return false;
  const OwnedOpenings owned(su_face);
  for (const SUOpeningRef su_opening : owned.su_openings) {
    std::vector<Point> points = ReadOpening(su_opening);
    if (points.size() < 3) continue;
    if (!openings) openings = std::make_unique<std::vector<std::vector<Point>>>();
    openings->push_back(std::move(points));
  }
  return true;
}

bool FaceCollector::Scratch::AddLoop(SULoopRef su_loop, const HandleIndex& edgeIndexes) {
  if (loopsRead == loops.size()) loops.emplace_back();
  if (!ReadLoop(su_loop, loops[loopsRead])) return false;
  for (const SUEdgeRef su_edge : loops[loopsRead].edges) edgeIndexes.Prefetch(HandleKey(su_edge));
  ++loopsRead;
  return true;
}

// An inner loop that cannot be read is left out.
bool FaceCollector::Scratch::ReadLoops(SUFaceRef su_face, const HandleIndex& edgeIndexes) {
  loopsRead = 0;
  SULoopRef su_outer = SU_INVALID;
  if (SUFaceGetOuterLoop(su_face, &su_outer) != SU_ERROR_NONE || !AddLoop(su_outer, edgeIndexes))
    return false;
  std::size_t count = 0;
  if (SUFaceGetNumInnerLoops(su_face, &count) != SU_ERROR_NONE || count == 0) return true;
  std::vector<SULoopRef> su_inner(count, SULoopRef SU_INVALID);
  if (SUFaceGetInnerLoops(su_face, count, su_inner.data(), &count) != SU_ERROR_NONE) return true;
  for (std::size_t i = 0; i < count && i < su_inner.size(); ++i) AddLoop(su_inner[i], edgeIndexes);
  return true;
}

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

// Under the lock.
std::uint32_t FaceCollector::FaceIndex(SUFaceRef su_face) {
  const auto next = static_cast<std::uint32_t>(faces.size());
  const std::uint32_t index = faceIndexes.FindOrInsert(
      HandleKey(su_face), next, [this](std::uint32_t i) { return HandleKey(faces[i].su_face); });
  if (index == next) faces.Append().su_face = su_face;
  return index;
}

// Under the lock.
std::uint32_t FaceCollector::EdgeIndex(SUEdgeRef su_edge) {
  const auto next = static_cast<std::uint32_t>(edges.size());
  const std::uint64_t key = HandleKey(su_edge);
  const std::uint32_t index =
      edgeIndexes.FindOrInsert(key, next, [this](std::uint32_t i) { return edges[i].key; });
  if (index == next) edges.Append().key = key;
  return index;
}

std::uint32_t FaceCollector::Meet(SUFaceRef su_face) {
  const auto lock = LockTimed<std::unique_lock<SpinLock>>(tables, Waits().collectorLock);
  return FaceIndex(su_face);
}

const FaceData& FaceCollector::CollectFaceData(SUFaceRef su_face) {
  return ReadFace(Meet(su_face));
}

std::uint32_t FaceCollector::CollectFace(SUFaceRef su_face) {
  const std::uint32_t face = Meet(su_face);
  return ReadFace(face).Valid() ? face : kNone;
}

void FaceCollector::Collect(std::uint32_t face) {
  using State = FaceData::State;
  FaceData& data = faces[face];
  if (data.state.load(std::memory_order_acquire) == State::Read) return;
  State state = State::Unread;
  if (data.state.compare_exchange_strong(state, State::Reading, std::memory_order_acquire)) {
    CollectUnread(face);
    return;
  }
  Await([&] { return data.state.load(std::memory_order_acquire) == State::Read; });
}

// The face is ours. Whatever happens, it counts as read in the end, or others would wait for ever.
void FaceCollector::CollectUnread(std::uint32_t face) {
  FaceData& data = faces[face];
  struct ReadAtTheEnd {
    FaceData& data;
    ~ReadAtTheEnd() { data.state.store(FaceData::State::Read, std::memory_order_release); }
  };
  const ReadAtTheEnd end{data};
  static PerThread<Scratch> scratchOf;
  Scratch& scratch = scratchOf.Get();
  {
    const GateGuard gate = GateAcquire(Gate::FaceData);
    if (!scratch.ReadFace(data.su_face, edgeIndexes, data.normal, data.openings)) return;
  }
  std::byte* block = nullptr;
  ListEdges(scratch, block);
  data.Pack(scratch.Loops(), scratch.edges, block);
  ReadEdges(face, scratch);
  data.valid = 1;
}

// Looks up all edges of the loops, and takes memory for the corners. Each look-up leads on to the
// edge's own record, so all of those are fetched at once.
void FaceCollector::ListEdges(Scratch& scratch, std::byte*& block) {
  const auto lock = LockTimed<std::unique_lock<SpinLock>>(tables, Waits().collectorLock);
  for (const LoopData& loop : scratch.Loops()) {
    for (const SUEdgeRef su_edge : loop.edges) {
      edgeIndexes.PrefetchEntry(HandleKey(su_edge), [this](std::uint32_t i) { return &edges[i]; });
    }
  }
  scratch.edges.clear();
  for (const LoopData& loop : scratch.Loops()) {
    for (const SUEdgeRef su_edge : loop.edges) scratch.edges.push_back(EdgeIndex(su_edge));
  }
  const std::size_t bytes = FaceData::BlockBytes(scratch.edges.size(), scratch.loopsRead);
  block = static_cast<std::byte*>(memory.allocate(bytes, alignof(Point)));
}

// All edges are read afterwards. Ours are published before others' are waited for, so no two
// threads wait for each other.
void FaceCollector::ReadEdges(std::uint32_t face, Scratch& scratch) {
  bool others = false;
  {
    const Scratch::EdgeClaims end{scratch};
    std::size_t corner = 0;
    for (const LoopData& loop : scratch.Loops()) {
      for (const SUEdgeRef su_edge : loop.edges) {
        EdgeData& edge = edges[scratch.edges[corner++]];
        std::uint32_t state = edge.state.load(std::memory_order_acquire);
        if (state == kUnread && edge.state.compare_exchange_strong(state, kReading)) {
          scratch.claimed.push_back({&edge});
          ReadEdge(su_edge, scratch);
        } else {
          others = others || state == kReading;
        }
      }
    }
    ListFaces(face, scratch);
  }
  if (!others) return;
  for (const std::uint32_t index : scratch.edges) {
    const EdgeData& edge = edges[index];
    Await([&] { return edge.state.load(std::memory_order_acquire) >= kRead; });
  }
}

// Reads the edge that was claimed last. The places of its faces are fetched until they are listed.
void FaceCollector::ReadEdge(SUEdgeRef su_edge, Scratch& scratch) {
  Scratch::ClaimedEdge& claim = scratch.claimed.back();
  const GateGuard gate = GateAcquire(Gate::FaceData);
  bool smooth = false;
  if (SUEdgeGetSmooth(su_edge, &smooth) != SU_ERROR_NONE || !smooth) return;
  claim.state |= kSmooth;
  std::size_t count = 0;
  if (SUEdgeGetNumFaces(su_edge, &count) != SU_ERROR_NONE || count == 0) return;
  std::vector<SUFaceRef>& su_faces = scratch.su_faces;
  const std::size_t first = su_faces.size();
  su_faces.resize(first + count, SUFaceRef SU_INVALID);
  std::size_t got = 0;
  if (SUEdgeGetFaces(su_edge, count, su_faces.data() + first, &got) != SU_ERROR_NONE) got = 0;
  claim.faceCount = std::min(count, got);
  su_faces.resize(first + claim.faceCount);
  for (std::size_t i = first; i < su_faces.size(); ++i) {
    faceIndexes.Prefetch(HandleKey(su_faces[i]));
  }
}

// Looks up the faces at all claimed edges.
void FaceCollector::ListFaces(std::uint32_t face, Scratch& scratch) {
  if (scratch.su_faces.empty()) return;
  const SUFaceRef su_own = faces[face].su_face;
  const SUFaceRef* su_next = scratch.su_faces.data();
  const auto lock = LockTimed<std::unique_lock<SpinLock>>(tables, Waits().collectorLock);
  for (Scratch::ClaimedEdge& claim : scratch.claimed) {
    const std::size_t count = claim.faceCount;
    std::uint32_t* indexes = claim.edge->faces;
    if (count > 2) {
      indexes = std::pmr::polymorphic_allocator<std::uint32_t>(&memory).allocate(count);
      claim.edge->manyFaces = indexes;
    }
    for (std::size_t i = 0; i < count; ++i, ++su_next) {
      indexes[i] = SUAreEqual(*su_next, su_own) ? face : FaceIndex(*su_next);
    }
    claim.state |= static_cast<std::uint32_t>(count) << kCountShift;
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
  const std::lock_guard lock(tables);
  return faceIndexes.Find(HandleKey(su_face),
                          [this](std::uint32_t i) { return HandleKey(faces[i].su_face); });
}

const FaceData* FaceCollector::FindFaceData(SUFaceRef su_face) const {
  const std::uint32_t face = FindFace(su_face);
  return face == kNone || faces[face].state.load() != FaceData::State::Read ? nullptr
                                                                            : &faces[face];
}

}  // namespace quellix
