#ifndef SKETCHUPAPI_MODEL_UV_HELPER_H_
#define SKETCHUPAPI_MODEL_UV_HELPER_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>

SU_EXTERN_C_BEGIN

SU_EXPORT enum SUResult SUUVHelperRelease(SUUVHelperRef* helper);
// `point` lies on the face's plane, in the face's coordinates.
SU_EXPORT enum SUResult SUUVHelperGetFrontUVQ(SUUVHelperRef helper, const struct SUPoint3D* point,
                                              struct SUUVQ* uvq);
SU_EXPORT enum SUResult SUUVHelperGetBackUVQ(SUUVHelperRef helper, const struct SUPoint3D* point,
                                             struct SUUVQ* uvq);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_UV_HELPER_H_
