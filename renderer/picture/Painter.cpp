#include "picture/Painter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include <glm/gtc/matrix_transform.hpp>

#include "picture/Framing.h"
#include "picture/GlObjects.h"
#include "picture/Palette.h"
#include "picture/SceneDrawer.h"
#include "picture/Shaders.h"

namespace kvpicture {

namespace {

constexpr int kSunMapSide = 4096;
constexpr int kLampMapSide = 512;
constexpr int kGlowFactor = 8;
// Above this a lamp's shadows, six views of the model each, cost more than they give.
constexpr std::size_t kMostShadowTriangles = 400'000;
constexpr float kSunlight = 3.6f;

constexpr GlTexture::Format kDepth = {GL_DEPTH_COMPONENT32F, GL_DEPTH_COMPONENT, GL_FLOAT,
                                      GL_NEAREST};
constexpr GlTexture::Format kLight = {GL_RGBA16F, GL_RGBA, GL_FLOAT, GL_NEAREST};
constexpr GlTexture::Format kSoftLight = {GL_RGBA16F, GL_RGBA, GL_FLOAT, GL_LINEAR};
constexpr GlTexture::Format kOpen = {GL_R8, GL_RED, GL_UNSIGNED_BYTE, GL_LINEAR};
constexpr GlTexture::Format kScreen = {GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, GL_NEAREST};

// Texture units of the passes; those of surfaces follow.
enum Unit { kUnitSun = 0, kUnitOcclusion = 1, kUnitLamp = 2, kUnitInput = 5, kUnitDepth = 6 };

Part GroundDisc(const Box& box, float radius) {
  constexpr int kSteps = 64;
  Part part;
  const float y = box.low.y - radius * 2e-4f;
  part.positions.push_back({box.Center().x, y, box.Center().z});
  for (int i = 0; i < kSteps; ++i) {
    const float angle = static_cast<float>(i) * 6.2831853f / kSteps;
    part.positions.push_back(
        {box.Center().x + radius * std::cos(angle), y, box.Center().z + radius * std::sin(angle)});
    part.indices.insert(part.indices.end(), {0u, static_cast<std::uint32_t>((i + 1) % kSteps + 1),
                                             static_cast<std::uint32_t>(i + 1)});
  }
  part.normals.assign(part.positions.size(), glm::vec3(0, 1, 0));
  return part;
}

std::string ElementName(std::string array, std::size_t index) {
  array += '[';
  array += std::to_string(index);
  array += ']';
  return array;
}

class Painter {
 public:
  Painter(const Model& model, int width, int height)
      : model_(model),
        width_(width),
        height_(height),
        factor_(static_cast<long>(width) * height > 3'000'000 ? 1 : 2),
        wide_(width * factor_),
        high_(height * factor_),
        box_(BoxOf(model).value_or(Box{glm::vec3(-1), glm::vec3(1)})),
        view_(ChooseView(model, box_, static_cast<float>(width) / static_cast<float>(height))),
        sun_(ChooseSun(model, view_)),
        palette_(PaletteOf(model)),
        scene_(model),
        groundRadius_(std::max(box_.Radius(), 1e-3f) * 7),
        ground_(GroundDisc(box_, groundRadius_)) {}

  Image Paint() {
    DrawSunMap();
    DrawLampMaps();
    DrawDepth();
    DrawOcclusion();
    DrawLight();
    return Develop();
  }

 private:
  glm::mat4 WorldToClip() const { return view_.toClip * view_.toEye; }
  bool SeesGround() const { return view_.eye.y > box_.low.y; }

  void DrawSunMap() {
    const Program program("sun map", shaders::SceneVertex(), shaders::DepthFragment());
    const Framebuffer target(0, sunMap_.Id());
    target.Use(kSunMapSide, kSunMapSide);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(1.5f, 2.f);
    scene_.DrawSolid(program, SunMatrix(sun_, box_), SceneDrawer::Sides::Both);
    glDisable(GL_POLYGON_OFFSET_FILL);
  }

  void DrawLampMaps() {
    if (scene_.TriangleCount() > kMostShadowTriangles) return;
    const Program program("lamp map", shaders::SceneVertex(), shaders::DistanceFragment());
    const GlTexture depth(kLampMapSide, kLampMapSide, kDepth);
    const Framebuffer target(0, depth.Id());
    const std::size_t count =
        std::min<std::size_t>(model_.lamps.size(), shaders::kMostShadowedLamps);
    for (std::size_t i = 0; i < count; ++i) {
      lampMaps_.emplace_back(kLampMapSide);
      DrawLampMap(program, target, lampMaps_.back(), model_.lamps[i].position);
    }
  }

  void DrawLampMap(const Program& program, const Framebuffer& target, const GlTexture& map,
                   const glm::vec3& lamp) {
    static const std::array<std::array<glm::vec3, 2>, 6> kSides = {{
        {{{1, 0, 0}, {0, -1, 0}}},
        {{{-1, 0, 0}, {0, -1, 0}}},
        {{{0, 1, 0}, {0, 0, 1}}},
        {{{0, -1, 0}, {0, 0, -1}}},
        {{{0, 0, 1}, {0, -1, 0}}},
        {{{0, 0, -1}, {0, -1, 0}}},
    }};
    const float far = box_.Radius() * 2 + glm::distance(lamp, box_.Center());
    const glm::mat4 toClip = glm::perspective(1.5707964f, 1.f, far / 5000, far);
    for (int side = 0; side < 6; ++side) {
      const auto& [forward, up] = kSides[static_cast<std::size_t>(side)];
      target.AttachCubeSide(map.Id(), side);
      target.Use(kLampMapSide, kLampMapSide);
      glClearColor(far * 4, 0, 0, 0);
      glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
      program.Use();
      program.Set("uLamp", lamp);
      scene_.DrawSolid(program, toClip * glm::lookAt(lamp, lamp + forward, up),
                       SceneDrawer::Sides::Both);
    }
  }

  void DrawDepth() {
    const Program program("depth", shaders::SceneVertex(), shaders::DepthFragment());
    const Framebuffer target(0, depth_.Id());
    target.Use(wide_, high_);
    glClear(GL_DEPTH_BUFFER_BIT);
    scene_.DrawSolid(program, WorldToClip(), SceneDrawer::Sides::AsMaterial);
    if (!SeesGround()) return;
    program.Use();
    program.Set("uBaseColor", glm::vec4(1));
    program.Set("uHasBaseImage", 0);
    program.Set("uAlphaCutoff", -1.f);
    DrawGround(program);
  }

  void DrawGround(const Program& program) {
    program.Set("uToWorld", glm::mat4(1));
    program.Set("uNormalMatrix", glm::mat3(1));
    program.Set("uWorldToClip", WorldToClip());
    glFrontFace(GL_CCW);
    glDisable(GL_CULL_FACE);
    ground_.Draw();
  }

  void DrawOcclusion() {
    const Program closeness("occlusion", shaders::ScreenVertex(), shaders::OcclusionFragment());
    const Program blur("blur", shaders::ScreenVertex(), shaders::BlurFragment());
    const GlTexture raw(width_, height_, kOpen);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    depth_.Bind(kUnitDepth);
    {
      const Framebuffer target(raw.Id(), 0);
      target.Use(width_, height_);
      closeness.Use();
      closeness.Set("uDepth", kUnitDepth);
      closeness.Set("uClipToEye", glm::inverse(view_.toClip));
      closeness.Set("uEyeToClip", view_.toClip);
      closeness.Set("uReach", box_.Radius() * 0.12f);
      screen_.Draw();
    }
    const Framebuffer target(open_.Id(), 0);
    target.Use(width_, height_);
    blur.Use();
    raw.Bind(kUnitInput);
    blur.Set("uOpen", kUnitInput);
    blur.Set("uDepth", kUnitDepth);
    blur.Set("uPlanes", glm::vec2(view_.nearPlane, view_.farPlane));
    screen_.Draw();
  }

  void SetSky(const Program& program) const {
    program.Use();
    program.Set("uZenith", palette_.zenith);
    program.Set("uHorizon", palette_.horizon);
    program.Set("uGroundColor", palette_.ground);
    program.Set("uEye", view_.eye);
  }

  void SetLamps(const Program& program) const {
    const std::size_t count = std::min<std::size_t>(model_.lamps.size(), shaders::kMostLamps);
    program.Set("uLampCount", static_cast<int>(count));
    program.Set("uShadowedLamps", static_cast<int>(lampMaps_.size()));
    program.Set("uLampOffset", box_.Radius() * 0.002f);
    for (std::size_t i = 0; i < count; ++i) {
      const Lamp& lamp = model_.lamps[i];
      program.Set(ElementName("uLampPosition", i).c_str(), lamp.position);
      program.Set(ElementName("uLampColor", i).c_str(), lamp.color);
      program.Set(ElementName("uLampDirection", i).c_str(), lamp.direction);
      // A lamp without cone shines everywhere: below every cosine.
      program.Set(ElementName("uLampCone", i).c_str(),
                  lamp.spot
                      ? glm::vec2(lamp.cosInner, std::min(lamp.cosOuter, lamp.cosInner - 1e-4f))
                      : glm::vec2(-2, -3));
    }
    for (int i = 0; i < shaders::kMostShadowedLamps; ++i) {
      const std::string name = "uLampMap" + std::to_string(i);
      program.Set(name.c_str(), kUnitLamp + i);
      if (static_cast<std::size_t>(i) < lampMaps_.size()) {
        lampMaps_[static_cast<std::size_t>(i)].Bind(kUnitLamp + i);
      }
    }
  }

  void SetLighting(const Program& program) const {
    SetSky(program);
    const float radius = std::max(box_.Radius(), 1e-3f);
    sunMap_.Bind(kUnitSun);
    open_.Bind(kUnitOcclusion);
    program.Set("uTowardsSun", sun_.towards);
    program.Set("uSunColor", sun_.color * kSunlight);
    program.Set("uToSunMap", SunMatrix(sun_, box_));
    program.Set("uSunMap", kUnitSun);
    program.Set("uSunTexel", 1.f / kSunMapSide);
    program.Set("uSunOffset", radius * 2 / kSunMapSide * 2.5f);
    program.Set("uOcclusion", kUnitOcclusion);
    program.Set("uTargetSize", glm::vec2(wide_, high_));
    program.Set("uFadeRadius", 0.f);
    program.Set("uFadeCenter", box_.Center());
    SetLamps(program);
  }

  void DrawLight() {
    const Program sky("sky", shaders::ScreenVertex(), shaders::SkyFragment());
    const Program lit("surface", shaders::SceneVertex(), shaders::SurfaceFragment());
    const Framebuffer target(light_.Id(), depth_.Id());
    target.Use(wide_, high_);
    SetSky(sky);
    sky.Set("uClipToWorld", glm::inverse(WorldToClip()));
    screen_.Draw();

    glEnable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    SetLighting(lit);
    if (SeesGround()) DrawLitGround(lit);
    glDisable(GL_BLEND);
    scene_.DrawSolidLit(lit, WorldToClip());
    glEnable(GL_BLEND);
    scene_.DrawSeeThrough(lit, WorldToClip(), view_.eye);
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
  }

  void DrawLitGround(const Program& program) {
    program.Set("uBlend", 0);
    program.Set("uFadeRadius", groundRadius_);
    program.Set("uBaseColor", glm::vec4(palette_.ground * 0.95f, 1));
    for (const char* flag :
         {"uHasBaseImage", "uHasChannels", "uHasNormalImage", "uHasEmissionImage"}) {
      program.Set(flag, 0);
    }
    program.Set("uAlphaCutoff", -1.f);
    program.Set("uMetallic", 0.f);
    program.Set("uRoughness", 0.95f);
    program.Set("uEmission", glm::vec3(0));
    DrawGround(program);
    program.Set("uFadeRadius", 0.f);
  }

  Image Develop() {
    const int smallWide = std::max(1, wide_ / kGlowFactor);
    const int smallHigh = std::max(1, high_ / kGlowFactor);
    const GlTexture bright(smallWide, smallHigh, kSoftLight);
    const GlTexture glow(smallWide, smallHigh, kSoftLight);
    const GlTexture result(width_, height_, kScreen);
    const Program brightness("bright", shaders::ScreenVertex(), shaders::BrightFragment());
    const Program spreading("glow", shaders::ScreenVertex(), shaders::GlowFragment());
    const Program developing("develop", shaders::ScreenVertex(), shaders::DevelopFragment());

    const Framebuffer brightTarget(bright.Id(), 0);
    brightTarget.Use(smallWide, smallHigh);
    brightness.Use();
    brightness.Set("uFactor", kGlowFactor);
    DrawFrom(brightness, "uLight", light_);

    const Framebuffer glowTarget(glow.Id(), 0);
    glowTarget.Use(smallWide, smallHigh);
    spreading.Use();
    DrawFrom(spreading, "uBright", bright);

    const Framebuffer resultTarget(result.Id(), 0);
    resultTarget.Use(width_, height_);
    developing.Use();
    developing.Set("uFactor", factor_);
    glow.Bind(kUnitDepth);
    developing.Set("uGlow", kUnitDepth);
    DrawFrom(developing, "uLight", light_);
    return ReadPicture();
  }

  void DrawFrom(const Program& program, const char* sampler, const GlTexture& from) const {
    from.Bind(kUnitInput);
    program.Set(sampler, kUnitInput);
    screen_.Draw();
  }

  // The bottom row comes first from the graphics card.
  Image ReadPicture() const {
    const std::size_t stride = static_cast<std::size_t>(width_) * 4;
    std::vector<std::uint8_t> upsideDown(stride * static_cast<std::size_t>(height_));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width_, height_, GL_RGBA, GL_UNSIGNED_BYTE, upsideDown.data());
    Image image{width_, height_, std::vector<std::uint8_t>(upsideDown.size())};
    for (std::size_t row = 0; row < static_cast<std::size_t>(height_); ++row) {
      std::memcpy(image.rgba.data() + row * stride,
                  upsideDown.data() + (static_cast<std::size_t>(height_) - 1 - row) * stride,
                  stride);
    }
    return image;
  }

  const Model& model_;
  const int width_;
  const int height_;
  const int factor_;  // samples along each side of a pixel
  const int wide_;
  const int high_;
  const Box box_;
  const View view_;
  const Sun sun_;
  const Palette palette_;
  const SceneDrawer scene_;
  const float groundRadius_;
  const PartBuffers ground_;
  const FullScreen screen_;
  const GlTexture sunMap_{kSunMapSide, kSunMapSide, kDepth};
  const GlTexture depth_{wide_, high_, kDepth};
  const GlTexture open_{width_, height_, kOpen};
  const GlTexture light_{wide_, high_, kLight};
  std::vector<GlTexture> lampMaps_;
};

}  // namespace

Image Paint(const Model& model, int width, int height) {
  return Painter(model, width, height).Paint();
}

}  // namespace kvpicture
