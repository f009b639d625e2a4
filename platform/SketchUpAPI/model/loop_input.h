#ifndef SKETCHUPAPI_MODEL_LOOP_INPUT_H_
#define SKETCHUPAPI_MODEL_LOOP_INPUT_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/model/defs.h>

SU_EXTERN_C_BEGIN

SU_EXPORT enum SUResult SULoopInputCreate(SULoopInputRef* out_loop);
SU_EXPORT enum SUResult SULoopInputRelease(SULoopInputRef* loop);
SU_EXPORT enum SUResult SULoopInputAddVertexIndex(SULoopInputRef loop, size_t vertex_index);
// Edge i leads from the loop's vertex i to the next.
SU_EXPORT enum SUResult SULoopInputEdgeSetHidden(SULoopInputRef loop, size_t edge_index,
                                                 bool hidden);
SU_EXPORT enum SUResult SULoopInputEdgeSetSoft(SULoopInputRef loop, size_t edge_index, bool soft);
SU_EXPORT enum SUResult SULoopInputEdgeSetSmooth(SULoopInputRef loop, size_t edge_index,
                                                 bool smooth);
SU_EXPORT enum SUResult SULoopInputEdgeSetMaterial(SULoopInputRef loop, size_t edge_index,
                                                   SUMaterialRef material);
SU_EXPORT enum SUResult SULoopInputEdgeSetLayer(SULoopInputRef loop, size_t edge_index,
                                                SULayerRef layer);
SU_EXPORT enum SUResult SULoopInputIsClosed(SULoopInputRef loop, bool* closed);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_LOOP_INPUT_H_
