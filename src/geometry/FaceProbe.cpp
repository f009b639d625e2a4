#include "geometry/FaceProbe.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

#include "cw/Handle.h"
#include "support/Files.h"
#include "support/Switches.h"

namespace quellix {

namespace {

// Appends a formatted piece of at most 255 bytes.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
void Append(std::string& line, const char* format, ...) {
  char piece[256];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(piece, sizeof piece, format, arguments);
  va_end(arguments);
  line += piece;
}

void AppendPoint(std::string& line, double x, double y, double z) {
  Append(line, "[%.9g,%.9g,%.9g]", x, y, z);
}

// Appends "[a,b,...]", each item by `append(item)`.
template <class Items, class AppendItem>
void AppendArray(std::string& line, const Items& items, AppendItem append) {
  line += '[';
  bool first = true;
  for (const auto& item : items) {
    if (!first) line += ',';
    first = false;
    append(item);
  }
  line += ']';
}

void AppendVertex(std::string& line, SUVertexRef su_vertex) {
  SUPoint3D su_point = {};
  SUVertexGetPosition(su_vertex, &su_point);
  AppendPoint(line, su_point.x, su_point.y, su_point.z);
}

void AppendEdge(std::string& line, SUEdgeRef su_edge) {
  bool smooth = false;
  bool soft = false;
  SUEdgeGetSmooth(su_edge, &smooth);
  SUEdgeGetSoft(su_edge, &soft);
  SUVertexRef su_start = SU_INVALID;
  SUVertexRef su_end = SU_INVALID;
  SUEdgeGetStartVertex(su_edge, &su_start);
  SUEdgeGetEndVertex(su_edge, &su_end);
  Append(line, "{\"smooth\":%s,\"soft\":%s,\"v0\":", smooth ? "true" : "false",
         soft ? "true" : "false");
  AppendVertex(line, su_start);
  line += ",\"v1\":";
  AppendVertex(line, su_end);
  line += '}';
}

const char* WindingOf(SULoopRef su_loop, const SUVector3D& su_normal) {
  SULoopWindingType winding = SULoopWindingType_CW;
  if (SULoopGetWinding(su_loop, &su_normal, &winding) != SU_ERROR_NONE) return "?";
  return winding == SULoopWindingType_CW ? "cw" : "ccw";
}

void AppendLoop(std::string& line, SULoopRef su_loop, const SUVector3D& su_normal) {
  const auto count_of = [&](size_t* count) { return SULoopGetNumVertices(su_loop, count); };
  const auto su_vertices =
      CW::fetch_list<SUVertexRef>(count_of, [&](size_t len, SUVertexRef* su_items, size_t* count) {
        return SULoopGetVertices(su_loop, len, su_items, count);
      });
  const auto su_edges =
      CW::fetch_list<SUEdgeRef>(count_of, [&](size_t len, SUEdgeRef* su_items, size_t* count) {
        return SULoopGetEdges(su_loop, len, su_items, count);
      });
  Append(line, "{\"winding\":\"%s\",\"verts\":", WindingOf(su_loop, su_normal));
  AppendArray(line, su_vertices, [&](SUVertexRef su_vertex) { AppendVertex(line, su_vertex); });
  line += ",\"edges\":";
  AppendArray(line, su_edges, [&](SUEdgeRef su_edge) { AppendEdge(line, su_edge); });
  line += '}';
}

void AppendFaceLoops(std::string& line, SUFaceRef su_face) {
  std::int32_t id = 0;
  SUEntityGetID(SUFaceToEntity(su_face), &id);
  SUPlane3D su_plane = {};
  if (SUFaceGetPlane(su_face, &su_plane) != SU_ERROR_NONE) su_plane = {};
  std::size_t openings = 0;
  if (SUFaceGetNumOpenings(su_face, &openings) != SU_ERROR_NONE) openings = 0;
  SULoopRef su_outer = SU_INVALID;
  SUFaceGetOuterLoop(su_face, &su_outer);
  const auto su_inner = CW::fetch_list<SULoopRef>(
      [&](size_t* count) { return SUFaceGetNumInnerLoops(su_face, count); },
      [&](size_t len, SULoopRef* su_items, size_t* count) {
        return SUFaceGetInnerLoops(su_face, len, su_items, count);
      });
  const SUVector3D su_normal = {su_plane.a, su_plane.b, su_plane.c};
  Append(line, "{\"face\":%d,\"plane\":[%.9g,%.9g,%.9g,%.9g],\"openings\":%d,\"outer\":",
         static_cast<int>(id), su_plane.a, su_plane.b, su_plane.c, su_plane.d,
         static_cast<int>(openings));
  AppendLoop(line, su_outer, su_normal);
  line += ",\"inner\":";
  AppendArray(line, su_inner, [&](SULoopRef su_loop) { AppendLoop(line, su_loop, su_normal); });
}

void AppendMesh(std::string& line, const TessMesh& host) {
  const auto append = [&](const Point& p) { AppendPoint(line, p.x, p.y, p.z); };
  line += ",\"mh\":{\"verts\":";
  AppendArray(line, host.positions, append);
  line += ",\"normals\":";
  AppendArray(line, host.normals, append);
  line += ",\"tris\":";
  AppendArray(line, host.indexes,
              [&](std::uint32_t index) { Append(line, "%d", static_cast<int>(index)); });
  line += "}}\n";
}

}  // namespace

bool FaceProbeEnabled() {
  return !TessProbePath().empty();
}

void ProbeFace(SUFaceRef su_face, const TessMesh& host) {
  static std::mutex mutex;
  std::string line;
  AppendFaceLoops(line, su_face);
  AppendMesh(line, host);
  const std::lock_guard lock(mutex);
  std::FILE* file = OpenSharedForAppend(TessProbePath());
  if (file == nullptr) return;
  std::fwrite(line.data(), 1, line.size(), file);
  std::fclose(file);
}

}  // namespace quellix
