#include "geometry/TessValidation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>

#include "support/Files.h"
#include "support/Switches.h"

namespace quellix {

namespace {

constexpr double kQuantum = 1e6;     // positions equal to a millionth are one
constexpr double kNoLength = 1e-12;  // a normal below this has no direction
constexpr double kDegreesPerHalfTurn = 180.0;
// The value that the dump's readers expect, not pi itself.
constexpr double kHalfTurn = 3.141592025756836;

using Key = std::array<std::int64_t, 3>;

ValidationCounters& Counters() {
  static ValidationCounters counters;
  return counters;
}

double Area(const TessMesh& mesh) {
  double area = 0.0;
  for (std::size_t i = 0; i + 2 < mesh.indexes.size(); i += 3) {
    const Point& a = mesh.positions[mesh.indexes[i]];
    const Point& b = mesh.positions[mesh.indexes[i + 1]];
    const Point& c = mesh.positions[mesh.indexes[i + 2]];
    area += 0.5 * glm::length(glm::cross(b - a, c - a));
  }
  return area;
}

Key KeyOf(const Point& p) {
  return {std::llround(p.x * kQuantum), std::llround(p.y * kQuantum), std::llround(p.z * kQuantum)};
}

struct NormalDifference {
  std::int64_t unmatched = 0;
  double maxDegrees = 0.0;
};

NormalDifference CompareNormals(const TessMesh& own, const TessMesh& host) {
  std::map<Key, std::size_t> byPosition;
  for (std::size_t i = 0; i < own.positions.size(); ++i) byPosition[KeyOf(own.positions[i])] = i;
  NormalDifference difference;
  for (std::size_t i = 0; i < host.positions.size(); ++i) {
    const auto it = byPosition.find(KeyOf(host.positions[i]));
    if (it == byPosition.end()) {
      ++difference.unmatched;
      continue;
    }
    const Point& a = host.normals[i];
    const Point& b = own.normals[it->second];
    const double lengthA = glm::length(a);
    const double lengthB = glm::length(b);
    if (lengthA < kNoLength || lengthB < kNoLength) continue;
    const double cosine = std::clamp(glm::dot(a, b) / (lengthA * lengthB), -1.0, 1.0);
    const double degrees = std::acos(cosine) * kDegreesPerHalfTurn / kHalfTurn;
    difference.maxDegrees = std::max(difference.maxDegrees, degrees);
  }
  return difference;
}

void AppendLine(const char* line) {
  std::FILE* file = OpenSharedForAppend(TessValidatePath());
  if (file == nullptr) return;
  std::fputs(line, file);
  std::fclose(file);
}

}  // namespace

bool TessValidationEnabled() {
  return !TessValidatePath().empty();
}

const ValidationCounters& ValidationTotals() {
  return Counters();
}

void ResetValidation() {
  Counters() = {};
}

void ValidateTessellation(SUFaceRef su_face, const TessMesh& own, const TessMesh& host) {
  ValidationCounters& total = Counters();
  ++total.faces;
  const bool triangles = own.indexes.size() != host.indexes.size();
  const bool vertices = own.positions.size() != host.positions.size();
  const double areaOwn = Area(own);
  const double areaHost = Area(host);
  const double areaDifference = std::abs(areaOwn - areaHost);
  const double relative = areaDifference / std::max(areaHost, 1e-12);
  const bool area = relative > 0.001 && areaDifference > 1e-9;
  const NormalDifference normals = CompareNormals(own, host);

  total.triMismatch += triangles;
  total.vertMismatch += vertices;
  total.areaMismatch += area;
  total.maxRel = std::max(total.maxRel, relative);
  total.normalUnmatched += normals.unmatched;
  total.maxNormalDeg = std::max(total.maxNormalDeg, normals.maxDegrees);
  if (!triangles && !vertices && !area && normals.unmatched == 0 && normals.maxDegrees <= 1.0) {
    return;
  }
  std::int32_t id = 0;
  SUEntityGetID(SUFaceToEntity(su_face), &id);
  char line[512];
  std::snprintf(line, sizeof line,
                "face=%d tri=%d/%d vert=%d/%d area=%.6f/%.6f (rel=%.3e) maxNormalDeg=%.4f "
                "unmatched=%lld\n",
                static_cast<int>(id), static_cast<int>(own.indexes.size() / 3),
                static_cast<int>(host.indexes.size() / 3), static_cast<int>(own.positions.size()),
                static_cast<int>(host.positions.size()), areaOwn, areaHost, relative,
                normals.maxDegrees, static_cast<long long>(normals.unmatched));
  AppendLine(line);
}

void WriteValidationSummary(bool reload) {
  if (!TessValidationEnabled()) return;
  const ValidationCounters& total = Counters();
  char line[512];
  std::snprintf(line, sizeof line,
                "=== tess validate (reload=%d): faces=%lld triMismatch=%lld vertMismatch=%lld "
                "areaMismatch=%lld (maxRel=%.3e) normalUnmatched=%lld maxNormalDeg=%.4f ===\n",
                reload ? 1 : 0, static_cast<long long>(total.faces),
                static_cast<long long>(total.triMismatch),
                static_cast<long long>(total.vertMismatch),
                static_cast<long long>(total.areaMismatch), total.maxRel,
                static_cast<long long>(total.normalUnmatched), total.maxNormalDeg);
  AppendLine(line);
}

}  // namespace quellix
