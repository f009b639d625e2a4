#include "export/InheritanceManager.h"

#include "cw/Entity.h"
#include "export/TextureLoading.h"

namespace quellix {

namespace {

template <class Ref, class GetTransform>
glm::mat4 ReadTransform(Ref su_element, GetTransform get) {
  SUTransformation su_transform = {};
  if (get(su_element, &su_transform) != SU_ERROR_NONE) return glm::mat4(1.0f);
  return ToMatrix(su_transform);
}

// The innermost level with a material, and the texture id stored beside it.
EffectiveMaterial Innermost(const std::vector<SUMaterialRef>& su_materials,
                            const std::vector<std::int32_t>& textureIds) {
  for (std::size_t level = su_materials.size(); level-- > 0;) {
    if (SUIsValid(su_materials[level])) {
      return {su_materials[level], textureIds[level], static_cast<int>(level)};
    }
  }
  return {};
}

template <class T>
void PopBack(std::vector<T>& values) {
  if (!values.empty()) values.pop_back();
}

std::uint64_t IdOf(SUDrawingElementRef su_element) {
  return CW::persistent_id(SUDrawingElementToEntity(su_element));
}

}  // namespace

glm::mat4 ToMatrix(const SUTransformation& su_transform) {
  glm::mat4 matrix;
  for (int column = 0; column < 4; ++column) {
    for (int row = 0; row < 4; ++row) {
      matrix[column][row] = static_cast<float>(su_transform.values[column * 4 + row]);
    }
  }
  return matrix;
}

std::uint64_t PathKeyOf(std::span<const std::uint64_t> ids) {
  if (ids.size() < 2) return ids.empty() ? 0 : ids.front();
  std::uint64_t hash = 0x14650fb0739d0383u;
  for (std::uint64_t i = 0; i < ids.size(); ++i) {
    hash ^= ids[i] + 0x9e3779b97f4a7c15u + (i << 6) + (i >> 2);
    hash *= 0x100000001b3u;
  }
  return hash | 0x8000000000000000u;
}

InheritanceManager::InheritanceManager(SUTextureWriterRef su_textureWriter)
    : textureWriter(su_textureWriter) {}

void InheritanceManager::PushInstance(SUComponentInstanceRef su_instance) {
  PushTransform(ReadTransform(su_instance, SUComponentInstanceGetTransform));
  PushElement(SUComponentInstanceToDrawingElement(su_instance));
}

void InheritanceManager::PushGroup(SUGroupRef su_group) {
  PushTransform(ReadTransform(su_group, SUGroupGetTransform));
  PushElement(SUGroupToDrawingElement(su_group));
}

void InheritanceManager::PushImage(SUImageRef su_image) {
  PushTransform(ReadTransform(su_image, SUImageGetTransform));
  PushElement(SUImageToDrawingElement(su_image));
}

void InheritanceManager::PushFace(SUFaceRef su_face) {
  transforms.push_back(CurrentTransform());
  lastLocal = glm::mat4(1.0f);
  const FaceTextures ids = LoadFaceTextures(textureWriter, su_face);
  SUMaterialRef su_front = SU_INVALID;
  if (SUFaceGetFrontMaterial(su_face, &su_front) != SU_ERROR_NONE) SUSetInvalid(su_front);
  SUMaterialRef su_back = SU_INVALID;
  if (SUFaceGetBackMaterial(su_face, &su_back) != SU_ERROR_NONE) SUSetInvalid(su_back);
  PushLevel(SUFaceToDrawingElement(su_face), su_front, ids.front, su_back, ids.back);
}

void InheritanceManager::PushTransform(const glm::mat4& local) {
  transforms.push_back(CurrentTransform() * local);
  lastLocal = local;
}

void InheritanceManager::PushElement(SUDrawingElementRef su_element) {
  SUMaterialRef su_material = SU_INVALID;
  if (SUDrawingElementGetMaterial(su_element, &su_material) != SU_ERROR_NONE) {
    SUSetInvalid(su_material);
  }
  const std::int32_t id =
      SUIsValid(su_material)
          ? LoadEntityTexture(textureWriter, SUDrawingElementToEntity(su_element))
          : 0;
  PushLevel(su_element, su_material, id, su_material, id);
}

void InheritanceManager::PushLevel(SUDrawingElementRef su_element, SUMaterialRef su_front,
                                   std::int32_t frontId, SUMaterialRef su_back,
                                   std::int32_t backId) {
  frontMaterials.push_back(su_front);
  frontTextureIds.push_back(SUIsValid(su_front) ? frontId : 0);
  backMaterials.push_back(su_back);
  backTextureIds.push_back(SUIsValid(su_back) ? backId : 0);
  SULayerRef su_layer = SU_INVALID;
  if (SUDrawingElementGetLayer(su_element, &su_layer) != SU_ERROR_NONE) SUSetInvalid(su_layer);
  layers.push_back(su_layer);
  elements.push_back(su_element);
}

void InheritanceManager::Pop() {
  PopBack(transforms);
  PopBack(layers);
  PopBack(frontMaterials);
  PopBack(backMaterials);
  PopBack(frontTextureIds);
  PopBack(backTextureIds);
  PopBack(elements);
}

glm::mat4 InheritanceManager::CurrentTransform() const {
  return transforms.empty() ? glm::mat4(1.0f) : transforms.back();
}

SULayerRef InheritanceManager::CurrentLayer() const {
  for (std::size_t level = layers.size(); level-- > 0;) {
    if (SUIsValid(layers[level])) return layers[level];
  }
  return SULayerRef SU_INVALID;
}

EffectiveMaterial InheritanceManager::CurrentFrontMaterial() const {
  return Innermost(frontMaterials, frontTextureIds);
}

EffectiveMaterial InheritanceManager::CurrentBackMaterial() const {
  return Innermost(backMaterials, backTextureIds);
}

std::uint64_t InheritanceManager::PathKey() const {
  std::vector<std::uint64_t> ids;
  for (const SUDrawingElementRef su_element : elements) ids.push_back(IdOf(su_element));
  return PathKeyOf(ids);
}

void InheritanceManager::ResetTransforms() {
  transforms.clear();
  lastLocal = glm::mat4(1.0f);
}

std::uint64_t InheritanceManager::OutermostId() const {
  return elements.empty() ? 0 : IdOf(elements.front());
}

}  // namespace quellix
