#ifndef SKETCHUPAPI_MODEL_MATERIAL_H_
#define SKETCHUPAPI_MODEL_MATERIAL_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/color.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

enum SUMaterialType {
  SUMaterialType_Colored = 0,
  SUMaterialType_Textured,
  SUMaterialType_ColorizedTexture
};

enum SUMaterialColorizeType { SUMaterialColorizeType_Shift = 0, SUMaterialColorizeType_Tint };

enum SUMaterialWorkflow {
  SUMaterialWorkflow_Classic = 0,
  SUMaterialWorkflow_PBRMetallicRoughness = 1
};

enum SUMaterialNormalMapStyle {
  SUMaterialNormalMapStyle_OpenGL = 0,
  SUMaterialNormalMapStyle_DirectX
};

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SUMaterialToEntity(SUMaterialRef material);
SU_EXPORT SUMaterialRef SUMaterialFromEntity(SUEntityRef entity);

SU_EXPORT enum SUResult SUMaterialCreate(SUMaterialRef* out_material);
SU_EXPORT enum SUResult SUMaterialRelease(SUMaterialRef* material);
SU_EXPORT enum SUResult SUMaterialGetName(SUMaterialRef material, SUStringRef* name);
SU_EXPORT enum SUResult SUMaterialSetName(SUMaterialRef material, const char* name);
SU_EXPORT enum SUResult SUMaterialGetType(SUMaterialRef material, enum SUMaterialType* type);
SU_EXPORT enum SUResult SUMaterialSetType(SUMaterialRef material, enum SUMaterialType type);
// Of a texture shown as it is, its mean colour.
SU_EXPORT enum SUResult SUMaterialGetColor(SUMaterialRef material, SUColor* color);
SU_EXPORT enum SUResult SUMaterialSetColor(SUMaterialRef material, const SUColor* color);
// 0 is clear, 1 is opaque.
SU_EXPORT enum SUResult SUMaterialGetOpacity(SUMaterialRef material, double* opacity);
SU_EXPORT enum SUResult SUMaterialSetOpacity(SUMaterialRef material, double opacity);
SU_EXPORT enum SUResult SUMaterialGetUseOpacity(SUMaterialRef material, bool* use);
SU_EXPORT enum SUResult SUMaterialSetUseOpacity(SUMaterialRef material, bool use);
SU_EXPORT enum SUResult SUMaterialIsDrawnTransparent(SUMaterialRef material, bool* transparent);
// NO_DATA when there is none. A texture that is set passes into the material's ownership.
SU_EXPORT enum SUResult SUMaterialGetTexture(SUMaterialRef material, SUTextureRef* texture);
SU_EXPORT enum SUResult SUMaterialSetTexture(SUMaterialRef material, SUTextureRef texture);
// Shifts in degrees for the hue, in -1..1 for saturation and lightness; all 0 for a texture that
// is shown as it is.
SU_EXPORT enum SUResult SUMaterialGetColorizeDeltas(SUMaterialRef material, double* hue,
                                                    double* saturation, double* lightness);
SU_EXPORT enum SUResult SUMaterialGetColorizeType(SUMaterialRef material,
                                                  enum SUMaterialColorizeType* type);
SU_EXPORT enum SUResult SUMaterialSetColorizeType(SUMaterialRef material,
                                                  enum SUMaterialColorizeType type);

SU_EXPORT enum SUResult SUMaterialGetWorkflow(SUMaterialRef material,
                                              enum SUMaterialWorkflow* workflow);
SU_EXPORT enum SUResult SUMaterialIsMetalnessEnabled(SUMaterialRef material, bool* enabled);
SU_EXPORT enum SUResult SUMaterialSetMetalnessEnabled(SUMaterialRef material, bool enabled);
SU_EXPORT enum SUResult SUMaterialGetMetallicFactor(SUMaterialRef material, double* factor);
SU_EXPORT enum SUResult SUMaterialSetMetallicFactor(SUMaterialRef material, double factor);
SU_EXPORT enum SUResult SUMaterialGetMetallicTexture(SUMaterialRef material, SUTextureRef* texture);
SU_EXPORT enum SUResult SUMaterialSetMetallicTexture(SUMaterialRef material, SUTextureRef texture);
SU_EXPORT enum SUResult SUMaterialIsRoughnessEnabled(SUMaterialRef material, bool* enabled);
SU_EXPORT enum SUResult SUMaterialSetRoughnessEnabled(SUMaterialRef material, bool enabled);
SU_EXPORT enum SUResult SUMaterialGetRoughnessFactor(SUMaterialRef material, double* factor);
SU_EXPORT enum SUResult SUMaterialSetRoughnessFactor(SUMaterialRef material, double factor);
SU_EXPORT enum SUResult SUMaterialGetRoughnessTexture(SUMaterialRef material,
                                                      SUTextureRef* texture);
SU_EXPORT enum SUResult SUMaterialSetRoughnessTexture(SUMaterialRef material, SUTextureRef texture);
SU_EXPORT enum SUResult SUMaterialIsNormalEnabled(SUMaterialRef material, bool* enabled);
SU_EXPORT enum SUResult SUMaterialSetNormalEnabled(SUMaterialRef material, bool enabled);
SU_EXPORT enum SUResult SUMaterialGetNormalScale(SUMaterialRef material, double* scale);
SU_EXPORT enum SUResult SUMaterialSetNormalScale(SUMaterialRef material, double scale);
SU_EXPORT enum SUResult SUMaterialGetNormalStyle(SUMaterialRef material,
                                                 enum SUMaterialNormalMapStyle* style);
SU_EXPORT enum SUResult SUMaterialSetNormalStyle(SUMaterialRef material,
                                                 enum SUMaterialNormalMapStyle style);
SU_EXPORT enum SUResult SUMaterialGetNormalTexture(SUMaterialRef material, SUTextureRef* texture);
SU_EXPORT enum SUResult SUMaterialSetNormalTexture(SUMaterialRef material, SUTextureRef texture);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_MATERIAL_H_
