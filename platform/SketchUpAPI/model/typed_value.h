#ifndef SKETCHUPAPI_MODEL_TYPED_VALUE_H_
#define SKETCHUPAPI_MODEL_TYPED_VALUE_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/color.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

enum SUTypedValueType {
  SUTypedValueType_Empty = 0,
  SUTypedValueType_Byte = 1,
  SUTypedValueType_Short = 2,
  SUTypedValueType_Int32 = 3,
  SUTypedValueType_Float = 4,
  SUTypedValueType_Double = 5,
  SUTypedValueType_Bool = 6,
  SUTypedValueType_Color = 7,
  SUTypedValueType_Time = 8,
  SUTypedValueType_String = 9,
  SUTypedValueType_Vector3D = 10,
  SUTypedValueType_Array = 11
};

SU_EXTERN_C_BEGIN

SU_EXPORT enum SUResult SUTypedValueCreate(SUTypedValueRef* out_value);
SU_EXPORT enum SUResult SUTypedValueRelease(SUTypedValueRef* value);
SU_EXPORT enum SUResult SUTypedValueGetType(SUTypedValueRef value, enum SUTypedValueType* type);

// A getter for another type than the value has is NO_DATA.
SU_EXPORT enum SUResult SUTypedValueGetByte(SUTypedValueRef value, char* byte_value);
SU_EXPORT enum SUResult SUTypedValueSetByte(SUTypedValueRef value, char byte_value);
SU_EXPORT enum SUResult SUTypedValueGetInt16(SUTypedValueRef value, int16_t* int16_value);
SU_EXPORT enum SUResult SUTypedValueSetInt16(SUTypedValueRef value, int16_t int16_value);
SU_EXPORT enum SUResult SUTypedValueGetInt32(SUTypedValueRef value, int32_t* int32_value);
SU_EXPORT enum SUResult SUTypedValueSetInt32(SUTypedValueRef value, int32_t int32_value);
SU_EXPORT enum SUResult SUTypedValueGetFloat(SUTypedValueRef value, float* float_value);
SU_EXPORT enum SUResult SUTypedValueSetFloat(SUTypedValueRef value, float float_value);
SU_EXPORT enum SUResult SUTypedValueGetDouble(SUTypedValueRef value, double* double_value);
SU_EXPORT enum SUResult SUTypedValueSetDouble(SUTypedValueRef value, double double_value);
SU_EXPORT enum SUResult SUTypedValueGetBool(SUTypedValueRef value, bool* bool_value);
SU_EXPORT enum SUResult SUTypedValueSetBool(SUTypedValueRef value, bool bool_value);
SU_EXPORT enum SUResult SUTypedValueGetColor(SUTypedValueRef value, SUColor* color);
SU_EXPORT enum SUResult SUTypedValueSetColor(SUTypedValueRef value, const SUColor* color);
// Seconds since 1 January 1970.
SU_EXPORT enum SUResult SUTypedValueGetTime(SUTypedValueRef value, int64_t* time_value);
SU_EXPORT enum SUResult SUTypedValueSetTime(SUTypedValueRef value, int64_t time_value);
SU_EXPORT enum SUResult SUTypedValueGetString(SUTypedValueRef value, SUStringRef* text);
SU_EXPORT enum SUResult SUTypedValueSetString(SUTypedValueRef value, const char* text);
SU_EXPORT enum SUResult SUTypedValueGetVector3d(SUTypedValueRef value, double vector[3]);
SU_EXPORT enum SUResult SUTypedValueSetVector3d(SUTypedValueRef value, const double vector[3]);
// Items that are got belong to the array: they go with it or when it gets another value. Items
// that are set are copied.
SU_EXPORT enum SUResult SUTypedValueGetNumArrayItems(SUTypedValueRef value, size_t* count);
SU_EXPORT enum SUResult SUTypedValueGetArrayItems(SUTypedValueRef value, size_t len,
                                                  SUTypedValueRef items[], size_t* count);
SU_EXPORT enum SUResult SUTypedValueSetArrayItems(SUTypedValueRef value, size_t len,
                                                  SUTypedValueRef items[]);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_TYPED_VALUE_H_
