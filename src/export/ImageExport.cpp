#include "export/ImageExport.h"

#include "export/ImageKey.h"
#include "export/Lists.h"
#include "export/Walks.h"

namespace quellix {

namespace {

constexpr float kShortestAxis = 1e-5f;

void ExportImageQuad(SUImageRef su_image, const SceneIndex& scene, const glm::mat4& transform,
                     MeshBuffer& mesh) {
  const auto index = scene.imageIndex.find(ImageKey(su_image));
  if (index == scene.imageIndex.end()) return;
  double width = 0.0;
  double height = 0.0;
  if (SUImageGetDimensions(su_image, &width, &height) != SU_ERROR_NONE) return;
  if (!(width > 0.0) || !(height > 0.0)) return;

  glm::vec3 x(transform[0]);
  glm::vec3 y(transform[1]);
  if (!(glm::length(x) > kShortestAxis) || !(glm::length(y) > kShortestAxis)) return;
  x = glm::normalize(x);
  y = glm::normalize(y);
  glm::vec3 normal = glm::cross(x, y);
  normal = glm::length(normal) > kShortestAxis ? glm::normalize(normal) : glm::vec3(0, 0, 1);

  const glm::vec3 origin(transform[3]);
  const glm::vec3 right = static_cast<float>(width) * x;
  const glm::vec3 up = static_cast<float>(height) * y;
  const auto first = static_cast<std::uint32_t>(mesh.vertices.size());
  const auto add = [&](const glm::vec3& corner, const glm::vec2& uv) {
    mesh.vertices.push_back({corner, normal, uv, uv});
  };
  add(origin, {0.0f, 0.0f});
  add(origin + right, {1.0f, 0.0f});
  add(origin + right + up, {1.0f, 1.0f});
  add(origin + up, {0.0f, 1.0f});
  const std::uint32_t material = index->second;
  mesh.triangles.insert(mesh.triangles.end(), {first, first + 1, first + 2, material, material,  //
                                               first, first + 2, first + 3, material, material});
}

}  // namespace

void ExportImages(SUEntitiesRef su_entities, bool atRoot, const SceneIndex& scene,
                  InheritanceManager& manager, MeshBuffer& mesh) {
  for (const SUImageRef su_image : ImagesOf(su_entities)) {
    if (IsHidden(SUImageToDrawingElement(su_image))) continue;
    // The outermost element is the image itself where the collection is the model's own, whose mesh
    // depends on the layer too.
    const PushedLevel level(manager, su_image);
    if (atRoot) RecordLayerAndTest(scene.hiddenLayers, manager, 0);
    if (!RecordLayerAndTest(scene.hiddenLayers, manager, OwnerOf(manager))) continue;
    ExportImageQuad(su_image, scene, manager.CurrentTransform(), mesh);
  }
}

}  // namespace quellix
