#ifndef SKETCHUPAPI_MODEL_GROUP_H_
#define SKETCHUPAPI_MODEL_GROUP_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/transformation.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SUGroupToEntity(SUGroupRef group);
SU_EXPORT SUGroupRef SUGroupFromEntity(SUEntityRef entity);
SU_EXPORT SUDrawingElementRef SUGroupToDrawingElement(SUGroupRef group);
SU_EXPORT SUGroupRef SUGroupFromDrawingElement(SUDrawingElementRef element);
SU_EXPORT SUComponentInstanceRef SUGroupToComponentInstance(SUGroupRef group);
SU_EXPORT SUGroupRef SUGroupFromComponentInstance(SUComponentInstanceRef instance);

// The group belongs to the caller until it is added to entities; then it cannot be released.
SU_EXPORT enum SUResult SUGroupCreate(SUGroupRef* out_group);
SU_EXPORT enum SUResult SUGroupRelease(SUGroupRef* group);
SU_EXPORT enum SUResult SUGroupGetName(SUGroupRef group, SUStringRef* name);
SU_EXPORT enum SUResult SUGroupSetName(SUGroupRef group, const char* name);
SU_EXPORT enum SUResult SUGroupGetTransform(SUGroupRef group, struct SUTransformation* transform);
SU_EXPORT enum SUResult SUGroupSetTransform(SUGroupRef group,
                                            const struct SUTransformation* transform);
SU_EXPORT enum SUResult SUGroupGetEntities(SUGroupRef group, SUEntitiesRef* entities);
SU_EXPORT enum SUResult SUGroupGetDefinition(SUGroupRef group,
                                             SUComponentDefinitionRef* definition);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_GROUP_H_
