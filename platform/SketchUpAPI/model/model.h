#ifndef SKETCHUPAPI_MODEL_MODEL_H_
#define SKETCHUPAPI_MODEL_MODEL_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/color.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

SU_EXPORT enum SUResult SUModelCreate(SUModelRef* out_model);
SU_EXPORT enum SUResult SUModelRelease(SUModelRef* model);
SU_EXPORT enum SUResult SUModelGetEntities(SUModelRef model, SUEntitiesRef* entities);
SU_EXPORT enum SUResult SUModelGetName(SUModelRef model, SUStringRef* name);
SU_EXPORT enum SUResult SUModelSetName(SUModelRef model, const char* name);
SU_EXPORT enum SUResult SUModelGetPath(SUModelRef model, SUStringRef* path);
SU_EXPORT enum SUResult SUModelGetTitle(SUModelRef model, SUStringRef* title);

// Layers and folders come in the order in which they were made; the first layer is "Layer0".
SU_EXPORT enum SUResult SUModelGetNumLayers(SUModelRef model, size_t* count);
SU_EXPORT enum SUResult SUModelGetLayers(SUModelRef model, size_t len, SULayerRef layers[],
                                         size_t* count);
SU_EXPORT enum SUResult SUModelGetDefaultLayer(SUModelRef model, SULayerRef* layer);
SU_EXPORT enum SUResult SUModelAddLayers(SUModelRef model, size_t len, const SULayerRef layers[]);
SU_EXPORT enum SUResult SUModelGetNumLayerFolders(SUModelRef model, size_t* count);
SU_EXPORT enum SUResult SUModelGetLayerFolders(SUModelRef model, size_t len,
                                               SULayerFolderRef folders[], size_t* count);
SU_EXPORT enum SUResult SUModelAddLayerFolder(SUModelRef model, SULayerFolderRef folder);

SU_EXPORT enum SUResult SUModelGetNumMaterials(SUModelRef model, size_t* count);
SU_EXPORT enum SUResult SUModelGetMaterials(SUModelRef model, size_t len, SUMaterialRef materials[],
                                            size_t* count);
SU_EXPORT enum SUResult SUModelAddMaterials(SUModelRef model, size_t len,
                                            const SUMaterialRef materials[]);

// The definitions of components, without those of groups and images.
SU_EXPORT enum SUResult SUModelGetNumComponentDefinitions(SUModelRef model, size_t* count);
SU_EXPORT enum SUResult SUModelGetComponentDefinitions(SUModelRef model, size_t len,
                                                       SUComponentDefinitionRef definitions[],
                                                       size_t* count);
SU_EXPORT enum SUResult SUModelAddComponentDefinitions(
    SUModelRef model, size_t len, const SUComponentDefinitionRef definitions[]);

SU_EXPORT enum SUResult SUModelGetRenderingOptions(SUModelRef model,
                                                   SURenderingOptionsRef* options);
SU_EXPORT enum SUResult SUModelGetAttributeDictionary(SUModelRef model, const char* name,
                                                      SUAttributeDictionaryRef* dictionary);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_MODEL_H_
