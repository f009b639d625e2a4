#include "geometry/Tessellation.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <mapbox/earcut.hpp>

#include "geometry/FanWalk.h"
#include "support/PerThread.h"

namespace quellix {

namespace {

using Point2 = std::array<double, 2>;

// How far below zero the turn at a corner must be to make a ring concave.
constexpr double kReflex = -1e-12;
constexpr double kNoLength = 1e-30;
// Fans of more faces are kept by the collector instead of walked for each of them.
constexpr std::size_t kLargeFan = 64;

// The coordinates that are left when the normal's largest one is dropped.
std::array<int, 2> KeptAxes(const Point& normal) {
  int dropped = 0;
  for (int axis = 1; axis < 3; ++axis) {
    if (std::abs(normal[axis]) > std::abs(normal[dropped])) dropped = axis;
  }
  return {dropped == 0 ? 1 : 0, dropped == 2 ? 1 : 2};
}

// What ear clipping needs beside its own, kept from face to face.
struct ClipScratch {
  std::vector<Point2> projected;
  std::vector<std::span<const Point2>> rings;
  mapbox::detail::Earcut<std::uint32_t> triangulator;
};

void ClipEars(const FaceData& face, const std::vector<Point>& positions,
              std::vector<std::uint32_t>& indexes) {
  static PerThread<ClipScratch> perThread;
  ClipScratch& scratch = perThread.Get();
  const auto [u, v] = KeptAxes(face.Normal());
  scratch.projected.clear();
  for (const Point& p : positions) scratch.projected.push_back({p[u], p[v]});
  scratch.rings.clear();
  std::span<const Point2> rest = scratch.projected;
  const auto take = [&](std::size_t size) {
    scratch.rings.push_back(rest.first(size));
    rest = rest.subspan(size);
  };
  for (std::size_t l = 0; l < face.LoopCount(); ++l) take(face.Loop(l).end - face.Loop(l).begin);
  for (const std::vector<Point>& opening : face.Openings()) take(opening.size());
  scratch.triangulator(scratch.rings);
  indexes.assign(scratch.triangulator.indices.begin(), scratch.triangulator.indices.end());
}

void AppendFan(std::uint32_t count, std::vector<std::uint32_t>& indexes) {
  for (std::uint32_t i = 1; i + 1 < count; ++i) {
    indexes.push_back(0);
    indexes.push_back(i);
    indexes.push_back(i + 1);
  }
}

// The largest triangle decides: it is the one whose direction rounding cannot turn.
void TurnAlong(const Point& normal, TessMesh& mesh) {
  std::vector<std::uint32_t>& indexes = mesh.indexes;
  double largest = 0.0;
  Point direction(0.0);
  for (std::size_t i = 0; i + 2 < indexes.size(); i += 3) {
    const Point& a = mesh.positions[indexes[i]];
    const Point cross =
        glm::cross(mesh.positions[indexes[i + 1]] - a, mesh.positions[indexes[i + 2]] - a);
    const double squared = glm::dot(cross, cross);
    if (squared > largest) {
      largest = squared;
      direction = cross;
    }
  }
  if (!(glm::dot(direction, normal) < 0.0)) return;
  for (std::size_t i = 0; i + 2 < indexes.size(); i += 3) std::swap(indexes[i + 1], indexes[i + 2]);
}

// Most corners touch no smooth edge, or nothing beyond it: no walk is needed to see that.
void FillLoopNormals(FaceCollector& collector, std::uint32_t face, std::vector<Point>& normals) {
  const FaceData& data = collector.Face(face);
  const std::span<const std::uint32_t> edges = data.Edges();
  for (std::size_t l = 0; l < data.LoopCount(); ++l) {
    const FaceData::LoopRange loop = data.Loop(l);
    bool smoothBefore = collector.IsSmoothEdge(edges[loop.end - 1]);
    for (std::size_t i = loop.begin; i < loop.end; ++i) {
      const bool smoothAfter = collector.IsSmoothEdge(edges[i]);
      const bool alone = !smoothBefore && !smoothAfter && !data.HasRepeatedVertices();
      normals.push_back(alone ? data.Normal() : SmoothVertexNormal(collector, face, i));
      smoothBefore = smoothAfter;
    }
  }
}

void FillVertices(FaceCollector& collector, std::uint32_t face, TessMesh& mesh) {
  const FaceData& data = collector.Face(face);
  const std::span<const Point> corners = data.Positions();
  mesh.positions.assign(corners.begin(), corners.end());
  for (const std::vector<Point>& opening : data.Openings()) {
    mesh.positions.insert(mesh.positions.end(), opening.begin(), opening.end());
  }
  mesh.normals.reserve(mesh.positions.size());
  FillLoopNormals(collector, face, mesh.normals);
  mesh.normals.resize(mesh.positions.size(), data.Normal());
}

}  // namespace

void TessMesh::Clear() {
  positions.clear();
  normals.clear();
  indexes.clear();
}

bool TessellateFace(FaceCollector& collector, std::uint32_t face, TessMesh& mesh) {
  mesh.Clear();
  if (face == FaceCollector::kNone) return false;
  const FaceData& data = collector.ReadFace(face);
  if (!data.Valid()) return false;
  FillVertices(collector, face, mesh);
  if (data.LoopCount() == 1 && data.Openings().empty() &&
      IsConvexRing(mesh.positions, data.Normal())) {
    AppendFan(static_cast<std::uint32_t>(mesh.positions.size()), mesh.indexes);
  } else {
    ClipEars(data, mesh.positions, mesh.indexes);
  }
  TurnAlong(data.Normal(), mesh);
  return !mesh.indexes.empty();
}

Point SmoothVertexNormal(FaceCollector& collector, std::uint32_t face, std::size_t corner) {
  const FaceData& first = collector.Face(face);
  const Point own = first.Normal();
  Point sum(0.0);
  const auto add = [&](const FanFace& fanFace) {
    const Point& normal = fanFace.data->Normal();
    sum += fanFace.Weight() * (glm::dot(normal, own) < 0.0 ? -normal : normal);
  };
  const auto mean = [&] {
    const double length = glm::length(sum);
    return length < kNoLength ? own : sum / length;
  };

  std::size_t faces = 0;
  const bool simple = TurnAround(collector, face, corner, [&](const FanFace& fanFace) {
    if (++faces > kLargeFan) return false;
    // The first one's weight is not needed when it is the only one.
    if (faces == 2) add(FanFace{&first, corner});
    if (faces > 1) add(fanFace);
    return true;
  });
  if (simple) return faces == 1 ? own : mean();

  const SUVertexRef su_vertex = first.Vertices()[corner];
  boost::container::small_vector<std::uint32_t, kLargeFan> met;
  sum = Point(0.0);
  const bool whole = WalkFan(
      collector, face, su_vertex,
      [&](std::uint32_t next) {
        if (std::find(met.begin(), met.end(), next) != met.end()) return false;
        met.push_back(next);
        return true;
      },
      [&](const FanFace& fanFace) {
        if (met.size() == 1) return true;
        if (met.size() > kLargeFan) return false;
        add(fanFace);
        return true;
      });
  if (met.size() == 1) return own;
  if (!whole) sum = collector.Fans().WeightedSum(collector, face, su_vertex);
  return mean();
}

// Sides without length are left out: a repeated point would hide the turn at the corner that it
// repeats.
bool IsConvexRing(std::span<const Point> ring, const Point& normal) {
  const Point none(0.0);
  const std::size_t n = ring.size();
  const auto sideFrom = [&](std::size_t k) { return ring[k + 1 == n ? 0 : k + 1] - ring[k]; };
  Point before(0.0);
  for (std::size_t k = n; k-- > 0 && before == none;) before = sideFrom(k);
  for (std::size_t k = 0; k < n; ++k) {
    const Point side = sideFrom(k);
    if (side == none) continue;
    if (glm::dot(glm::cross(before, side), normal) < kReflex) return false;
    before = side;
  }
  return true;
}

}  // namespace quellix
