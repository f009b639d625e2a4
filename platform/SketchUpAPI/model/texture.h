#ifndef SKETCHUPAPI_MODEL_TEXTURE_H_
#define SKETCHUPAPI_MODEL_TEXTURE_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SUTextureToEntity(SUTextureRef texture);
SU_EXPORT SUTextureRef SUTextureFromEntity(SUEntityRef entity);

// `s_scale` and `t_scale` are repeats per length unit: 1 / the width and height of one tile.
SU_EXPORT enum SUResult SUTextureCreateFromFile(SUTextureRef* out_texture, const char* path,
                                                double s_scale, double t_scale);
SU_EXPORT enum SUResult SUTextureCreateFromImageRep(SUTextureRef* out_texture, SUImageRepRef rep);
SU_EXPORT enum SUResult SUTextureRelease(SUTextureRef* texture);
// Pixels, and repeats per length unit.
SU_EXPORT enum SUResult SUTextureGetDimensions(SUTextureRef texture, size_t* width, size_t* height,
                                               double* s_scale, double* t_scale);
SU_EXPORT enum SUResult SUTextureSetDimensions(SUTextureRef texture, double s_scale,
                                               double t_scale);
SU_EXPORT enum SUResult SUTextureGetFileName(SUTextureRef texture, SUStringRef* name);
SU_EXPORT enum SUResult SUTextureSetFileName(SUTextureRef texture, const char* name);
SU_EXPORT enum SUResult SUTextureGetUseAlphaChannel(SUTextureRef texture, bool* use);
// Both fill a representation that the caller has created.
SU_EXPORT enum SUResult SUTextureGetImageRep(SUTextureRef texture, SUImageRepRef* rep);
SU_EXPORT enum SUResult SUTextureGetColorizedImageRep(SUTextureRef texture, SUImageRepRef* rep);
SU_EXPORT enum SUResult SUTextureWriteToFile(SUTextureRef texture, const char* path);
SU_EXPORT enum SUResult SUTextureWriteOriginalToFile(SUTextureRef texture, const char* path);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_TEXTURE_H_
