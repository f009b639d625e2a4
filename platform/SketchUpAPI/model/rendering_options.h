#ifndef SKETCHUPAPI_MODEL_RENDERING_OPTIONS_H_
#define SKETCHUPAPI_MODEL_RENDERING_OPTIONS_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/color.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

SU_EXPORT enum SUResult SURenderingOptionsGetNumKeys(SURenderingOptionsRef options, size_t* count);
// Fills strings that the caller has created.
SU_EXPORT enum SUResult SURenderingOptionsGetKeys(SURenderingOptionsRef options, size_t len,
                                                  SUStringRef keys[], size_t* count);
// Fills a typed value that the caller has created; NO_DATA for a key that is not there.
SU_EXPORT enum SUResult SURenderingOptionsGetValue(SURenderingOptionsRef options, const char* key,
                                                   SUTypedValueRef* value);
SU_EXPORT enum SUResult SURenderingOptionsSetValue(SURenderingOptionsRef options, const char* key,
                                                   SUTypedValueRef value);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_RENDERING_OPTIONS_H_
