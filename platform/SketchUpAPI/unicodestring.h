#ifndef SKETCHUPAPI_UNICODESTRING_H_
#define SKETCHUPAPI_UNICODESTRING_H_

#include <SketchUpAPI/common.h>

DEFINE_SU_TYPE(SUStringRef)

SU_EXTERN_C_BEGIN

SU_EXPORT enum SUResult SUStringCreate(SUStringRef* out_string);
SU_EXPORT enum SUResult SUStringCreateFromUTF8(SUStringRef* out_string, const char* text);
SU_EXPORT enum SUResult SUStringRelease(SUStringRef* string);
// Bytes without the terminating zero.
SU_EXPORT enum SUResult SUStringGetUTF8Length(SUStringRef string, size_t* length);
// Writes at most `size` bytes, the last of them a zero; `count` is the bytes before the zero.
SU_EXPORT enum SUResult SUStringGetUTF8(SUStringRef string, size_t size, char* text, size_t* count);
SU_EXPORT enum SUResult SUStringSetUTF8(SUStringRef string, const char* text);
SU_EXPORT enum SUResult SUStringCompare(SUStringRef a, SUStringRef b, int* result);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_UNICODESTRING_H_
