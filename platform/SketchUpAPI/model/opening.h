#ifndef SKETCHUPAPI_MODEL_OPENING_H_
#define SKETCHUPAPI_MODEL_OPENING_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>

SU_EXTERN_C_BEGIN

SU_EXPORT enum SUResult SUOpeningRelease(SUOpeningRef* opening);
SU_EXPORT enum SUResult SUOpeningGetNumPoints(SUOpeningRef opening, size_t* count);
SU_EXPORT enum SUResult SUOpeningGetPoints(SUOpeningRef opening, size_t len,
                                           struct SUPoint3D points[], size_t* count);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_OPENING_H_
