#ifndef SKETCHUPAPI_MODEL_ATTRIBUTE_DICTIONARY_H_
#define SKETCHUPAPI_MODEL_ATTRIBUTE_DICTIONARY_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

SU_EXPORT SUEntityRef SUAttributeDictionaryToEntity(SUAttributeDictionaryRef dictionary);
SU_EXPORT SUAttributeDictionaryRef SUAttributeDictionaryFromEntity(SUEntityRef entity);

// The dictionary belongs to the caller until it is added to an entity.
SU_EXPORT enum SUResult SUAttributeDictionaryCreate(SUAttributeDictionaryRef* out_dictionary,
                                                    const char* name);
SU_EXPORT enum SUResult SUAttributeDictionaryRelease(SUAttributeDictionaryRef* dictionary);
SU_EXPORT enum SUResult SUAttributeDictionaryGetName(SUAttributeDictionaryRef dictionary,
                                                     SUStringRef* name);
SU_EXPORT enum SUResult SUAttributeDictionaryGetNumKeys(SUAttributeDictionaryRef dictionary,
                                                        size_t* count);
// Fills strings that the caller has created.
SU_EXPORT enum SUResult SUAttributeDictionaryGetKeys(SUAttributeDictionaryRef dictionary,
                                                     size_t len, SUStringRef keys[], size_t* count);
// Fills a typed value that the caller has created; NO_DATA for a key that is not there.
SU_EXPORT enum SUResult SUAttributeDictionaryGetValue(SUAttributeDictionaryRef dictionary,
                                                      const char* key, SUTypedValueRef* value);
SU_EXPORT enum SUResult SUAttributeDictionarySetValue(SUAttributeDictionaryRef dictionary,
                                                      const char* key, SUTypedValueRef value);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_ATTRIBUTE_DICTIONARY_H_
