#include <SketchUpAPI/model/face.h>
#include <SketchUpAPI/model/opening.h>

#include <algorithm>

#include "core/Args.h"
#include "model/Build.h"
#include "model/Helpers.h"
#include "model/Measure.h"
#include "model/Model.h"

using namespace modelhost;

SUEntityRef SUFaceToEntity(SUFaceRef face) {
  MODELHOST_CALL_INFALLIBLE(SUFaceToEntity);
  return convert<SUEntityRef>(face);
}

SUFaceRef SUFaceFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUFaceFromEntity);
  return convert<SUFaceRef>(entity);
}

SUDrawingElementRef SUFaceToDrawingElement(SUFaceRef face) {
  MODELHOST_CALL_INFALLIBLE(SUFaceToDrawingElement);
  return convert<SUDrawingElementRef>(face);
}

SUFaceRef SUFaceFromDrawingElement(SUDrawingElementRef element) {
  MODELHOST_CALL_INFALLIBLE(SUFaceFromDrawingElement);
  return convert<SUFaceRef>(element);
}

namespace {

// The points that a loop refers to: up to its highest index.
std::span<const SUPoint3D> pointsFor(const LoopInput& loop, const SUPoint3D points[]) {
  const auto highest = std::max_element(loop.indices.begin(), loop.indices.end());
  return {points, highest == loop.indices.end() ? 0 : *highest + 1};
}

SUResult createFace(SUFaceRef* out_face, std::span<const SUPoint3D> points,
                    const LoopInput& outer) {
  auto face = buildLoneFace(points, outer);
  if (!face) return SU_ERROR_INVALID_INPUT;
  *out_face = refOf<SUFaceRef>(face.release());
  return SU_ERROR_NONE;
}

// Each once, in the order in which the loops meet them.
template <class Pick>
auto distinct(const Face& face, Pick pick) {
  std::remove_cvref_t<decltype(pick(*face.loops.front()))> items;
  for (const auto& loop : face.loops) {
    for (auto* item : pick(*loop)) {
      if (std::find(items.begin(), items.end(), item) == items.end()) items.push_back(item);
    }
  }
  return items;
}

auto edgesOf(const Face& face) {
  return distinct(
      face, [](const Loop& loop) -> const auto& { return loop.edges; });
}

auto verticesOf(const Face& face) {
  return distinct(
      face, [](const Loop& loop) -> const auto& { return loop.vertices; });
}

}  // namespace

SUResult SUFaceCreate(SUFaceRef* out_face, const SUPoint3D vertices[], SULoopInputRef* outer_loop) {
  MODELHOST_CALL(SUFaceCreate);
  if (const SUResult may = mayCreate(out_face); may != SU_ERROR_NONE) return may;
  if (vertices == nullptr || outer_loop == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  const LoopInput* loop = find(*outer_loop);
  if (loop == nullptr) return SU_ERROR_INVALID_INPUT;
  const SUResult result = createFace(out_face, pointsFor(*loop, vertices), *loop);
  return result == SU_ERROR_NONE ? release(outer_loop) : result;
}

SUResult SUFaceCreateSimple(SUFaceRef* out_face, const SUPoint3D vertices[], size_t len) {
  MODELHOST_CALL(SUFaceCreateSimple);
  if (const SUResult may = mayCreate(out_face); may != SU_ERROR_NONE) return may;
  if (vertices == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  LoopInput loop;
  for (size_t i = 0; i < len; ++i) loop.indices.push_back(i);
  return createFace(out_face, {vertices, len}, loop);
}

SUResult SUFaceRelease(SUFaceRef* face) {
  MODELHOST_CALL(SUFaceRelease);
  return releaseIf(face, [](const Face& f) { return f.parent == nullptr; });
}

SUResult SUFaceAddInnerLoop(SUFaceRef face, const SUPoint3D vertices[], SULoopInputRef* loop) {
  MODELHOST_CALL(SUFaceAddInnerLoop);
  Face* f = find(face);
  if (f == nullptr) return SU_ERROR_INVALID_INPUT;
  if (vertices == nullptr || loop == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  const LoopInput* input = find(*loop);
  if (input == nullptr) return SU_ERROR_INVALID_INPUT;
  willChange(*f);
  const SUResult result = addHole(*f, pointsFor(*input, vertices), *input);
  return result == SU_ERROR_NONE ? release(loop) : result;
}

SUResult SUFaceGetNormal(SUFaceRef face, SUVector3D* normal) {
  MODELHOST_CALL(SUFaceGetNormal);
  return give(face, normal, [](const Face& f) { return f.normal(); });
}

SUResult SUFaceGetPlane(SUFaceRef face, SUPlane3D* plane) {
  MODELHOST_CALL(SUFaceGetPlane);
  return give(face, plane, [](const Face& f) { return f.plane; });
}

SUResult SUFaceGetArea(SUFaceRef face, const SUTransformation* transform, double* area) {
  MODELHOST_CALL(SUFaceGetArea);
  return give(face, area, [&](const Face& f) { return areaOf(f, transform); });
}

SUResult SUFaceReverse(SUFaceRef face) {
  MODELHOST_CALL(SUFaceReverse);
  return change(face, [](Face& f) {
    f.plane = {-f.plane.a, -f.plane.b, -f.plane.c, -f.plane.d};
    f.turnLoops();
    std::swap(f.material, f.backMaterial);
    std::swap(f.frontMapping, f.backMapping);
  });
}

SUResult SUFaceGetOuterLoop(SUFaceRef face, SULoopRef* loop) {
  MODELHOST_CALL(SUFaceGetOuterLoop);
  return giveRef(face, loop, [](const Face& f) { return f.loops.front().get(); });
}

SUResult SUFaceGetNumInnerLoops(SUFaceRef face, size_t* count) {
  MODELHOST_CALL(SUFaceGetNumInnerLoops);
  return give(face, count, [](const Face& f) { return f.loops.size() - 1; });
}

SUResult SUFaceGetInnerLoops(SUFaceRef face, size_t len, SULoopRef loops[], size_t* count) {
  MODELHOST_CALL(SUFaceGetInnerLoops);
  return giveList(face, len, loops, count,
                  [](const Face& f) { return std::span(f.loops).subspan(1); });
}

SUResult SUFaceGetNumEdges(SUFaceRef face, size_t* count) {
  MODELHOST_CALL(SUFaceGetNumEdges);
  return give(face, count, [](const Face& f) { return edgesOf(f).size(); });
}

SUResult SUFaceGetEdges(SUFaceRef face, size_t len, SUEdgeRef edges[], size_t* count) {
  MODELHOST_CALL(SUFaceGetEdges);
  return giveList(face, len, edges, count, [](const Face& f) { return edgesOf(f); });
}

SUResult SUFaceGetNumVertices(SUFaceRef face, size_t* count) {
  MODELHOST_CALL(SUFaceGetNumVertices);
  return give(face, count, [](const Face& f) { return verticesOf(f).size(); });
}

SUResult SUFaceGetVertices(SUFaceRef face, size_t len, SUVertexRef vertices[], size_t* count) {
  MODELHOST_CALL(SUFaceGetVertices);
  return giveList(face, len, vertices, count, [](const Face& f) { return verticesOf(f); });
}

SUResult SUFaceGetNumOpenings(SUFaceRef face, size_t* count) {
  MODELHOST_CALL(SUFaceGetNumOpenings);
  return give(face, count, [](const Face& f) { return f.openings.size(); });
}

SUResult SUFaceGetOpenings(SUFaceRef face, size_t len, SUOpeningRef openings[], size_t* count) {
  MODELHOST_CALL(SUFaceGetOpenings);
  const Face* f = find(face);
  if (f == nullptr) return SU_ERROR_INVALID_INPUT;
  return copyList(f->openings, len, openings, count, [](const std::vector<SUPoint3D>& outline) {
    return refOf<SUOpeningRef>(new Opening(outline));
  });
}

SUResult SUOpeningRelease(SUOpeningRef* opening) {
  MODELHOST_CALL(SUOpeningRelease);
  return release(opening);
}

SUResult SUOpeningGetNumPoints(SUOpeningRef opening, size_t* count) {
  MODELHOST_CALL(SUOpeningGetNumPoints);
  return give(opening, count, [](const Opening& o) { return o.points.size(); });
}

SUResult SUOpeningGetPoints(SUOpeningRef opening, size_t len, SUPoint3D points[], size_t* count) {
  MODELHOST_CALL(SUOpeningGetPoints);
  const Opening* o = find(opening);
  if (o == nullptr) return SU_ERROR_INVALID_INPUT;
  return copyList(o->points, len, points, count, [](const SUPoint3D& p) { return p; });
}
