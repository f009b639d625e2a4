#ifndef SKETCHUPAPI_MODEL_IMAGE_REP_H_
#define SKETCHUPAPI_MODEL_IMAGE_REP_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/color.h>
#include <SketchUpAPI/model/defs.h>

// Bytes of one pixel, as the platform's host keeps them: which byte holds which colour.
struct SUColorOrder {
  short red_index;
  short green_index;
  short blue_index;
  short alpha_index;
};

#ifndef __cplusplus
typedef struct SUColorOrder SUColorOrder;
#endif

SU_EXTERN_C_BEGIN

// Blue, green, red, alpha.
SU_EXPORT struct SUColorOrder SUGetColorOrder(void);

SU_EXPORT enum SUResult SUImageRepCreate(SUImageRepRef* out_rep);
SU_EXPORT enum SUResult SUImageRepRelease(SUImageRepRef* rep);
// Rows run from the bottom of the picture to its top, each followed by `row_padding` bytes.
SU_EXPORT enum SUResult SUImageRepSetData(SUImageRepRef rep, size_t width, size_t height,
                                          size_t bits_per_pixel, size_t row_padding,
                                          const SUByte pixels[]);
SU_EXPORT enum SUResult SUImageRepCopy(SUImageRepRef rep, SUImageRepRef source);
// PNG, JPEG, BMP, TGA and GIF are read; the file's suffix does not matter.
SU_EXPORT enum SUResult SUImageRepLoadFile(SUImageRepRef rep, const char* path);
// Writes a PNG.
SU_EXPORT enum SUResult SUImageRepSaveToFile(SUImageRepRef rep, const char* path);
SU_EXPORT enum SUResult SUImageRepGetPixelDimensions(SUImageRepRef rep, size_t* width,
                                                     size_t* height);
SU_EXPORT enum SUResult SUImageRepGetRowPadding(SUImageRepRef rep, size_t* row_padding);
SU_EXPORT enum SUResult SUImageRepResize(SUImageRepRef rep, size_t width, size_t height);
SU_EXPORT enum SUResult SUImageRepConvertTo32BitsPerPixel(SUImageRepRef rep);
SU_EXPORT enum SUResult SUImageRepGetDataSize(SUImageRepRef rep, size_t* data_size,
                                              size_t* bits_per_pixel);
SU_EXPORT enum SUResult SUImageRepGetData(SUImageRepRef rep, size_t data_size, SUByte pixels[]);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_IMAGE_REP_H_
