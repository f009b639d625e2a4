#include <SketchUpAPI/model/geometry_input.h>
#include <SketchUpAPI/model/loop_input.h>

#include "core/Args.h"
#include "model/Build.h"
#include "model/Model.h"

using namespace modelhost;

namespace {

// Changes the flags of an edge of a loop or of a geometry input.
template <class Ref, class Change>
SUResult changeFlags(Ref ref, size_t index, Change apply) {
  auto* input = find(ref);
  if (input == nullptr) return SU_ERROR_INVALID_INPUT;
  LoopSpec::EdgeFlags* flags = nullptr;
  if constexpr (std::is_same_v<Ref, SULoopInputRef>) {
    flags = input->edge(index);
  } else if (index < input->edges.size()) {
    flags = &input->edges[index].flags;
  }
  if (flags == nullptr) return SU_ERROR_OUT_OF_RANGE;
  apply(*flags);
  return SU_ERROR_NONE;
}

template <class Ref>
SUResult setEdgeMaterial(Ref ref, size_t index, SUMaterialRef material) {
  Material* m = find(material);
  if (m == nullptr) return SU_ERROR_INVALID_INPUT;
  return changeFlags(ref, index, [&](LoopSpec::EdgeFlags& flags) { flags.material = m; });
}

template <class Ref>
SUResult setEdgeLayer(Ref ref, size_t index, SULayerRef layer) {
  Layer* l = find(layer);
  if (l == nullptr) return SU_ERROR_INVALID_INPUT;
  return changeFlags(ref, index, [&](LoopSpec::EdgeFlags& flags) { flags.layer = l; });
}

template <class Change>
SUResult changeFace(SUGeometryInputRef input, size_t index, Change apply) {
  GeometryInput* i = find(input);
  if (i == nullptr) return SU_ERROR_INVALID_INPUT;
  if (index >= i->faces.size()) return SU_ERROR_OUT_OF_RANGE;
  apply(i->faces[index]);
  return SU_ERROR_NONE;
}

}  // namespace

SUResult SULoopInputCreate(SULoopInputRef* out_loop) {
  MODELHOST_CALL(SULoopInputCreate);
  return create(out_loop);
}

SUResult SULoopInputRelease(SULoopInputRef* loop) {
  MODELHOST_CALL(SULoopInputRelease);
  return releaseIf(loop, [](const LoopInput& l) { return !l.taken; });
}

SUResult SULoopInputAddVertexIndex(SULoopInputRef loop, size_t vertex_index) {
  MODELHOST_CALL(SULoopInputAddVertexIndex);
  return change(loop, [&](LoopInput& l) { l.indices.push_back(vertex_index); });
}

SUResult SULoopInputEdgeSetHidden(SULoopInputRef loop, size_t edge_index, bool hidden) {
  MODELHOST_CALL(SULoopInputEdgeSetHidden);
  return changeFlags(loop, edge_index, [&](LoopSpec::EdgeFlags& f) { f.hidden = hidden; });
}

SUResult SULoopInputEdgeSetSoft(SULoopInputRef loop, size_t edge_index, bool soft) {
  MODELHOST_CALL(SULoopInputEdgeSetSoft);
  return changeFlags(loop, edge_index, [&](LoopSpec::EdgeFlags& f) { f.soft = soft; });
}

SUResult SULoopInputEdgeSetSmooth(SULoopInputRef loop, size_t edge_index, bool smooth) {
  MODELHOST_CALL(SULoopInputEdgeSetSmooth);
  return changeFlags(loop, edge_index, [&](LoopSpec::EdgeFlags& f) { f.smooth = smooth; });
}

SUResult SULoopInputEdgeSetMaterial(SULoopInputRef loop, size_t edge_index,
                                    SUMaterialRef material) {
  MODELHOST_CALL(SULoopInputEdgeSetMaterial);
  return setEdgeMaterial(loop, edge_index, material);
}

SUResult SULoopInputEdgeSetLayer(SULoopInputRef loop, size_t edge_index, SULayerRef layer) {
  MODELHOST_CALL(SULoopInputEdgeSetLayer);
  return setEdgeLayer(loop, edge_index, layer);
}

SUResult SULoopInputIsClosed(SULoopInputRef loop, bool* closed) {
  MODELHOST_CALL(SULoopInputIsClosed);
  return give(loop, closed, [](const LoopInput& l) { return l.indices.size() >= 3; });
}

SUResult SUGeometryInputCreate(SUGeometryInputRef* out_input) {
  MODELHOST_CALL(SUGeometryInputCreate);
  return create(out_input);
}

SUResult SUGeometryInputRelease(SUGeometryInputRef* input) {
  MODELHOST_CALL(SUGeometryInputRelease);
  return release(input);
}

SUResult SUGeometryInputAddVertex(SUGeometryInputRef input, const SUPoint3D* point) {
  MODELHOST_CALL(SUGeometryInputAddVertex);
  return changeFrom(input, point,
                    [](GeometryInput& i, const SUPoint3D& p) { i.points.push_back(p); });
}

SUResult SUGeometryInputSetVertices(SUGeometryInputRef input, size_t len,
                                    const SUPoint3D points[]) {
  MODELHOST_CALL(SUGeometryInputSetVertices);
  return changeFrom(input, points, [&](GeometryInput& i, const SUPoint3D&) {
    i.points.assign(points, points + len);
  });
}

SUResult SUGeometryInputAddEdge(SUGeometryInputRef input, size_t start, size_t end,
                                size_t* edge_index) {
  MODELHOST_CALL(SUGeometryInputAddEdge);
  return change(input, [&](GeometryInput& i) {
    i.edges.push_back({start, end, {}});
    if (edge_index != nullptr) *edge_index = i.edges.size() - 1;
  });
}

SUResult SUGeometryInputEdgeSetHidden(SUGeometryInputRef input, size_t edge_index, bool hidden) {
  MODELHOST_CALL(SUGeometryInputEdgeSetHidden);
  return changeFlags(input, edge_index, [&](LoopSpec::EdgeFlags& f) { f.hidden = hidden; });
}

SUResult SUGeometryInputEdgeSetSoft(SUGeometryInputRef input, size_t edge_index, bool soft) {
  MODELHOST_CALL(SUGeometryInputEdgeSetSoft);
  return changeFlags(input, edge_index, [&](LoopSpec::EdgeFlags& f) { f.soft = soft; });
}

SUResult SUGeometryInputEdgeSetSmooth(SUGeometryInputRef input, size_t edge_index, bool smooth) {
  MODELHOST_CALL(SUGeometryInputEdgeSetSmooth);
  return changeFlags(input, edge_index, [&](LoopSpec::EdgeFlags& f) { f.smooth = smooth; });
}

SUResult SUGeometryInputEdgeSetMaterial(SUGeometryInputRef input, size_t edge_index,
                                        SUMaterialRef material) {
  MODELHOST_CALL(SUGeometryInputEdgeSetMaterial);
  return setEdgeMaterial(input, edge_index, material);
}

SUResult SUGeometryInputEdgeSetLayer(SUGeometryInputRef input, size_t edge_index,
                                     SULayerRef layer) {
  MODELHOST_CALL(SUGeometryInputEdgeSetLayer);
  return setEdgeLayer(input, edge_index, layer);
}

SUResult SUGeometryInputAddFace(SUGeometryInputRef input, SULoopInputRef* outer_loop,
                                size_t* face_index) {
  MODELHOST_CALL(SUGeometryInputAddFace);
  if (outer_loop == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  LoopInput* loop = find(*outer_loop);
  if (loop == nullptr || loop->taken) return SU_ERROR_INVALID_INPUT;
  return change(input, [&](GeometryInput& i) {
    loop->taken = true;
    i.faces.emplace_back().outer.reset(loop);
    outer_loop->ptr = nullptr;
    if (face_index != nullptr) *face_index = i.faces.size() - 1;
  });
}

SUResult SUGeometryInputFaceAddInnerLoop(SUGeometryInputRef input, size_t face_index,
                                         SULoopInputRef* loop) {
  MODELHOST_CALL(SUGeometryInputFaceAddInnerLoop);
  if (loop == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  LoopInput* inner = find(*loop);
  if (inner == nullptr || inner->taken) return SU_ERROR_INVALID_INPUT;
  return changeFace(input, face_index, [&](GeometryInput::FaceInput& face) {
    inner->taken = true;
    face.inner.emplace_back(inner);
    loop->ptr = nullptr;
  });
}

SUResult SUGeometryInputFaceSetReverse(SUGeometryInputRef input, size_t face_index, bool reverse) {
  MODELHOST_CALL(SUGeometryInputFaceSetReverse);
  return changeFace(input, face_index,
                    [&](GeometryInput::FaceInput& face) { face.reversed = reverse; });
}

SUResult SUGeometryInputFaceSetLayer(SUGeometryInputRef input, size_t face_index,
                                     SULayerRef layer) {
  MODELHOST_CALL(SUGeometryInputFaceSetLayer);
  Layer* l = find(layer);
  if (l == nullptr) return SU_ERROR_INVALID_INPUT;
  return changeFace(input, face_index, [&](GeometryInput::FaceInput& face) { face.layer = l; });
}

SUResult SUGeometryInputFaceSetHidden(SUGeometryInputRef input, size_t face_index, bool hidden) {
  MODELHOST_CALL(SUGeometryInputFaceSetHidden);
  return changeFace(input, face_index,
                    [&](GeometryInput::FaceInput& face) { face.hidden = hidden; });
}

SUResult SUGeometryInputFaceSetFrontMaterial(SUGeometryInputRef input, size_t face_index,
                                             const SUMaterialInput* material) {
  MODELHOST_CALL(SUGeometryInputFaceSetFrontMaterial);
  if (material == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return changeFace(input, face_index,
                    [&](GeometryInput::FaceInput& face) { face.front = *material; });
}

SUResult SUGeometryInputFaceSetBackMaterial(SUGeometryInputRef input, size_t face_index,
                                            const SUMaterialInput* material) {
  MODELHOST_CALL(SUGeometryInputFaceSetBackMaterial);
  if (material == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return changeFace(input, face_index,
                    [&](GeometryInput::FaceInput& face) { face.back = *material; });
}

SUResult SUGeometryInputGetCounts(SUGeometryInputRef input, size_t* vertices, size_t* faces,
                                  size_t* edges, size_t* curves, size_t* arcs) {
  MODELHOST_CALL(SUGeometryInputGetCounts);
  const GeometryInput* i = find(input);
  if (i == nullptr) return SU_ERROR_INVALID_INPUT;
  if (vertices != nullptr) *vertices = i->points.size();
  if (faces != nullptr) *faces = i->faces.size();
  if (edges != nullptr) *edges = i->edges.size();
  if (curves != nullptr) *curves = 0;
  if (arcs != nullptr) *arcs = 0;
  return SU_ERROR_NONE;
}
