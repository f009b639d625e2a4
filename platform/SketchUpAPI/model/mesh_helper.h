#ifndef SKETCHUPAPI_MODEL_MESH_HELPER_H_
#define SKETCHUPAPI_MODEL_MESH_HELPER_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>

SU_EXTERN_C_BEGIN

SU_EXPORT enum SUResult SUMeshHelperCreate(SUMeshHelperRef* out_helper, SUFaceRef face);
SU_EXPORT enum SUResult SUMeshHelperCreateWithTextureWriter(SUMeshHelperRef* out_helper,
                                                            SUFaceRef face,
                                                            SUTextureWriterRef writer);
SU_EXPORT enum SUResult SUMeshHelperRelease(SUMeshHelperRef* helper);
SU_EXPORT enum SUResult SUMeshHelperGetNumTriangles(SUMeshHelperRef helper, size_t* count);
SU_EXPORT enum SUResult SUMeshHelperGetNumVertices(SUMeshHelperRef helper, size_t* count);
// Three indexes per triangle; `count` is their number.
SU_EXPORT enum SUResult SUMeshHelperGetVertexIndices(SUMeshHelperRef helper, size_t len,
                                                     size_t indices[], size_t* count);
SU_EXPORT enum SUResult SUMeshHelperGetVertices(SUMeshHelperRef helper, size_t len,
                                                struct SUPoint3D vertices[], size_t* count);
SU_EXPORT enum SUResult SUMeshHelperGetNormals(SUMeshHelperRef helper, size_t len,
                                               struct SUVector3D normals[], size_t* count);
// (s, t, q) per vertex.
SU_EXPORT enum SUResult SUMeshHelperGetFrontSTQCoords(SUMeshHelperRef helper, size_t len,
                                                      struct SUPoint3D stq[], size_t* count);
SU_EXPORT enum SUResult SUMeshHelperGetBackSTQCoords(SUMeshHelperRef helper, size_t len,
                                                     struct SUPoint3D stq[], size_t* count);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_MESH_HELPER_H_
