#ifndef SKETCHUPAPI_MODEL_GEOMETRY_INPUT_H_
#define SKETCHUPAPI_MODEL_GEOMETRY_INPUT_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/model/loop_input.h>

// How a texture lies on a face: uv_coords[i] belongs to the vertex vertex_indices[i] of the
// geometry input. One pair shifts, two scale and turn, three are any affine mapping, four may
// distort.
struct SUMaterialInput {
  size_t num_uv_coords;
  struct SUPoint2D uv_coords[4];
  size_t vertex_indices[4];
  SUMaterialRef material;
};

#ifndef __cplusplus
typedef struct SUMaterialInput SUMaterialInput;
#endif

SU_EXTERN_C_BEGIN

SU_EXPORT enum SUResult SUGeometryInputCreate(SUGeometryInputRef* out_input);
SU_EXPORT enum SUResult SUGeometryInputRelease(SUGeometryInputRef* input);
SU_EXPORT enum SUResult SUGeometryInputAddVertex(SUGeometryInputRef input,
                                                 const struct SUPoint3D* point);
SU_EXPORT enum SUResult SUGeometryInputSetVertices(SUGeometryInputRef input, size_t len,
                                                   const struct SUPoint3D points[]);
SU_EXPORT enum SUResult SUGeometryInputAddEdge(SUGeometryInputRef input, size_t start, size_t end,
                                               size_t* edge_index);
SU_EXPORT enum SUResult SUGeometryInputEdgeSetHidden(SUGeometryInputRef input, size_t edge_index,
                                                     bool hidden);
SU_EXPORT enum SUResult SUGeometryInputEdgeSetSoft(SUGeometryInputRef input, size_t edge_index,
                                                   bool soft);
SU_EXPORT enum SUResult SUGeometryInputEdgeSetSmooth(SUGeometryInputRef input, size_t edge_index,
                                                     bool smooth);
SU_EXPORT enum SUResult SUGeometryInputEdgeSetMaterial(SUGeometryInputRef input, size_t edge_index,
                                                       SUMaterialRef material);
SU_EXPORT enum SUResult SUGeometryInputEdgeSetLayer(SUGeometryInputRef input, size_t edge_index,
                                                    SULayerRef layer);
// On success the loop has been taken over and its handle is invalid.
SU_EXPORT enum SUResult SUGeometryInputAddFace(SUGeometryInputRef input, SULoopInputRef* outer_loop,
                                               size_t* face_index);
SU_EXPORT enum SUResult SUGeometryInputFaceAddInnerLoop(SUGeometryInputRef input, size_t face_index,
                                                        SULoopInputRef* loop);
SU_EXPORT enum SUResult SUGeometryInputFaceSetReverse(SUGeometryInputRef input, size_t face_index,
                                                      bool reverse);
SU_EXPORT enum SUResult SUGeometryInputFaceSetLayer(SUGeometryInputRef input, size_t face_index,
                                                    SULayerRef layer);
SU_EXPORT enum SUResult SUGeometryInputFaceSetHidden(SUGeometryInputRef input, size_t face_index,
                                                     bool hidden);
SU_EXPORT enum SUResult SUGeometryInputFaceSetFrontMaterial(SUGeometryInputRef input,
                                                            size_t face_index,
                                                            const struct SUMaterialInput* material);
SU_EXPORT enum SUResult SUGeometryInputFaceSetBackMaterial(SUGeometryInputRef input,
                                                           size_t face_index,
                                                           const struct SUMaterialInput* material);
SU_EXPORT enum SUResult SUGeometryInputGetCounts(SUGeometryInputRef input, size_t* vertices,
                                                 size_t* faces, size_t* edges, size_t* curves,
                                                 size_t* arcs);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_GEOMETRY_INPUT_H_
