#include "import/PolygonMesh.h"

#include <SketchUpAPI/model/entities.h>
#include <SketchUpAPI/model/geometry_input.h>
#include <SketchUpAPI/model/loop_input.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <numbers>
#include <optional>

#include "import/Load.h"
#include "model/Triangulate.h"
#include "model/UvMapping.h"

namespace modelhost {

namespace {

constexpr double kUvTolerance = 2e-3;

// Gives points at the same place the same number.
class Places {
 public:
  explicit Places(const std::vector<SUPoint3D>& points) {
    boost::unordered_flat_map<std::array<std::uint64_t, 3>, std::uint32_t, Hash> known;
    known.reserve(points.size());
    for (const SUPoint3D& p : points) {
      // Adding zero makes -0 and 0 the same.
      const std::array<std::uint64_t, 3> key{std::bit_cast<std::uint64_t>(p.x + 0.0),
                                             std::bit_cast<std::uint64_t>(p.y + 0.0),
                                             std::bit_cast<std::uint64_t>(p.z + 0.0)};
      place_.push_back(
          known.try_emplace(key, static_cast<std::uint32_t>(known.size())).first->second);
    }
  }
  std::uint32_t operator[](std::uint32_t point) const { return place_[point]; }

 private:
  struct Hash {
    using is_avalanching = void;
    std::size_t operator()(const std::array<std::uint64_t, 3>& key) const {
      std::uint64_t h = 0;
      for (const std::uint64_t part : key) {
        h = (h ^ part) * 0x9e3779b97f4a7c15u;
        h ^= h >> 29;
      }
      return h;
    }
  };
  std::vector<std::uint32_t> place_;
};

// A flat face to be built: a whole polygon or a triangle of one.
struct Piece {
  const Polygon* source;
  // Positions in the source's corners, or, when whole, all of them.
  std::array<std::uint32_t, 3> triangle{};
  bool whole = true;
  SUVector3D normal{};
};

// What meets at an edge: the two first pieces and the corners there.
struct Meeting {
  int count = 0;
  std::array<const Piece*, 2> pieces{};
  // Whether the edge lies inside a polygon that was cut.
  bool inside = false;
  // Normals that the file gives at the lower and the higher place, per piece.
  std::array<std::array<SUVector3D, 2>, 2> normals{};
};

class Builder {
 public:
  Builder(const PolygonMesh& mesh, MeshReport& report)
      : mesh_(mesh), report_(report), places_(mesh.points) {}

  void run(SUEntitiesRef entities) {
    cleaned_.reserve(mesh_.polygons.size());
    for (const Polygon& polygon : mesh_.polygons) {
      if (auto clean = cleanCopy(polygon)) cleaned_.push_back(std::move(*clean));
    }
    for (const Polygon& polygon : cleaned_) cut(polygon);
    for (const Piece& piece : pieces_) meet(piece);
    build(entities);
  }

 private:
  static std::uint32_t cornerOf(const Piece& piece, std::size_t i) {
    return piece.whole ? static_cast<std::uint32_t>(i) : piece.triangle[i];
  }
  static std::size_t sizeOf(const Piece& piece) {
    return piece.whole ? piece.source->corners.size() : 3;
  }

  bool finite(const std::vector<std::uint32_t>& ring) const {
    return std::all_of(ring.begin(), ring.end(),
                       [&](std::uint32_t i) { return isFinite(mesh_.points[i]); });
  }

  // Without corners that repeat the one before; none for a polygon that is no face then.
  std::optional<Polygon> cleanCopy(const Polygon& polygon) {
    if (!finite(polygon.corners)) {
      ++report_.notFinite;
      return std::nullopt;
    }
    Polygon clean = polygon;
    clean.corners.clear();
    clean.uvs.clear();
    clean.normals.clear();
    const std::size_t n = polygon.corners.size();
    for (std::size_t i = 0; i < n; ++i) {
      const std::uint32_t next = polygon.corners[(i + 1) % n];
      if (places_[polygon.corners[i]] == places_[next]) continue;
      clean.corners.push_back(polygon.corners[i]);
      if (!polygon.uvs.empty()) clean.uvs.push_back(polygon.uvs[i]);
      if (!polygon.normals.empty()) clean.normals.push_back(polygon.normals[i]);
    }
    const bool uvsFinite = std::all_of(clean.uvs.begin(), clean.uvs.end(), [](const auto& uv) {
      return std::isfinite(uv.x) && std::isfinite(uv.y);
    });
    if (!uvsFinite) clean.uvs.clear();
    std::erase_if(clean.holes, [&](const auto& hole) { return hole.size() < 3 || !finite(hole); });
    if (clean.corners.size() < 3 || !planeOf(pointsOf(clean.corners))) {
      ++report_.degenerate;
      return std::nullopt;
    }
    return clean;
  }

  std::vector<SUPoint3D> pointsOf(const std::vector<std::uint32_t>& ring) const {
    std::vector<SUPoint3D> points;
    points.reserve(ring.size());
    for (const std::uint32_t i : ring) points.push_back(mesh_.points[i]);
    return points;
  }

  // Three corners that fix an affine mapping which holds at all the others; none when there are
  // no such three.
  std::optional<std::array<std::uint32_t, 3>> uvCorners(const Polygon& polygon,
                                                        const std::vector<SUPoint3D>& points,
                                                        const SUVector3D& normal) const {
    std::array<std::uint32_t, 3> best{0, 1, 2};
    double largest = -1;
    for (std::uint32_t i = 1; i + 1 < points.size(); ++i) {
      const double size = length(cross(points[i] - points[0], points[i + 1] - points[0]));
      if (size > largest) {
        largest = size;
        best = {0, i, i + 1};
      }
    }
    SUPoint3D at[3];
    SUPoint2D uv[3];
    for (std::size_t k = 0; k < 3; ++k) {
      at[k] = points[best[k]];
      uv[k] = polygon.uvs[best[k]];
    }
    const auto mapping = UvMapping::through(at, uv, normal, {});
    if (!mapping) return std::nullopt;
    for (std::size_t i = 0; i < points.size(); ++i) {
      const SUUVQ there = mapping->at(points[i]);
      if (std::abs(there.u - polygon.uvs[i].x) > kUvTolerance ||
          std::abs(there.v - polygon.uvs[i].y) > kUvTolerance) {
        return std::nullopt;
      }
    }
    return best;
  }

  bool flat(const Polygon& polygon, const std::vector<SUPoint3D>& points,
            const SUPlane3D& plane) const {
    if (points.size() > 3 && !isPlanar(points, plane)) return false;
    for (const auto& hole : polygon.holes) {
      for (const SUPoint3D& p : pointsOf(hole)) {
        if (std::abs(dot(p, normalOf(plane)) + plane.d) > planarTolerance(points)) return false;
      }
    }
    return polygon.uvs.empty() || points.size() == 3 ||
           uvCorners(polygon, points, normalOf(plane)).has_value();
  }

  void cut(const Polygon& polygon) {
    const auto points = pointsOf(polygon.corners);
    const SUPlane3D plane = *planeOf(points);
    if (flat(polygon, points, plane)) {
      pieces_.push_back({&polygon, {}, true, normalOf(plane)});
      return;
    }
    // Holes of bent polygons are rare enough to be filled.
    const std::vector<std::vector<SUPoint3D>> outlines{points};
    for (const auto& triangle : triangulate(outlines, normalOf(plane)).triangles) {
      if (std::any_of(triangle.begin(), triangle.end(),
                      [&](std::size_t i) { return i >= points.size(); })) {
        continue;
      }
      const std::array<SUPoint3D, 3> corners{points[triangle[0]], points[triangle[1]],
                                             points[triangle[2]]};
      const auto own = planeOf(corners);
      if (!own) continue;
      Piece piece{&polygon, {}, false, normalOf(*own)};
      std::transform(triangle.begin(), triangle.end(), piece.triangle.begin(),
                     [](std::size_t i) { return static_cast<std::uint32_t>(i); });
      pieces_.push_back(piece);
    }
  }

  static bool neighbours(std::uint32_t a, std::uint32_t b, std::size_t n) {
    return (a + 1) % n == b || (b + 1) % n == a;
  }

  Meeting& meetingAt(std::uint32_t pointA, std::uint32_t pointB) {
    const std::uint64_t a = places_[pointA];
    const std::uint64_t b = places_[pointB];
    return meetings_[std::min(a, b) << 32 | std::max(a, b)];
  }

  void meet(const Piece& piece) {
    const Polygon& polygon = *piece.source;
    const std::size_t n = sizeOf(piece);
    for (std::size_t i = 0; i < n; ++i) {
      const std::uint32_t a = cornerOf(piece, i);
      const std::uint32_t b = cornerOf(piece, (i + 1) % n);
      Meeting& meeting = meetingAt(polygon.corners[a], polygon.corners[b]);
      if (meeting.count < 2) {
        const auto slot = static_cast<std::size_t>(meeting.count);
        meeting.pieces[slot] = &piece;
        if (!polygon.normals.empty()) {
          const bool inOrder = places_[polygon.corners[a]] < places_[polygon.corners[b]];
          meeting.normals[slot] = {polygon.normals[inOrder ? a : b],
                                   polygon.normals[inOrder ? b : a]};
        }
      }
      ++meeting.count;
      if (!piece.whole && !neighbours(a, b, polygon.corners.size())) meeting.inside = true;
    }
  }

  bool smooth(const Meeting& meeting) const {
    if (meeting.inside) return true;
    if (meeting.count != 2) return false;
    const Piece& a = *meeting.pieces[0];
    const Piece& b = *meeting.pieces[1];
    // A slit, along which one polygon runs to and fro.
    if (&a == &b) return false;
    if (!a.source->normals.empty() && !b.source->normals.empty()) {
      // The file's normals agree across the edge.
      for (std::size_t end = 0; end < 2; ++end) {
        if (!(dot(meeting.normals[0][end], meeting.normals[1][end]) > 0.996)) return false;
      }
      return true;
    }
    const double limit = std::cos(mesh_.smoothAngle * std::numbers::pi / 180);
    return mesh_.smoothAngle >= 0 && dot(a.normal, b.normal) > limit;
  }

  SULoopInputRef outlineOf(const Piece& piece) {
    SULoopInputRef loop = SU_INVALID;
    SULoopInputCreate(&loop);
    const std::size_t n = sizeOf(piece);
    for (std::size_t i = 0; i < n; ++i) {
      SULoopInputAddVertexIndex(loop, piece.source->corners[cornerOf(piece, i)]);
    }
    for (std::size_t i = 0; i < n; ++i) {
      const auto& corners = piece.source->corners;
      if (!smooth(meetingAt(corners[cornerOf(piece, i)], corners[cornerOf(piece, (i + 1) % n)]))) {
        continue;
      }
      SULoopInputEdgeSetSmooth(loop, i, true);
      SULoopInputEdgeSetSoft(loop, i, true);
    }
    return loop;
  }

  SUMaterialInput materialInput(const Piece& piece, SUMaterialRef material) const {
    SUMaterialInput input{};
    input.material = material;
    const Polygon& polygon = *piece.source;
    if (polygon.uvs.empty()) return input;
    std::array<std::uint32_t, 3> corners = piece.triangle;
    if (piece.whole) {
      const auto found = uvCorners(polygon, pointsOf(polygon.corners), piece.normal);
      if (!found) return input;
      corners = *found;
    }
    input.num_uv_coords = 3;
    for (std::size_t k = 0; k < 3; ++k) {
      input.uv_coords[k] = polygon.uvs[corners[k]];
      input.vertex_indices[k] = polygon.corners[corners[k]];
    }
    return input;
  }

  void addPiece(SUGeometryInputRef input, const Piece& piece) {
    SULoopInputRef outline = outlineOf(piece);
    std::size_t face = 0;
    SUGeometryInputAddFace(input, &outline, &face);
    if (piece.whole) {
      for (const auto& hole : piece.source->holes) {
        SULoopInputRef loop = SU_INVALID;
        SULoopInputCreate(&loop);
        for (const std::uint32_t i : hole) SULoopInputAddVertexIndex(loop, i);
        SUGeometryInputFaceAddInnerLoop(input, face, &loop);
      }
    }
    if (SUIsValid(piece.source->front)) {
      const SUMaterialInput front = materialInput(piece, piece.source->front);
      SUGeometryInputFaceSetFrontMaterial(input, face, &front);
    }
    if (SUIsValid(piece.source->back)) {
      const SUMaterialInput back = materialInput(piece, piece.source->back);
      SUGeometryInputFaceSetBackMaterial(input, face, &back);
    }
    if (SUIsValid(mesh_.layer)) SUGeometryInputFaceSetLayer(input, face, mesh_.layer);
    if (mesh_.hidden) SUGeometryInputFaceSetHidden(input, face, true);
  }

  void build(SUEntitiesRef entities) {
    SUGeometryInputRef input = SU_INVALID;
    SUGeometryInputCreate(&input);
    SUGeometryInputSetVertices(input, mesh_.points.size(), mesh_.points.data());
    for (const Piece& piece : pieces_) addPiece(input, piece);
    for (const auto& [a, b] : mesh_.lines) {
      if (!isFinite(mesh_.points[a]) || !isFinite(mesh_.points[b])) {
        ++report_.notFinite;
      } else if (places_[a] == places_[b]) {
        ++report_.degenerate;
      } else {
        SUGeometryInputAddEdge(input, a, b, nullptr);
      }
    }
    const SUResult filled = SUEntitiesFill(entities, input, true);
    SUGeometryInputRelease(&input);
    if (filled != SU_ERROR_NONE) throw ImportError("the polygons cannot be built");
  }

  const PolygonMesh& mesh_;
  MeshReport& report_;
  Places places_;
  std::vector<Polygon> cleaned_;
  std::vector<Piece> pieces_;
  boost::unordered_flat_map<std::uint64_t, Meeting> meetings_;
};

}  // namespace

void addCount(std::string& text, std::size_t n, const std::string& one, const std::string& many) {
  if (n == 0) return;
  if (!text.empty()) text += " and ";
  text += std::to_string(n) + " " + (n == 1 ? one : many);
}

std::string MeshReport::text() const {
  std::string text;
  addCount(text, notFinite, "polygon with coordinates that are no numbers",
           "polygons with coordinates that are no numbers");
  addCount(text, degenerate, "polygon without area", "polygons without area");
  return text;
}

void addPolygons(SUEntitiesRef entities, const PolygonMesh& mesh, MeshReport& report) {
  if (mesh.polygons.empty() && mesh.lines.empty()) return;
  Builder(mesh, report).run(entities);
}

}  // namespace modelhost
