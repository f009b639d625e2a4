#ifndef SKETCHUPAPI_MODEL_LAYER_FOLDER_H_
#define SKETCHUPAPI_MODEL_LAYER_FOLDER_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SULayerFolderToEntity(SULayerFolderRef folder);
SU_EXPORT SULayerFolderRef SULayerFolderFromEntity(SUEntityRef entity);

SU_EXPORT enum SUResult SULayerFolderCreate(SULayerFolderRef* out_folder);
SU_EXPORT enum SUResult SULayerFolderRelease(SULayerFolderRef* folder);
SU_EXPORT enum SUResult SULayerFolderGetName(SULayerFolderRef folder, SUStringRef* name);
SU_EXPORT enum SUResult SULayerFolderSetName(SULayerFolderRef folder, const char* name);
// The folder's own switch; a folder above it may hide it all the same.
SU_EXPORT enum SUResult SULayerFolderGetVisibility(SULayerFolderRef folder, bool* visible);
SU_EXPORT enum SUResult SULayerFolderSetVisibility(SULayerFolderRef folder, bool visible);
// NO_DATA for a folder at the top.
SU_EXPORT enum SUResult SULayerFolderGetParentLayerFolder(SULayerFolderRef folder,
                                                          SULayerFolderRef* parent);
SU_EXPORT enum SUResult SULayerFolderAddLayer(SULayerFolderRef folder, SULayerRef layer);
SU_EXPORT enum SUResult SULayerFolderRemoveLayer(SULayerFolderRef folder, SULayerRef layer);
SU_EXPORT enum SUResult SULayerFolderAddLayerFolder(SULayerFolderRef folder,
                                                    SULayerFolderRef child);
SU_EXPORT enum SUResult SULayerFolderGetNumLayers(SULayerFolderRef folder, size_t* count);
SU_EXPORT enum SUResult SULayerFolderGetLayers(SULayerFolderRef folder, size_t len,
                                               SULayerRef layers[], size_t* count);
SU_EXPORT enum SUResult SULayerFolderGetNumLayerFolders(SULayerFolderRef folder, size_t* count);
SU_EXPORT enum SUResult SULayerFolderGetLayerFolders(SULayerFolderRef folder, size_t len,
                                                     SULayerFolderRef folders[], size_t* count);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_LAYER_FOLDER_H_
