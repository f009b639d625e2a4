#ifndef SKETCHUPAPI_MODEL_IMAGE_H_
#define SKETCHUPAPI_MODEL_IMAGE_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/color.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/transformation.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SUImageToEntity(SUImageRef image);
SU_EXPORT SUImageRef SUImageFromEntity(SUEntityRef entity);
SU_EXPORT SUDrawingElementRef SUImageToDrawingElement(SUImageRef image);
SU_EXPORT SUImageRef SUImageFromDrawingElement(SUDrawingElementRef element);
SU_EXPORT SUComponentInstanceRef SUImageToComponentInstance(SUImageRef image);
SU_EXPORT SUImageRef SUImageFromComponentInstance(SUComponentInstanceRef instance);

// The image belongs to the caller until it is added to entities.
SU_EXPORT enum SUResult SUImageCreateFromFile(SUImageRef* out_image, const char* path);
SU_EXPORT enum SUResult SUImageCreateFromImageRep(SUImageRef* out_image, SUImageRepRef rep);
SU_EXPORT enum SUResult SUImageRelease(SUImageRef* image);
SU_EXPORT enum SUResult SUImageGetName(SUImageRef image, SUStringRef* name);
SU_EXPORT enum SUResult SUImageSetName(SUImageRef image, const char* name);
SU_EXPORT enum SUResult SUImageGetTransform(SUImageRef image, struct SUTransformation* transform);
SU_EXPORT enum SUResult SUImageSetTransform(SUImageRef image,
                                            const struct SUTransformation* transform);
SU_EXPORT enum SUResult SUImageGetFileName(SUImageRef image, SUStringRef* name);
// Size in the model, the scale of the transformation included.
SU_EXPORT enum SUResult SUImageGetDimensions(SUImageRef image, double* width, double* height);
SU_EXPORT enum SUResult SUImageGetPixelDimensions(SUImageRef image, size_t* width, size_t* height);
// Fills a representation that the caller has created.
SU_EXPORT enum SUResult SUImageGetImageRep(SUImageRef image, SUImageRepRef* rep);
SU_EXPORT enum SUResult SUImageGetDefinition(SUImageRef image,
                                             SUComponentDefinitionRef* definition);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_IMAGE_H_
