#ifndef SKETCHUPAPI_MODEL_FACE_H_
#define SKETCHUPAPI_MODEL_FACE_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/model/geometry_input.h>
#include <SketchUpAPI/transformation.h>

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SUFaceToEntity(SUFaceRef face);
SU_EXPORT SUFaceRef SUFaceFromEntity(SUEntityRef entity);
SU_EXPORT SUDrawingElementRef SUFaceToDrawingElement(SUFaceRef face);
SU_EXPORT SUFaceRef SUFaceFromDrawingElement(SUDrawingElementRef element);

// `outer_loop` indexes `vertices`; on success the face has taken it over and the handle is invalid.
SU_EXPORT enum SUResult SUFaceCreate(SUFaceRef* out_face, const struct SUPoint3D vertices[],
                                     SULoopInputRef* outer_loop);
SU_EXPORT enum SUResult SUFaceCreateSimple(SUFaceRef* out_face, const struct SUPoint3D vertices[],
                                           size_t len);
SU_EXPORT enum SUResult SUFaceRelease(SUFaceRef* face);
SU_EXPORT enum SUResult SUFaceAddInnerLoop(SUFaceRef face, const struct SUPoint3D vertices[],
                                           SULoopInputRef* loop);

SU_EXPORT enum SUResult SUFaceGetNormal(SUFaceRef face, struct SUVector3D* normal);
SU_EXPORT enum SUResult SUFaceGetPlane(SUFaceRef face, struct SUPlane3D* plane);
SU_EXPORT enum SUResult SUFaceGetArea(SUFaceRef face, const struct SUTransformation* transform,
                                      double* area);
SU_EXPORT enum SUResult SUFaceReverse(SUFaceRef face);

SU_EXPORT enum SUResult SUFaceGetOuterLoop(SUFaceRef face, SULoopRef* loop);
SU_EXPORT enum SUResult SUFaceGetNumInnerLoops(SUFaceRef face, size_t* count);
SU_EXPORT enum SUResult SUFaceGetInnerLoops(SUFaceRef face, size_t len, SULoopRef loops[],
                                            size_t* count);
SU_EXPORT enum SUResult SUFaceGetNumEdges(SUFaceRef face, size_t* count);
SU_EXPORT enum SUResult SUFaceGetEdges(SUFaceRef face, size_t len, SUEdgeRef edges[],
                                       size_t* count);
SU_EXPORT enum SUResult SUFaceGetNumVertices(SUFaceRef face, size_t* count);
SU_EXPORT enum SUResult SUFaceGetVertices(SUFaceRef face, size_t len, SUVertexRef vertices[],
                                          size_t* count);
// Cuts made by components glued to the face. The caller releases every opening it gets.
SU_EXPORT enum SUResult SUFaceGetNumOpenings(SUFaceRef face, size_t* count);
SU_EXPORT enum SUResult SUFaceGetOpenings(SUFaceRef face, size_t len, SUOpeningRef openings[],
                                          size_t* count);

SU_EXPORT enum SUResult SUFaceGetFrontMaterial(SUFaceRef face, SUMaterialRef* material);
SU_EXPORT enum SUResult SUFaceSetFrontMaterial(SUFaceRef face, SUMaterialRef material);
SU_EXPORT enum SUResult SUFaceGetBackMaterial(SUFaceRef face, SUMaterialRef* material);
SU_EXPORT enum SUResult SUFaceSetBackMaterial(SUFaceRef face, SUMaterialRef material);
SU_EXPORT enum SUResult SUFaceIsFrontMaterialAffine(SUFaceRef face, bool* affine);
SU_EXPORT enum SUResult SUFaceIsBackMaterialAffine(SUFaceRef face, bool* affine);
// Paints one side; one to four uv coordinates fix how the texture lies on it.
SU_EXPORT enum SUResult SUFacePositionMaterial(SUFaceRef face, bool front, SUMaterialRef material,
                                               size_t num_points, const struct SUPoint3D points[],
                                               const struct SUPoint2D uv_coords[]);

SU_EXPORT enum SUResult SUFaceGetUVHelper(SUFaceRef face, bool front, bool back,
                                          SUTextureWriterRef texture_writer,
                                          SUUVHelperRef* out_helper);
SU_EXPORT enum SUResult SUFaceGetUVHelperWithTextureHandle(SUFaceRef face, bool front, bool back,
                                                           SUTextureWriterRef texture_writer,
                                                           long texture_id,
                                                           SUUVHelperRef* out_helper);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_FACE_H_
