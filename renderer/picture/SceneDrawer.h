#pragma once

#include <vector>

#include <glm/glm.hpp>

#include "picture/GlObjects.h"
#include "picture/Model.h"

namespace kvpicture {

// The model on the graphics card, drawn by whatever program a pass uses.
class SceneDrawer {
 public:
  explicit SceneDrawer(const Model& model);

  enum class Sides { AsMaterial, Both };

  // Everything that is not see-through. The program gets the surface's colour, texture and cut-out.
  void DrawSolid(const Program& program, const glm::mat4& worldToClip, Sides sides) const;
  // As above, and the values that lit surfaces need.
  void DrawSolidLit(const Program& program, const glm::mat4& worldToClip) const;
  // See-through surfaces, from far to near.
  void DrawSeeThrough(const Program& program, const glm::mat4& worldToClip,
                      const glm::vec3& eye) const;

  std::size_t TriangleCount() const { return triangleCount_; }

  // The unit from which textures of surfaces are bound; those below are free for passes.
  static constexpr int kFirstUnit = 8;

 private:
  void SetSurface(const Program& program, const Surface& surface, bool lit) const;
  void SetImage(const Program& program, const char* flag, const char* sampler, int image,
                int unit) const;
  void DrawItem(const Program& program, const Item& item, bool culled) const;
  const Surface& SurfaceOf(const Item& item) const;

  const Model& model_;
  std::vector<GlTexture> images_;
  std::vector<PartBuffers> parts_;
  std::vector<const Item*> solid_;  // by surface, so that its values are set once
  std::vector<const Item*> seeThrough_;
  std::size_t triangleCount_ = 0;
};

}  // namespace kvpicture
