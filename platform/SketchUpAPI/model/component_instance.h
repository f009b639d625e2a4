#ifndef SKETCHUPAPI_MODEL_COMPONENT_INSTANCE_H_
#define SKETCHUPAPI_MODEL_COMPONENT_INSTANCE_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/transformation.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SUComponentInstanceToEntity(SUComponentInstanceRef instance);
// Also of a group or an image, which are instances of definitions of their own.
SU_EXPORT SUComponentInstanceRef SUComponentInstanceFromEntity(SUEntityRef entity);
SU_EXPORT SUDrawingElementRef SUComponentInstanceToDrawingElement(SUComponentInstanceRef instance);
SU_EXPORT SUComponentInstanceRef SUComponentInstanceFromDrawingElement(SUDrawingElementRef element);

SU_EXPORT enum SUResult SUComponentInstanceRelease(SUComponentInstanceRef* instance);
SU_EXPORT enum SUResult SUComponentInstanceGetName(SUComponentInstanceRef instance,
                                                   SUStringRef* name);
SU_EXPORT enum SUResult SUComponentInstanceSetName(SUComponentInstanceRef instance,
                                                   const char* name);
SU_EXPORT enum SUResult SUComponentInstanceGetTransform(SUComponentInstanceRef instance,
                                                        struct SUTransformation* transform);
SU_EXPORT enum SUResult SUComponentInstanceSetTransform(SUComponentInstanceRef instance,
                                                        const struct SUTransformation* transform);
SU_EXPORT enum SUResult SUComponentInstanceGetDefinition(SUComponentInstanceRef instance,
                                                         SUComponentDefinitionRef* definition);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_COMPONENT_INSTANCE_H_
