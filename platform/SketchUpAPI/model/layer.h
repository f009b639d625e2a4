#ifndef SKETCHUPAPI_MODEL_LAYER_H_
#define SKETCHUPAPI_MODEL_LAYER_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/color.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SULayerToEntity(SULayerRef layer);
SU_EXPORT SULayerRef SULayerFromEntity(SUEntityRef entity);

SU_EXPORT enum SUResult SULayerCreate(SULayerRef* out_layer);
SU_EXPORT enum SUResult SULayerRelease(SULayerRef* layer);
SU_EXPORT enum SUResult SULayerGetName(SULayerRef layer, SUStringRef* name);
SU_EXPORT enum SUResult SULayerSetName(SULayerRef layer, const char* name);
// The layer's own switch; a folder above it may hide it all the same.
SU_EXPORT enum SUResult SULayerGetVisibility(SULayerRef layer, bool* visible);
SU_EXPORT enum SUResult SULayerSetVisibility(SULayerRef layer, bool visible);
SU_EXPORT enum SUResult SULayerGetMaterial(SULayerRef layer, SUMaterialRef* material);
// NO_DATA for a layer in no folder.
SU_EXPORT enum SUResult SULayerGetParentLayerFolder(SULayerRef layer, SULayerFolderRef* folder);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_LAYER_H_
