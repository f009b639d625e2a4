#ifndef SKETCHUPAPI_MODEL_VERTEX_H_
#define SKETCHUPAPI_MODEL_VERTEX_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SUVertexToEntity(SUVertexRef vertex);
SU_EXPORT SUVertexRef SUVertexFromEntity(SUEntityRef entity);

SU_EXPORT enum SUResult SUVertexGetPosition(SUVertexRef vertex, struct SUPoint3D* position);
SU_EXPORT enum SUResult SUVertexGetNumEdges(SUVertexRef vertex, size_t* count);
SU_EXPORT enum SUResult SUVertexGetEdges(SUVertexRef vertex, size_t len, SUEdgeRef edges[],
                                         size_t* count);
SU_EXPORT enum SUResult SUVertexGetNumFaces(SUVertexRef vertex, size_t* count);
SU_EXPORT enum SUResult SUVertexGetFaces(SUVertexRef vertex, size_t len, SUFaceRef faces[],
                                         size_t* count);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_VERTEX_H_
