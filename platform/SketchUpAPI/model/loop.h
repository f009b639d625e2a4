#ifndef SKETCHUPAPI_MODEL_LOOP_H_
#define SKETCHUPAPI_MODEL_LOOP_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/model/geometry_input.h>

enum SULoopWindingType { SULoopWindingType_CW = 0, SULoopWindingType_CCW = 1 };

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SULoopToEntity(SULoopRef loop);
SU_EXPORT SULoopRef SULoopFromEntity(SUEntityRef entity);

// Edge i leads from vertex i to vertex i + 1.
SU_EXPORT enum SUResult SULoopGetNumVertices(SULoopRef loop, size_t* count);
SU_EXPORT enum SUResult SULoopGetVertices(SULoopRef loop, size_t len, SUVertexRef vertices[],
                                          size_t* count);
SU_EXPORT enum SUResult SULoopGetEdges(SULoopRef loop, size_t len, SUEdgeRef edges[],
                                       size_t* count);
// Seen with `normal` pointing at the viewer.
SU_EXPORT enum SUResult SULoopGetWinding(SULoopRef loop, const struct SUVector3D* normal,
                                         enum SULoopWindingType* winding);
SU_EXPORT enum SUResult SULoopIsOuterLoop(SULoopRef loop, bool* outer);
SU_EXPORT enum SUResult SULoopGetFace(SULoopRef loop, SUFaceRef* face);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_LOOP_H_
