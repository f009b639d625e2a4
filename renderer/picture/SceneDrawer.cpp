#include "picture/SceneDrawer.h"

#include <algorithm>

namespace kvpicture {

namespace {

// Images that hold colours; all others hold numbers.
std::vector<bool> ColorImages(const Model& model) {
  std::vector<bool> colors(model.images.size(), false);
  for (const Surface& surface : model.surfaces) {
    for (const int image : {surface.baseImage, surface.emissionImage}) {
      if (image >= 0) colors.at(static_cast<std::size_t>(image)) = true;
    }
  }
  return colors;
}

glm::vec3 CenterOf(const Model& model, const Item& item) {
  const Part& part = model.parts[static_cast<std::size_t>(item.part)];
  return glm::vec3(item.transform * glm::vec4((part.low + part.high) * 0.5f, 1));
}

}  // namespace

SceneDrawer::SceneDrawer(const Model& model) : model_(model) {
  const std::vector<bool> colors = ColorImages(model);
  for (std::size_t i = 0; i < model.images.size(); ++i) {
    images_.emplace_back(model.images[i], colors[i]);
  }
  for (const Part& part : model.parts) parts_.emplace_back(part);
  for (const Item& item : model.items) {
    triangleCount_ += model.parts[static_cast<std::size_t>(item.part)].indices.size() / 3;
    (SurfaceOf(item).alphaMode == AlphaMode::Blend ? seeThrough_ : solid_).push_back(&item);
  }
  std::stable_sort(solid_.begin(), solid_.end(), [this](const Item* a, const Item* b) {
    return &SurfaceOf(*a) < &SurfaceOf(*b);
  });
}

const Surface& SceneDrawer::SurfaceOf(const Item& item) const {
  const Part& part = model_.parts[static_cast<std::size_t>(item.part)];
  return model_.surfaces.at(static_cast<std::size_t>(part.surface));
}

void SceneDrawer::SetImage(const Program& program, const char* flag, const char* sampler, int image,
                           int unit) const {
  program.Set(flag, image >= 0 ? 1 : 0);
  if (image < 0) return;
  images_.at(static_cast<std::size_t>(image)).Bind(unit);
  program.Set(sampler, unit);
}

void SceneDrawer::SetSurface(const Program& program, const Surface& surface, bool lit) const {
  program.Set("uBaseColor", surface.baseColor);
  program.Set("uAlphaCutoff", surface.alphaMode == AlphaMode::Mask ? surface.alphaCutoff : -1.f);
  SetImage(program, "uHasBaseImage", "uBaseImage", surface.baseImage, kFirstUnit);
  if (!lit) return;
  program.Set("uMetallic", surface.metallic);
  program.Set("uRoughness", surface.roughness);
  program.Set("uNormalScale", surface.normalScale);
  program.Set("uEmission", surface.emission);
  SetImage(program, "uHasChannels", "uChannels", surface.metallicRoughnessImage, kFirstUnit + 1);
  SetImage(program, "uHasNormalImage", "uNormalImage", surface.normalImage, kFirstUnit + 2);
  SetImage(program, "uHasEmissionImage", "uEmissionImage", surface.emissionImage, kFirstUnit + 3);
}

void SceneDrawer::DrawItem(const Program& program, const Item& item, bool culled) const {
  const glm::mat3 turn(item.transform);
  const float determinant = glm::determinant(turn);
  program.Set("uToWorld", item.transform);
  program.Set("uNormalMatrix",
              std::abs(determinant) > 1e-12f ? glm::transpose(glm::inverse(turn)) : turn);
  glFrontFace(determinant < 0 ? GL_CW : GL_CCW);
  if (culled) {
    glEnable(GL_CULL_FACE);
  } else {
    glDisable(GL_CULL_FACE);
  }
  parts_[static_cast<std::size_t>(item.part)].Draw();
}

void SceneDrawer::DrawSolid(const Program& program, const glm::mat4& worldToClip,
                            Sides sides) const {
  program.Use();
  program.Set("uWorldToClip", worldToClip);
  const Surface* current = nullptr;
  for (const Item* item : solid_) {
    const Surface& surface = SurfaceOf(*item);
    if (&surface != current) SetSurface(program, surface, false);
    current = &surface;
    DrawItem(program, *item, sides == Sides::AsMaterial && !surface.doubleSided);
  }
}

void SceneDrawer::DrawSolidLit(const Program& program, const glm::mat4& worldToClip) const {
  program.Use();
  program.Set("uWorldToClip", worldToClip);
  program.Set("uBlend", 0);
  const Surface* current = nullptr;
  for (const Item* item : solid_) {
    const Surface& surface = SurfaceOf(*item);
    if (&surface != current) SetSurface(program, surface, true);
    current = &surface;
    DrawItem(program, *item, !surface.doubleSided);
  }
}

void SceneDrawer::DrawSeeThrough(const Program& program, const glm::mat4& worldToClip,
                                 const glm::vec3& eye) const {
  std::vector<std::pair<float, const Item*>> sorted;
  for (const Item* item : seeThrough_) {
    sorted.emplace_back(glm::distance(CenterOf(model_, *item), eye), item);
  }
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  program.Use();
  program.Set("uWorldToClip", worldToClip);
  program.Set("uBlend", 1);
  for (const auto& [distance, item] : sorted) {
    const Surface& surface = SurfaceOf(*item);
    SetSurface(program, surface, true);
    DrawItem(program, *item, !surface.doubleSided);
  }
}

}  // namespace kvpicture
