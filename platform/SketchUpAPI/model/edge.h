#ifndef SKETCHUPAPI_MODEL_EDGE_H_
#define SKETCHUPAPI_MODEL_EDGE_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/color.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SUEdgeToEntity(SUEdgeRef edge);
SU_EXPORT SUEdgeRef SUEdgeFromEntity(SUEntityRef entity);
SU_EXPORT SUDrawingElementRef SUEdgeToDrawingElement(SUEdgeRef edge);
SU_EXPORT SUEdgeRef SUEdgeFromDrawingElement(SUDrawingElementRef element);

SU_EXPORT enum SUResult SUEdgeCreate(SUEdgeRef* out_edge, const struct SUPoint3D* start,
                                     const struct SUPoint3D* end);
SU_EXPORT enum SUResult SUEdgeRelease(SUEdgeRef* edge);
SU_EXPORT enum SUResult SUEdgeGetStartVertex(SUEdgeRef edge, SUVertexRef* vertex);
SU_EXPORT enum SUResult SUEdgeGetEndVertex(SUEdgeRef edge, SUVertexRef* vertex);
SU_EXPORT enum SUResult SUEdgeGetSoft(SUEdgeRef edge, bool* soft);
SU_EXPORT enum SUResult SUEdgeSetSoft(SUEdgeRef edge, bool soft);
SU_EXPORT enum SUResult SUEdgeGetSmooth(SUEdgeRef edge, bool* smooth);
SU_EXPORT enum SUResult SUEdgeSetSmooth(SUEdgeRef edge, bool smooth);
SU_EXPORT enum SUResult SUEdgeGetColor(SUEdgeRef edge, SUColor* color);
SU_EXPORT enum SUResult SUEdgeSetColor(SUEdgeRef edge, const SUColor* color);
SU_EXPORT enum SUResult SUEdgeGetNumFaces(SUEdgeRef edge, size_t* count);
SU_EXPORT enum SUResult SUEdgeGetFaces(SUEdgeRef edge, size_t len, SUFaceRef faces[],
                                       size_t* count);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_EDGE_H_
