#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <SketchUpAPI/sketchup.h>
#include <glm/glm.hpp>

namespace quellix {

// A host transform, element by element in single precision; lengths stay in the host's unit.
glm::mat4 ToMatrix(const SUTransformation& su_transform);

// The material that counts for one side of what is being visited.
struct EffectiveMaterial {
  SUMaterialRef material = SU_INVALID;
  // The texture writer's id of the material at the level that gives it; 0 for no texture.
  std::int32_t textureId = 0;
  // The level that gives it, 0 the outermost; -1 when no level has a material.
  int level = -1;
};

// The key of a path through the hierarchy from the persistent ids of its elements, outermost first.
// No element gives 0 and one gives its plain id; more give a hash with the top bit set, so that
// keys of paths and plain ids keep apart.
std::uint64_t PathKeyOf(std::span<const std::uint64_t> ids);

// What a walk down the model hands on from level to level: world transform, materials, layer. A
// level is pushed on entering a group, instance, image or face, and popped on leaving it. A manager
// belongs to one walk on one thread; a branch that goes its own way takes a copy.
//
// Host calls that fail leave null, 0 or identity for what they should have given.
class InheritanceManager {
 public:
  // Texture ids come from `su_textureWriter`, which is not owned and shared by an export's
  // managers.
  explicit InheritanceManager(SUTextureWriterRef su_textureWriter);
  InheritanceManager(const InheritanceManager&) = default;
  InheritanceManager& operator=(const InheritanceManager&) = default;
  virtual ~InheritanceManager() = default;

  void PushInstance(SUComponentInstanceRef su_instance);
  void PushGroup(SUGroupRef su_group);
  void PushImage(SUImageRef su_image);
  // A face has materials of its own for both sides and no transform.
  void PushFace(SUFaceRef su_face);
  void Pop();

  // To the coordinates in which the outermost transform is given; identity when there is none.
  glm::mat4 CurrentTransform() const;
  // The transform last pushed alone, without those above it.
  const glm::mat4& LastLocal() const { return lastLocal; }
  // The innermost layer that could be read, or null.
  SULayerRef CurrentLayer() const;
  EffectiveMaterial CurrentFrontMaterial() const;
  EffectiveMaterial CurrentBackMaterial() const;

  // Tells the ways through the hierarchy to one component apart; see PathKeyOf.
  std::uint64_t PathKey() const;

  // Starts a new coordinate system here; materials, layers and elements stay.
  void ResetTransforms();

  bool HasElements() const { return !elements.empty(); }
  // The persistent id of the element directly under the root, 0 when there is none.
  std::uint64_t OutermostId() const;

  SUTextureWriterRef TextureWriter() const { return textureWriter; }

 private:
  void PushTransform(const glm::mat4& local);
  // An element's one material goes to both of its sides.
  void PushElement(SUDrawingElementRef su_element);
  void PushLevel(SUDrawingElementRef su_element, SUMaterialRef su_front, std::int32_t frontId,
                 SUMaterialRef su_back, std::int32_t backId);

  std::vector<glm::mat4> transforms;
  std::vector<SULayerRef> layers;
  std::vector<SUMaterialRef> frontMaterials;
  std::vector<SUMaterialRef> backMaterials;
  glm::mat4 lastLocal{1.0f};
  std::vector<std::int32_t> frontTextureIds;
  std::vector<std::int32_t> backTextureIds;
  SUTextureWriterRef textureWriter;
  std::vector<SUDrawingElementRef> elements;
};

}  // namespace quellix
