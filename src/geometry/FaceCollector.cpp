#include "geometry/FaceCollector.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <thread>

#include "geometry/FanWalk.h"
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

// More faces around a vertex, or at an edge, are not gone through again for each of them.
constexpr std::size_t kLargeFan = 64;

// Waits for another thread that reads a face or an edge, which takes it a moment. It never waits
// for others before that is done, so no two threads wait for each other.
template <class Done>
void AwaitReader(Done&& done) {
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
  bool ReadFace(SUFaceRef su_face, const HandleIndex& edgeIndex, Point& normal,
                std::unique_ptr<std::vector<std::vector<Point>>>& openings);
  bool ReadLoops(SUFaceRef su_face, const HandleIndex& edgeIndex);
  bool AddLoop(SULoopRef su_loop, const HandleIndex& edgeIndex);
};

bool FaceCollector::Scratch::ReadFace(SUFaceRef su_face, const HandleIndex& edgeIndex,
                                      Point& normal,
                                      std::unique_ptr<std::vector<std::vector<Point>>>& openings) {
  SUPlane3D su_plane = {};
  if (SUFaceGetPlane(su_face, &su_plane) != SU_ERROR_NONE) return false;
  const Point direction(su_plane.a, su_plane.b, su_plane.c);
  const double length = glm::length(direction);
  if (!(length >= kNoDirection)) return false;
  normal = direction / length;
  if (!ReadLoops(su_face, edgeIndex)) return false;
  const OwnedOpenings owned(su_face);
  for (const SUOpeningRef su_opening : owned.su_openings) {
    std::vector<Point> points = ReadOpening(su_opening);
    if (points.size() < 3) continue;
    if (!openings) openings = std::make_unique<std::vector<std::vector<Point>>>();
    openings->push_back(std::move(points));
  }
  return true;
}

bool FaceCollector::Scratch::AddLoop(SULoopRef su_loop, const HandleIndex& edgeIndex) {
  if (loopsRead == loops.size()) loops.emplace_back();
  if (!ReadLoop(su_loop, loops[loopsRead])) return false;
  for (const SUEdgeRef su_edge : loops[loopsRead].edges) edgeIndex.Prefetch(HandleKey(su_edge));
  ++loopsRead;
  return true;
}

// An inner loop that cannot be read is left out.
bool FaceCollector::Scratch::ReadLoops(SUFaceRef su_face, const HandleIndex& edgeIndex) {
  loopsRead = 0;
  SULoopRef su_outer = SU_INVALID;
  if (SUFaceGetOuterLoop(su_face, &su_outer) != SU_ERROR_NONE || !AddLoop(su_outer, edgeIndex))
    return false;
  std::size_t count = 0;
  if (SUFaceGetNumInnerLoops(su_face, &count) != SU_ERROR_NONE || count == 0) return true;
  std::vector<SULoopRef> su_inner(count, SULoopRef SU_INVALID);
  if (SUFaceGetInnerLoops(su_face, count, su_inner.data(), &count) != SU_ERROR_NONE) return true;
  for (std::size_t i = 0; i < count && i < su_inner.size(); ++i) AddLoop(su_inner[i], edgeIndex);
  return true;
}

void FaceCollector::Clear() {
  scopes.Clear();
  scopeOf.clear();
  faces.Clear();
  edges.Clear();
  memory.Clear();
  fans.Clear();
  largeEdges.clear();
  scope = static_cast<std::uint32_t>(scopes.Append());
}

std::uint32_t FaceCollector::EnterScope(SUEntitiesRef su_entities, std::size_t faceCount) {
  const auto [known, isNew] = scopeOf.try_emplace(HandleKey(su_entities), 0u);
  if (isNew) {
    // Two edges a face are usual, where quads share them. Room for more costs little, and growing
    // makes everybody wait.
    constexpr double kEdgesPerFace = 4.5;
    known->second = static_cast<std::uint32_t>(scopes.Append());
    Tables& tables = scopes[known->second];
    tables.faces.Reserve(faceCount);
    tables.edges.Reserve(static_cast<std::size_t>(kEdgesPerFace * static_cast<double>(faceCount)));
  }
  scope = known->second;
  return scope;
}

// The face's index; a face not met before is listed.
std::uint32_t FaceCollector::FaceIndex(SUFaceRef su_face, std::uint32_t faceScope) {
  HandleIndex& index = scopes[faceScope].faces;
  const auto keyAt = [this](std::uint32_t i) { return HandleKey(faces[i].su_face); };
  const std::uint64_t key = HandleKey(su_face);
  const std::uint32_t known = index.Find(key, keyAt);
  if (known != kNone) return known;
  index.Expect(1);
  const auto next = static_cast<std::uint32_t>(faces.Append());
  return index.FindOrInsert(key, next, keyAt, [&] {
    faces[next].su_face = su_face;
    faces[next].scope = faceScope;
  });
}

const FaceData& FaceCollector::CollectFaceData(SUFaceRef su_face) {
  return ReadFace(FaceIndex(su_face, scope));
}

std::uint32_t FaceCollector::CollectFace(SUFaceRef su_face, std::uint32_t faceScope) {
  const std::uint32_t face = FaceIndex(su_face, faceScope);
  Collect(face);
  return face;
}

// Reads the face if nobody has begun to; false when somebody had.
bool FaceCollector::Collect(std::uint32_t face) {
  using State = FaceData::State;
  State state = State::Unread;
  if (!faces[face].state.compare_exchange_strong(state, State::Reading,
                                                 std::memory_order_acquire)) {
    return false;
  }
  CollectUnread(face);
  return true;
}

void FaceCollector::Await(const FaceData& face) {
  AwaitReader([&] { return face.IsRead(); });
}

std::uint32_t FaceCollector::StateOfAwaited(const EdgeData& edge) {
  std::uint32_t state = kReading;
  AwaitReader([&] {
    state = edge.state.load(std::memory_order_acquire);
    return state != kReading;
  });
  return state;
}

// The face is ours. Whatever happens, it counts as read in the end, or others would wait for ever.
void FaceCollector::CollectUnread(std::uint32_t face) {
  FaceData& data = faces[face];
  struct ReadAtTheEnd {
    FaceData& data;
    ~ReadAtTheEnd() { data.state.store(FaceData::State::Read, std::memory_order_release); }
  };
  const ReadAtTheEnd end{data};
  HandleIndex& edgeIndex = scopes[data.scope].edges;
  static PerThread<Scratch> scratchOf;
  Scratch& scratch = scratchOf.Get();
  {
    const GateGuard gate = GateAcquire(Gate::FaceData);
    if (!scratch.ReadFace(data.su_face, edgeIndex, data.normal, data.openings)) return;
  }
  ListEdges(edgeIndex, scratch);
  const std::size_t bytes = FaceData::BlockBytes(scratch.edges.size(), scratch.loopsRead);
  data.Pack(scratch.Loops(), scratch.edges, static_cast<std::byte*>(memory.Allocate(bytes)));
  ReadEdges(face, scratch);
  data.valid = 1;
}

// Looks up all edges of the loops, and lists those not met before. Each look-up leads on to the
// edge's own record, so all of those are fetched at once.
void FaceCollector::ListEdges(HandleIndex& index, Scratch& scratch) {
  const auto keyAt = [this](std::uint32_t i) { return edges[i].key; };
  for (const LoopData& loop : scratch.Loops()) {
    for (const SUEdgeRef su_edge : loop.edges) {
      index.PrefetchEntry(HandleKey(su_edge), [this](std::uint32_t i) { return &edges[i]; });
    }
  }
  scratch.edges.clear();
  for (const LoopData& loop : scratch.Loops()) {
    for (const SUEdgeRef su_edge : loop.edges) {
      scratch.edges.push_back(index.Find(HandleKey(su_edge), keyAt));
    }
  }
  const auto unknown = std::count(scratch.edges.begin(), scratch.edges.end(), kNone);
  if (unknown == 0) return;
  index.Expect(static_cast<std::size_t>(unknown));
  auto next = static_cast<std::uint32_t>(edges.Append(static_cast<std::size_t>(unknown)));
  std::uint32_t* edge = scratch.edges.data();
  for (const LoopData& loop : scratch.Loops()) {
    for (const SUEdgeRef su_edge : loop.edges) {
      if (*edge == kNone) {
        const std::uint64_t key = HandleKey(su_edge);
        *edge = index.FindOrInsert(key, next, keyAt, [&] { edges[next].key = key; });
        if (*edge == next) ++next;
      }
      ++edge;
    }
  }
}

// Reads the edges that nobody else has read or is about to. Those of others are waited for where
// somebody asks for them, which is seldom before they are read.
void FaceCollector::ReadEdges(std::uint32_t face, Scratch& scratch) {
  const Scratch::EdgeClaims end{scratch};
  ClaimEdges(scopes[faces[face].scope].faces, scratch);
  ListFaces(face, scratch);
}

void FaceCollector::ClaimEdges(const HandleIndex& faceIndex, Scratch& scratch) {
  const GateGuard gate = GateAcquire(Gate::FaceData);
  const std::uint32_t* index = scratch.edges.data();
  for (const LoopData& loop : scratch.Loops()) {
    for (const SUEdgeRef su_edge : loop.edges) {
      EdgeData& edge = edges[*index++];
      std::uint32_t state = edge.state.load(std::memory_order_relaxed);
      if (state != kUnread || !edge.state.compare_exchange_strong(state, kReading)) continue;
      scratch.claimed.push_back({&edge});
      ReadEdge(su_edge, faceIndex, scratch);
    }
  }
}

// Reads the edge that was claimed last. The places of its faces are fetched until they are listed.
void FaceCollector::ReadEdge(SUEdgeRef su_edge, const HandleIndex& faceIndex, Scratch& scratch) {
  Scratch::ClaimedEdge& claim = scratch.claimed.back();
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
    faceIndex.Prefetch(HandleKey(su_faces[i]));
  }
}

// Looks up the faces at all claimed edges.
void FaceCollector::ListFaces(std::uint32_t face, Scratch& scratch) {
  if (scratch.su_faces.empty()) return;
  const SUFaceRef su_own = faces[face].su_face;
  const SUFaceRef* su_next = scratch.su_faces.data();
  for (Scratch::ClaimedEdge& claim : scratch.claimed) {
    const std::size_t count = claim.faceCount;
    std::uint32_t* indexes = claim.edge->faces;
    if (count > 2) {
      indexes = static_cast<std::uint32_t*>(memory.Allocate(count * sizeof(std::uint32_t)));
      claim.edge->manyFaces = indexes;
    }
    for (std::size_t i = 0; i < count; ++i, ++su_next) {
      indexes[i] = SUAreEqual(*su_next, su_own) ? face : FaceIndex(*su_next, faces[face].scope);
    }
    claim.state |= static_cast<std::uint32_t>(count) << kCountShift;
  }
}

std::uint32_t FaceCollector::CollectSmoothingGroup(SUFaceRef su_face) {
  const std::uint32_t start = FaceIndex(su_face, scope);
  FaceData& first = faces[start];
  if (first.visited) return first.valid ? start : kNone;
  Collect(start);
  first.visited = true;
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
        faces[neighbour].visited = true;
        Collect(neighbour);
        stack.push_back(neighbour);
      }
    }
  }
  return start;
}

// A face that is visited has all its fans read by the end of the call that has marked it, so
// nothing is to be read beyond it, and inside a chunk hardly a step is needed.
void FaceCollector::CollectFans(std::span<const std::uint32_t> collected) {
  fanFaces.clear();
  const auto add = [this](std::uint32_t face) {
    FaceData& data = faces[face];
    if (data.visited || !data.valid) return;
    data.visited = true;
    fanFaces.push_back(face);
  };
  for (const std::uint32_t face : collected) add(face);
  for (std::size_t i = 0; i < fanFaces.size(); ++i) {
    const FaceData& data = faces[fanFaces[i]];
    const std::span<const std::uint32_t> own = data.Edges();
    for (std::size_t l = 0; l < data.LoopCount(); ++l) {
      const FaceData::LoopRange loop = data.Loop(l);
      for (std::size_t corner = loop.begin; corner < loop.end; ++corner) {
        const std::span<const std::uint32_t> beside = FacesAt(own[corner]);
        if (beside.size() > kLargeFan && !largeEdges.insert(own[corner]).second) continue;
        for (const std::uint32_t neighbour : beside) {
          if (faces[neighbour].visited) continue;
          ReadFan(neighbour, data.Vertices()[corner]);
          ReadFan(neighbour, data.Vertices()[loop.Next(corner)]);
        }
      }
    }
  }
}

// Reads the faces that smooth edges at the vertex chain to this one, up to those visited. Those of
// a large fan count as visited: otherwise every chunk with one of them would go through all of it.
void FaceCollector::ReadFan(std::uint32_t face, SUVertexRef su_vertex) {
  boost::container::small_vector<std::uint32_t, kLargeFan> met;
  const auto visit = [this](std::uint32_t next) {
    faces[next].visited = true;
    fanFaces.push_back(next);
  };
  WalkFan(
      *this, face, su_vertex,
      [&](std::uint32_t next) {
        if (faces[next].visited) return false;
        if (met.size() == kLargeFan) {
          visit(next);
          return true;
        }
        if (std::find(met.begin(), met.end(), next) != met.end()) return false;
        met.push_back(next);
        if (met.size() == kLargeFan) std::for_each(met.begin(), met.end(), visit);
        return true;
      },
      [](const FanFace&) { return true; });
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
  return scopes[scope].faces.Find(HandleKey(su_face),
                                  [this](std::uint32_t i) { return HandleKey(faces[i].su_face); });
}

const FaceData* FaceCollector::FindFaceData(SUFaceRef su_face) const {
  const std::uint32_t face = FindFace(su_face);
  return face == kNone || !faces[face].IsRead() ? nullptr : &faces[face];
}

}  // namespace quellix
