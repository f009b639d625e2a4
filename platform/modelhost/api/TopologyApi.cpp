#include <SketchUpAPI/model/edge.h>
#include <SketchUpAPI/model/loop.h>
#include <SketchUpAPI/model/vertex.h>

#include <algorithm>

#include "core/Args.h"
#include "model/Model.h"

using namespace modelhost;

SUEntityRef SULoopToEntity(SULoopRef loop) {
  MODELHOST_CALL_INFALLIBLE(SULoopToEntity);
  return convert<SUEntityRef>(loop);
}

SULoopRef SULoopFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SULoopFromEntity);
  return convert<SULoopRef>(entity);
}

SUResult SULoopGetNumVertices(SULoopRef loop, size_t* count) {
  MODELHOST_CALL(SULoopGetNumVertices);
  return give(loop, count, [](const Loop& l) { return l.vertices.size(); });
}

SUResult SULoopGetVertices(SULoopRef loop, size_t len, SUVertexRef vertices[], size_t* count) {
  MODELHOST_CALL(SULoopGetVertices);
  return giveList(
      loop, len, vertices, count, [](const Loop& l) -> const auto& { return l.vertices; });
}

SUResult SULoopGetEdges(SULoopRef loop, size_t len, SUEdgeRef edges[], size_t* count) {
  MODELHOST_CALL(SULoopGetEdges);
  return giveList(
      loop, len, edges, count, [](const Loop& l) -> const auto& { return l.edges; });
}

SUResult SULoopGetWinding(SULoopRef loop, const SUVector3D* normal, SULoopWindingType* winding) {
  MODELHOST_CALL(SULoopGetWinding);
  if (normal == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return give(loop, winding, [&](const Loop& l) {
    return dot(areaVector(l.points()), *normal) < 0 ? SULoopWindingType_CW : SULoopWindingType_CCW;
  });
}

SUResult SULoopIsOuterLoop(SULoopRef loop, bool* outer) {
  MODELHOST_CALL(SULoopIsOuterLoop);
  return give(loop, outer, [](const Loop& l) { return l.face->loops.front().get() == &l; });
}

SUResult SULoopGetFace(SULoopRef loop, SUFaceRef* face) {
  MODELHOST_CALL(SULoopGetFace);
  return giveRef(loop, face, [](const Loop& l) { return l.face; });
}

SUEntityRef SUEdgeToEntity(SUEdgeRef edge) {
  MODELHOST_CALL_INFALLIBLE(SUEdgeToEntity);
  return convert<SUEntityRef>(edge);
}

SUEdgeRef SUEdgeFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUEdgeFromEntity);
  return convert<SUEdgeRef>(entity);
}

SUDrawingElementRef SUEdgeToDrawingElement(SUEdgeRef edge) {
  MODELHOST_CALL_INFALLIBLE(SUEdgeToDrawingElement);
  return convert<SUDrawingElementRef>(edge);
}

SUEdgeRef SUEdgeFromDrawingElement(SUDrawingElementRef element) {
  MODELHOST_CALL_INFALLIBLE(SUEdgeFromDrawingElement);
  return convert<SUEdgeRef>(element);
}

SUResult SUEdgeCreate(SUEdgeRef* out_edge, const SUPoint3D* start, const SUPoint3D* end) {
  MODELHOST_CALL(SUEdgeCreate);
  if (const SUResult may = mayCreate(out_edge); may != SU_ERROR_NONE) return may;
  if (start == nullptr || end == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (!isFinite(*start) || !isFinite(*end)) return SU_ERROR_INVALID_INPUT;
  auto scratch = std::make_unique<Entities>(nullptr);
  Vertex& from = scratch->weldedVertex(*start);
  Vertex& to = scratch->weldedVertex(*end);
  if (&from == &to) return SU_ERROR_INVALID_INPUT;
  auto edge = std::make_unique<Edge>(from, to);
  edge->scratch = std::move(scratch);
  *out_edge = refOf<SUEdgeRef>(edge.release());
  return SU_ERROR_NONE;
}

SUResult SUEdgeRelease(SUEdgeRef* edge) {
  MODELHOST_CALL(SUEdgeRelease);
  return releaseIf(edge, [](const Edge& e) { return e.scratch != nullptr; });
}

SUResult SUEdgeGetStartVertex(SUEdgeRef edge, SUVertexRef* vertex) {
  MODELHOST_CALL(SUEdgeGetStartVertex);
  return giveRef(edge, vertex, [](const Edge& e) { return e.start; });
}

SUResult SUEdgeGetEndVertex(SUEdgeRef edge, SUVertexRef* vertex) {
  MODELHOST_CALL(SUEdgeGetEndVertex);
  return giveRef(edge, vertex, [](const Edge& e) { return e.end; });
}

SUResult SUEdgeGetSoft(SUEdgeRef edge, bool* soft) {
  MODELHOST_CALL(SUEdgeGetSoft);
  return give(edge, soft, [](const Edge& e) { return e.soft; });
}

SUResult SUEdgeSetSoft(SUEdgeRef edge, bool soft) {
  MODELHOST_CALL(SUEdgeSetSoft);
  return change(edge, [&](Edge& e) { e.soft = soft; });
}

SUResult SUEdgeGetSmooth(SUEdgeRef edge, bool* smooth) {
  MODELHOST_CALL(SUEdgeGetSmooth);
  return give(edge, smooth, [](const Edge& e) { return e.smooth; });
}

SUResult SUEdgeSetSmooth(SUEdgeRef edge, bool smooth) {
  MODELHOST_CALL(SUEdgeSetSmooth);
  return change(edge, [&](Edge& e) { e.smooth = smooth; });
}

SUResult SUEdgeGetColor(SUEdgeRef edge, SUColor* color) {
  MODELHOST_CALL(SUEdgeGetColor);
  return give(edge, color, [](const Edge& e) { return e.color.value_or(SUColor{0, 0, 0, 255}); });
}

SUResult SUEdgeSetColor(SUEdgeRef edge, const SUColor* color) {
  MODELHOST_CALL(SUEdgeSetColor);
  return changeFrom(edge, color, [](Edge& e, const SUColor& c) { e.color = c; });
}

SUResult SUEdgeGetNumFaces(SUEdgeRef edge, size_t* count) {
  MODELHOST_CALL(SUEdgeGetNumFaces);
  return give(edge, count, [](const Edge& e) { return e.faces.size(); });
}

SUResult SUEdgeGetFaces(SUEdgeRef edge, size_t len, SUFaceRef faces[], size_t* count) {
  MODELHOST_CALL(SUEdgeGetFaces);
  return giveList(
      edge, len, faces, count, [](const Edge& e) -> const auto& { return e.faces; });
}

SUEntityRef SUVertexToEntity(SUVertexRef vertex) {
  MODELHOST_CALL_INFALLIBLE(SUVertexToEntity);
  return convert<SUEntityRef>(vertex);
}

SUVertexRef SUVertexFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUVertexFromEntity);
  return convert<SUVertexRef>(entity);
}

SUResult SUVertexGetPosition(SUVertexRef vertex, SUPoint3D* position) {
  MODELHOST_CALL(SUVertexGetPosition);
  return give(vertex, position, [](const Vertex& v) { return v.position; });
}

SUResult SUVertexGetNumEdges(SUVertexRef vertex, size_t* count) {
  MODELHOST_CALL(SUVertexGetNumEdges);
  return give(vertex, count, [](const Vertex& v) { return v.edges.size(); });
}

SUResult SUVertexGetEdges(SUVertexRef vertex, size_t len, SUEdgeRef edges[], size_t* count) {
  MODELHOST_CALL(SUVertexGetEdges);
  return giveList(
      vertex, len, edges, count, [](const Vertex& v) -> const auto& { return v.edges; });
}

namespace {

std::vector<const Face*> facesAt(const Vertex& vertex) {
  std::vector<const Face*> faces;
  for (const Edge* edge : vertex.edges) {
    for (const Face* face : edge->faces) {
      if (std::find(faces.begin(), faces.end(), face) == faces.end()) faces.push_back(face);
    }
  }
  return faces;
}

}  // namespace

SUResult SUVertexGetNumFaces(SUVertexRef vertex, size_t* count) {
  MODELHOST_CALL(SUVertexGetNumFaces);
  return give(vertex, count, [](const Vertex& v) { return facesAt(v).size(); });
}

SUResult SUVertexGetFaces(SUVertexRef vertex, size_t len, SUFaceRef faces[], size_t* count) {
  MODELHOST_CALL(SUVertexGetFaces);
  return giveList(vertex, len, faces, count, &facesAt);
}
