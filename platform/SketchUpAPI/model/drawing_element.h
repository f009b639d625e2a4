#ifndef SKETCHUPAPI_MODEL_DRAWING_ELEMENT_H_
#define SKETCHUPAPI_MODEL_DRAWING_ELEMENT_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SUDrawingElementToEntity(SUDrawingElementRef element);
SU_EXPORT SUDrawingElementRef SUDrawingElementFromEntity(SUEntityRef entity);
SU_EXPORT enum SURefType SUDrawingElementGetType(SUDrawingElementRef element);

// In the coordinates of the entities that hold the element; of a definition, its own.
SU_EXPORT enum SUResult SUDrawingElementGetBoundingBox(SUDrawingElementRef element,
                                                       struct SUBoundingBox3D* box);
// Of a face, the front material. NO_DATA when there is none.
SU_EXPORT enum SUResult SUDrawingElementGetMaterial(SUDrawingElementRef element,
                                                    SUMaterialRef* material);
SU_EXPORT enum SUResult SUDrawingElementSetMaterial(SUDrawingElementRef element,
                                                    SUMaterialRef material);
SU_EXPORT enum SUResult SUDrawingElementGetLayer(SUDrawingElementRef element, SULayerRef* layer);
SU_EXPORT enum SUResult SUDrawingElementSetLayer(SUDrawingElementRef element, SULayerRef layer);
SU_EXPORT enum SUResult SUDrawingElementGetHidden(SUDrawingElementRef element, bool* hidden);
SU_EXPORT enum SUResult SUDrawingElementSetHidden(SUDrawingElementRef element, bool hidden);
SU_EXPORT enum SUResult SUDrawingElementGetCastsShadows(SUDrawingElementRef element, bool* casts);
SU_EXPORT enum SUResult SUDrawingElementSetCastsShadows(SUDrawingElementRef element, bool casts);
SU_EXPORT enum SUResult SUDrawingElementGetReceivesShadows(SUDrawingElementRef element,
                                                           bool* receives);
SU_EXPORT enum SUResult SUDrawingElementSetReceivesShadows(SUDrawingElementRef element,
                                                           bool receives);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_DRAWING_ELEMENT_H_
