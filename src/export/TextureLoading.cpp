#include "export/TextureLoading.h"

#include "support/Gates.h"

namespace quellix {

std::int32_t LoadEntityTexture(SUTextureWriterRef su_writer, SUEntityRef su_entity) {
  const GateGuard gate = GateAcquire(Gate::TextureWriter);
  long id = 0;
  if (SUTextureWriterLoadEntity(su_writer, su_entity, &id) != SU_ERROR_NONE) return 0;
  return static_cast<std::int32_t>(id);
}

FaceTextures LoadFaceTextures(SUTextureWriterRef su_writer, SUFaceRef su_face) {
  const GateGuard gate = GateAcquire(Gate::TextureWriter);
  long front = 0;
  long back = 0;
  if (SUTextureWriterLoadFace(su_writer, su_face, &front, &back) != SU_ERROR_NONE) return {};
  return {static_cast<std::int32_t>(front), static_cast<std::int32_t>(back)};
}

}  // namespace quellix
