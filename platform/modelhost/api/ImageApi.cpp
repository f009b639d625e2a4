#include <SketchUpAPI/model/image.h>

#include "core/Args.h"
#include "core/Paths.h"
#include "core/Texts.h"
#include "model/ImageRep.h"
#include "model/Model.h"

using namespace modelhost;

namespace {

SUResult createImage(SUImageRef* out_image, std::shared_ptr<const Pixels> picture,
                     std::string fileName) {
  const auto definition = std::make_shared<Definition>(SUComponentType_Image);
  definition->picture = std::move(picture);
  definition->fileName = std::move(fileName);
  return create(out_image, definition);
}

}  // namespace

SUEntityRef SUImageToEntity(SUImageRef image) {
  MODELHOST_CALL_INFALLIBLE(SUImageToEntity);
  return convert<SUEntityRef>(image);
}

SUImageRef SUImageFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUImageFromEntity);
  return convert<SUImageRef>(entity);
}

SUDrawingElementRef SUImageToDrawingElement(SUImageRef image) {
  MODELHOST_CALL_INFALLIBLE(SUImageToDrawingElement);
  return convert<SUDrawingElementRef>(image);
}

SUImageRef SUImageFromDrawingElement(SUDrawingElementRef element) {
  MODELHOST_CALL_INFALLIBLE(SUImageFromDrawingElement);
  return convert<SUImageRef>(element);
}

SUComponentInstanceRef SUImageToComponentInstance(SUImageRef image) {
  MODELHOST_CALL_INFALLIBLE(SUImageToComponentInstance);
  return convert<SUComponentInstanceRef>(image);
}

SUImageRef SUImageFromComponentInstance(SUComponentInstanceRef instance) {
  MODELHOST_CALL_INFALLIBLE(SUImageFromComponentInstance);
  return convert<SUImageRef>(instance);
}

SUResult SUImageCreateFromFile(SUImageRef* out_image, const char* path) {
  MODELHOST_CALL(SUImageCreateFromFile);
  if (const SUResult may = mayCreate(out_image); may != SU_ERROR_NONE) return may;
  if (path == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  auto picture = readPicture(path);
  if (!picture) return SU_ERROR_SERIALIZATION;
  return createImage(out_image, std::make_shared<Pixels>(std::move(*picture)),
                     asUtf8(utf8(filePath(path).filename())));
}

SUResult SUImageCreateFromImageRep(SUImageRef* out_image, SUImageRepRef rep) {
  MODELHOST_CALL(SUImageCreateFromImageRep);
  if (const SUResult may = mayCreate(out_image); may != SU_ERROR_NONE) return may;
  const ImageRep* source = find(rep);
  if (source == nullptr || !source->pixels) return SU_ERROR_INVALID_INPUT;
  return createImage(out_image, source->pixels, {});
}

SUResult SUImageRelease(SUImageRef* image) {
  MODELHOST_CALL(SUImageRelease);
  return releaseIf(image, [](const Image& i) { return i.parent == nullptr; });
}

SUResult SUImageGetName(SUImageRef image, SUStringRef* name) {
  MODELHOST_CALL(SUImageGetName);
  return giveText(image, name, [](const Image& i) -> std::string_view { return i.name; });
}

SUResult SUImageSetName(SUImageRef image, const char* name) {
  MODELHOST_CALL(SUImageSetName);
  return changeFrom(image, name, [&](Image& i, char) { i.name = name; });
}

SUResult SUImageGetTransform(SUImageRef image, SUTransformation* transform) {
  MODELHOST_CALL(SUImageGetTransform);
  return give(image, transform, [](const Image& i) { return i.transform; });
}

SUResult SUImageSetTransform(SUImageRef image, const SUTransformation* transform) {
  MODELHOST_CALL(SUImageSetTransform);
  return changeFrom(image, transform, [](Image& i, const SUTransformation& t) { i.transform = t; });
}

SUResult SUImageGetFileName(SUImageRef image, SUStringRef* name) {
  MODELHOST_CALL(SUImageGetFileName);
  return giveText(image, name,
                  [](const Image& i) -> std::string_view { return i.definition()->fileName; });
}

SUResult SUImageGetDimensions(SUImageRef image, double* width, double* height) {
  MODELHOST_CALL(SUImageGetDimensions);
  const Image* i = find(image);
  if (i == nullptr) return SU_ERROR_INVALID_INPUT;
  if (width == nullptr || height == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *width = i->width();
  *height = i->height();
  return SU_ERROR_NONE;
}

SUResult SUImageGetPixelDimensions(SUImageRef image, size_t* width, size_t* height) {
  MODELHOST_CALL(SUImageGetPixelDimensions);
  const Image* i = find(image);
  if (i == nullptr) return SU_ERROR_INVALID_INPUT;
  if (width == nullptr || height == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *width = i->definition()->picture->width;
  *height = i->definition()->picture->height;
  return SU_ERROR_NONE;
}

SUResult SUImageGetImageRep(SUImageRef image, SUImageRepRef* rep) {
  MODELHOST_CALL(SUImageGetImageRep);
  const Image* i = find(image);
  if (i == nullptr) return SU_ERROR_INVALID_INPUT;
  if (rep == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  ImageRep* target = find(*rep);
  if (target == nullptr) return SU_ERROR_INVALID_OUTPUT;
  target->pixels = i->definition()->picture;
  return SU_ERROR_NONE;
}

SUResult SUImageGetDefinition(SUImageRef image, SUComponentDefinitionRef* definition) {
  MODELHOST_CALL(SUImageGetDefinition);
  return giveRef(image, definition, [](const Image& i) { return i.definition(); });
}
