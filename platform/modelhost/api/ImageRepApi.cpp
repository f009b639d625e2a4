#include <SketchUpAPI/model/image_rep.h>

#include <algorithm>

#include "core/Args.h"
#include "model/ImageRep.h"

using namespace modelhost;

SUColorOrder SUGetColorOrder(void) {
  MODELHOST_CALL_INFALLIBLE(SUGetColorOrder);
  return {2, 1, 0, 3};
}

SUResult SUImageRepCreate(SUImageRepRef* out_rep) {
  MODELHOST_CALL(SUImageRepCreate);
  return create(out_rep);
}

SUResult SUImageRepRelease(SUImageRepRef* rep) {
  MODELHOST_CALL(SUImageRepRelease);
  return release(rep);
}

SUResult SUImageRepSetData(SUImageRepRef rep, size_t width, size_t height, size_t bits_per_pixel,
                           size_t row_padding, const SUByte pixels[]) {
  MODELHOST_CALL(SUImageRepSetData);
  if (pixels == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide) {
    return SU_ERROR_OUT_OF_RANGE;
  }
  if (bits_per_pixel != 8 && bits_per_pixel != 24 && bits_per_pixel != 32) {
    return SU_ERROR_UNSUPPORTED;
  }
  return change(rep, [&](ImageRep& r) {
    auto copy = std::make_shared<Pixels>(blankPixels(width, height, bits_per_pixel));
    const size_t row = width * copy->bytesPerPixel();
    for (size_t y = 0; y < height; ++y) {
      std::copy_n(pixels + y * (row + row_padding), row, copy->bytes.data() + y * row);
    }
    r.pixels = std::move(copy);
  });
}

SUResult SUImageRepCopy(SUImageRepRef rep, SUImageRepRef source) {
  MODELHOST_CALL(SUImageRepCopy);
  const ImageRep* from = find(source);
  if (from == nullptr || !from->pixels) return SU_ERROR_INVALID_INPUT;
  return change(rep, [&](ImageRep& r) { r.pixels = from->pixels; });
}

SUResult SUImageRepLoadFile(SUImageRepRef rep, const char* path) {
  MODELHOST_CALL(SUImageRepLoadFile);
  ImageRep* r = find(rep);
  if (r == nullptr) return SU_ERROR_INVALID_INPUT;
  if (path == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  auto picture = readPicture(path);
  if (!picture) return SU_ERROR_SERIALIZATION;
  r->pixels = std::make_shared<Pixels>(std::move(*picture));
  return SU_ERROR_NONE;
}

namespace {

// The pixels of a representation that has been filled.
const Pixels* filled(SUImageRepRef rep) {
  const ImageRep* r = find(rep);
  return r == nullptr ? nullptr : r->pixels.get();
}

// What an empty or bad representation answers.
SUResult unfilled(SUImageRepRef rep) {
  return find(rep) == nullptr ? SU_ERROR_INVALID_INPUT : SU_ERROR_NO_DATA;
}

}  // namespace

SUResult SUImageRepSaveToFile(SUImageRepRef rep, const char* path) {
  MODELHOST_CALL(SUImageRepSaveToFile);
  const Pixels* pixels = filled(rep);
  if (pixels == nullptr) return unfilled(rep);
  if (path == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return writePng(*pixels, path) ? SU_ERROR_NONE : SU_ERROR_SERIALIZATION;
}

SUResult SUImageRepGetPixelDimensions(SUImageRepRef rep, size_t* width, size_t* height) {
  MODELHOST_CALL(SUImageRepGetPixelDimensions);
  const Pixels* pixels = filled(rep);
  if (pixels == nullptr) return unfilled(rep);
  if (width == nullptr || height == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *width = pixels->width;
  *height = pixels->height;
  return SU_ERROR_NONE;
}

SUResult SUImageRepGetRowPadding(SUImageRepRef rep, size_t* row_padding) {
  MODELHOST_CALL(SUImageRepGetRowPadding);
  return give(rep, row_padding, [](const ImageRep&) { return size_t{0}; });
}

SUResult SUImageRepResize(SUImageRepRef rep, size_t width, size_t height) {
  MODELHOST_CALL(SUImageRepResize);
  const Pixels* pixels = filled(rep);
  if (pixels == nullptr) return unfilled(rep);
  if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide) {
    return SU_ERROR_OUT_OF_RANGE;
  }
  find(rep)->pixels = std::make_shared<Pixels>(resized(*pixels, width, height));
  return SU_ERROR_NONE;
}

SUResult SUImageRepConvertTo32BitsPerPixel(SUImageRepRef rep) {
  MODELHOST_CALL(SUImageRepConvertTo32BitsPerPixel);
  const Pixels* pixels = filled(rep);
  if (pixels == nullptr) return unfilled(rep);
  if (pixels->bitsPerPixel != 32) find(rep)->pixels = std::make_shared<Pixels>(to32Bits(*pixels));
  return SU_ERROR_NONE;
}

SUResult SUImageRepGetDataSize(SUImageRepRef rep, size_t* data_size, size_t* bits_per_pixel) {
  MODELHOST_CALL(SUImageRepGetDataSize);
  const Pixels* pixels = filled(rep);
  if (pixels == nullptr) return unfilled(rep);
  if (data_size == nullptr || bits_per_pixel == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *data_size = pixels->bytes.size();
  *bits_per_pixel = pixels->bitsPerPixel;
  return SU_ERROR_NONE;
}

SUResult SUImageRepGetData(SUImageRepRef rep, size_t data_size, SUByte out[]) {
  MODELHOST_CALL(SUImageRepGetData);
  const Pixels* pixels = filled(rep);
  if (pixels == nullptr) return unfilled(rep);
  if (out == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  if (data_size < pixels->bytes.size()) return SU_ERROR_INSUFFICIENT_SIZE;
  std::copy(pixels->bytes.begin(), pixels->bytes.end(), out);
  return SU_ERROR_NONE;
}
