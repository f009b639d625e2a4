#ifndef SKETCHUPAPI_MODEL_TEXTURE_WRITER_H_
#define SKETCHUPAPI_MODEL_TEXTURE_WRITER_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

SU_EXTERN_C_BEGIN

SU_EXPORT enum SUResult SUTextureWriterCreate(SUTextureWriterRef* out_writer);
SU_EXPORT enum SUResult SUTextureWriterRelease(SUTextureWriterRef* writer);
// Ids start at 1; 0 stands for "no texture". Faces on which one material lies without distortion
// share an id; each distorted mapping has an id of its own.
SU_EXPORT enum SUResult SUTextureWriterLoadEntity(SUTextureWriterRef writer, SUEntityRef entity,
                                                  long* texture_id);
SU_EXPORT enum SUResult SUTextureWriterLoadFace(SUTextureWriterRef writer, SUFaceRef face,
                                                long* front_texture_id, long* back_texture_id);
SU_EXPORT enum SUResult SUTextureWriterGetNumTextures(SUTextureWriterRef writer, size_t* count);
SU_EXPORT enum SUResult SUTextureWriterIsTextureAffine(SUTextureWriterRef writer, long texture_id,
                                                       bool* affine);
SU_EXPORT enum SUResult SUTextureWriterGetTextureFilePath(SUTextureWriterRef writer,
                                                          long texture_id, SUStringRef* path);
// Writes a PNG; a distorted texture is written as it is seen on its face.
SU_EXPORT enum SUResult SUTextureWriterWriteTexture(SUTextureWriterRef writer, long texture_id,
                                                    const char* path, bool reduce_size);
SU_EXPORT enum SUResult SUTextureWriterWriteAllTextures(SUTextureWriterRef writer,
                                                        const char* directory);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_MODEL_TEXTURE_WRITER_H_
