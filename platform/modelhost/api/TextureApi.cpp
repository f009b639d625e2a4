#include <SketchUpAPI/model/texture.h>
#include <SketchUpAPI/model/texture_writer.h>

#include <cmath>

#include "core/Args.h"
#include "core/Paths.h"
#include "core/Texts.h"
#include "model/ImageRep.h"
#include "model/Model.h"
#include "model/TextureWriter.h"

using namespace modelhost;

namespace {

// With "reduce size", no side is longer than this.
constexpr std::size_t kReducedSide = 512;

bool usableScale(double scale) {
  return std::isfinite(scale) && scale > 0;
}

SUResult putPixels(std::shared_ptr<const Pixels> pixels, SUImageRepRef* rep) {
  if (rep == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  ImageRep* target = find(*rep);
  if (target == nullptr) return SU_ERROR_INVALID_OUTPUT;
  target->pixels = std::move(pixels);
  return SU_ERROR_NONE;
}

std::shared_ptr<const Pixels> shownOf(const Texture& texture) {
  const Material* material = texture.material;
  // A colour is laid over a material's main texture alone.
  return material != nullptr && material->texture.get() == &texture ? material->shownPixels()
                                                                    : texture.pixels;
}

SUResult writeTo(SUTextureRef texture, const char* path, bool original) {
  const Texture* t = find(texture);
  if (t == nullptr) return SU_ERROR_INVALID_INPUT;
  if (path == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return writePng(original ? *t->pixels : *shownOf(*t), path) ? SU_ERROR_NONE
                                                              : SU_ERROR_SERIALIZATION;
}

}  // namespace

SUEntityRef SUTextureToEntity(SUTextureRef texture) {
  MODELHOST_CALL_INFALLIBLE(SUTextureToEntity);
  return convert<SUEntityRef>(texture);
}

SUTextureRef SUTextureFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUTextureFromEntity);
  return convert<SUTextureRef>(entity);
}

SUResult SUTextureCreateFromFile(SUTextureRef* out_texture, const char* path, double s_scale,
                                 double t_scale) {
  MODELHOST_CALL(SUTextureCreateFromFile);
  if (const SUResult may = mayCreate(out_texture); may != SU_ERROR_NONE) return may;
  if (path == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (!usableScale(s_scale) || !usableScale(t_scale)) return SU_ERROR_OUT_OF_RANGE;
  auto picture = readPicture(path);
  if (!picture) return SU_ERROR_SERIALIZATION;
  const SUResult created = create(out_texture, std::make_shared<Pixels>(std::move(*picture)),
                                  TileSize{1 / s_scale, 1 / t_scale});
  if (created == SU_ERROR_NONE) {
    find(*out_texture)->fileName = asUtf8(utf8(filePath(path).filename()));
  }
  return created;
}

SUResult SUTextureCreateFromImageRep(SUTextureRef* out_texture, SUImageRepRef rep) {
  MODELHOST_CALL(SUTextureCreateFromImageRep);
  const ImageRep* source = find(rep);
  if (source == nullptr || !source->pixels) return SU_ERROR_INVALID_INPUT;
  const Pixels& pixels = *source->pixels;
  return create(out_texture, source->pixels,
                TileSize{static_cast<double>(pixels.width), static_cast<double>(pixels.height)});
}

SUResult SUTextureRelease(SUTextureRef* texture) {
  MODELHOST_CALL(SUTextureRelease);
  return releaseIf(texture, [](const Texture& t) { return t.material == nullptr; });
}

SUResult SUTextureGetDimensions(SUTextureRef texture, size_t* width, size_t* height,
                                double* s_scale, double* t_scale) {
  MODELHOST_CALL(SUTextureGetDimensions);
  const Texture* t = find(texture);
  if (t == nullptr) return SU_ERROR_INVALID_INPUT;
  if (width == nullptr || height == nullptr || s_scale == nullptr || t_scale == nullptr) {
    return SU_ERROR_NULL_POINTER_OUTPUT;
  }
  *width = t->pixels->width;
  *height = t->pixels->height;
  *s_scale = 1 / t->tile.width;
  *t_scale = 1 / t->tile.height;
  return SU_ERROR_NONE;
}

SUResult SUTextureSetDimensions(SUTextureRef texture, double s_scale, double t_scale) {
  MODELHOST_CALL(SUTextureSetDimensions);
  if (!usableScale(s_scale) || !usableScale(t_scale)) return SU_ERROR_OUT_OF_RANGE;
  return change(texture, [&](Texture& t) { t.tile = {1 / s_scale, 1 / t_scale}; });
}

SUResult SUTextureGetFileName(SUTextureRef texture, SUStringRef* name) {
  MODELHOST_CALL(SUTextureGetFileName);
  return giveText(texture, name, [](const Texture& t) -> std::string_view { return t.fileName; });
}

SUResult SUTextureSetFileName(SUTextureRef texture, const char* name) {
  MODELHOST_CALL(SUTextureSetFileName);
  return changeFrom(texture, name, [&](Texture& t, char) { t.fileName = name; });
}

SUResult SUTextureGetUseAlphaChannel(SUTextureRef texture, bool* use) {
  MODELHOST_CALL(SUTextureGetUseAlphaChannel);
  return give(texture, use, [](const Texture& t) { return t.useAlpha; });
}

SUResult SUTextureGetImageRep(SUTextureRef texture, SUImageRepRef* rep) {
  MODELHOST_CALL(SUTextureGetImageRep);
  const Texture* t = find(texture);
  return t == nullptr ? SU_ERROR_INVALID_INPUT : putPixels(t->pixels, rep);
}

SUResult SUTextureGetColorizedImageRep(SUTextureRef texture, SUImageRepRef* rep) {
  MODELHOST_CALL(SUTextureGetColorizedImageRep);
  const Texture* t = find(texture);
  if (t == nullptr) return SU_ERROR_INVALID_INPUT;
  // Colorized pixels are always of 32 bits, also where no colour is laid over them.
  return putPixels(std::make_shared<Pixels>(to32Bits(*shownOf(*t))), rep);
}

SUResult SUTextureWriteToFile(SUTextureRef texture, const char* path) {
  MODELHOST_CALL(SUTextureWriteToFile);
  return writeTo(texture, path, false);
}

SUResult SUTextureWriteOriginalToFile(SUTextureRef texture, const char* path) {
  MODELHOST_CALL(SUTextureWriteOriginalToFile);
  return writeTo(texture, path, true);
}

SUResult SUTextureWriterCreate(SUTextureWriterRef* out_writer) {
  MODELHOST_CALL(SUTextureWriterCreate);
  return create(out_writer);
}

SUResult SUTextureWriterRelease(SUTextureWriterRef* writer) {
  MODELHOST_CALL(SUTextureWriterRelease);
  return release(writer);
}

SUResult SUTextureWriterLoadEntity(SUTextureWriterRef writer, SUEntityRef entity,
                                   long* texture_id) {
  MODELHOST_CALL(SUTextureWriterLoadEntity);
  const DrawingElement* element = find(SUDrawingElementRef{entity.ptr});
  if (element == nullptr) return SU_ERROR_INVALID_INPUT;
  return give(writer, texture_id, [&](TextureWriter& w) {
    return element->kind() == Kind::Face ? w.load(static_cast<const Face&>(*element), true)
                                         : w.load(*element);
  });
}

SUResult SUTextureWriterLoadFace(SUTextureWriterRef writer, SUFaceRef face, long* front_texture_id,
                                 long* back_texture_id) {
  MODELHOST_CALL(SUTextureWriterLoadFace);
  TextureWriter* w = find(writer);
  const Face* f = find(face);
  if (w == nullptr || f == nullptr) return SU_ERROR_INVALID_INPUT;
  if (front_texture_id == nullptr || back_texture_id == nullptr) {
    return SU_ERROR_NULL_POINTER_OUTPUT;
  }
  *front_texture_id = w->load(*f, true);
  *back_texture_id = w->load(*f, false);
  return SU_ERROR_NONE;
}

SUResult SUTextureWriterGetNumTextures(SUTextureWriterRef writer, size_t* count) {
  MODELHOST_CALL(SUTextureWriterGetNumTextures);
  return give(writer, count, [](const TextureWriter& w) { return w.size(); });
}

namespace {

const TextureWriter::Entry* entryOf(SUTextureWriterRef writer, long texture_id) {
  const TextureWriter* w = find(writer);
  return w == nullptr ? nullptr : w->entry(texture_id);
}

}  // namespace

SUResult SUTextureWriterIsTextureAffine(SUTextureWriterRef writer, long texture_id, bool* affine) {
  MODELHOST_CALL(SUTextureWriterIsTextureAffine);
  const auto* entry = entryOf(writer, texture_id);
  if (entry == nullptr) return SU_ERROR_INVALID_INPUT;
  if (affine == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *affine = entry->affine();
  return SU_ERROR_NONE;
}

SUResult SUTextureWriterGetTextureFilePath(SUTextureWriterRef writer, long texture_id,
                                           SUStringRef* path) {
  MODELHOST_CALL(SUTextureWriterGetTextureFilePath);
  const auto* entry = entryOf(writer, texture_id);
  return entry == nullptr ? SU_ERROR_INVALID_INPUT : putText(entry->fileName, path);
}

SUResult SUTextureWriterWriteTexture(SUTextureWriterRef writer, long texture_id, const char* path,
                                     bool reduce_size) {
  MODELHOST_CALL(SUTextureWriterWriteTexture);
  const auto* entry = entryOf(writer, texture_id);
  if (entry == nullptr) return SU_ERROR_INVALID_INPUT;
  if (path == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  const Pixels pixels = render(*entry, reduce_size ? kReducedSide : kMaxSide);
  return writePng(pixels, path) ? SU_ERROR_NONE : SU_ERROR_SERIALIZATION;
}

SUResult SUTextureWriterWriteAllTextures(SUTextureWriterRef writer, const char* directory) {
  MODELHOST_CALL(SUTextureWriterWriteAllTextures);
  const TextureWriter* w = find(writer);
  if (w == nullptr) return SU_ERROR_INVALID_INPUT;
  if (directory == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  for (size_t i = 1; i <= w->size(); ++i) {
    const auto path = filePath(directory) / ("texture" + std::to_string(i) + ".png");
    const Pixels pixels = render(*w->entry(static_cast<long>(i)), kMaxSide);
    if (!writePng(pixels, utf8(path))) return SU_ERROR_SERIALIZATION;
  }
  return SU_ERROR_NONE;
}
