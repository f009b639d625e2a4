#ifndef SKETCHUPAPI_MODEL_ENTITY_H_
#define SKETCHUPAPI_MODEL_ENTITY_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

// Unknown for a handle that is not (or no longer) an entity.
SU_EXPORT enum SURefType SUEntityGetType(SUEntityRef entity);
SU_EXPORT enum SUResult SUEntityGetID(SUEntityRef entity, int32_t* id);
SU_EXPORT enum SUResult SUEntityGetPersistentID(SUEntityRef entity, int64_t* id);
SU_EXPORT enum SUResult SUEntityGetModel(SUEntityRef entity, SUModelRef* model);
SU_EXPORT enum SUResult SUEntityGetParentEntities(SUEntityRef entity, SUEntitiesRef* entities);

SU_EXPORT enum SUResult SUEntityGetNumAttributeDictionaries(SUEntityRef entity, size_t* count);
SU_EXPORT enum SUResult SUEntityGetAttributeDictionaries(SUEntityRef entity, size_t len,
                                                         SUAttributeDictionaryRef dictionaries[],
                                                         size_t* count);
// Makes a dictionary that is missing.
SU_EXPORT enum SUResult SUEntityGetAttributeDictionary(SUEntityRef entity, const char* name,
                                                       SUAttributeDictionaryRef* dictionary);
SU_EXPORT enum SUResult SUEntityAddAttributeDictionary(SUEntityRef entity,
                                                       SUAttributeDictionaryRef dictionary);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_ENTITY_H_
