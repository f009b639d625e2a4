#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <glm/glm.hpp>

// What a picture is made of, free of file format and of graphics library. Y is up.

namespace kvpicture {

struct Image {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> rgba;  // top row first
};

enum class AlphaMode { Opaque, Mask, Blend };

struct Surface {
  glm::vec4 baseColor{1};  // linear
  float metallic = 0;
  float roughness = 1;
  glm::vec3 emission{0};
  float normalScale = 1;
  float alphaCutoff = 0.5f;
  AlphaMode alphaMode = AlphaMode::Opaque;
  bool doubleSided = false;
  // Indexes of images; -1 for none.
  int baseImage = -1;
  int metallicRoughnessImage = -1;
  int normalImage = -1;
  int emissionImage = -1;
};

// Triangles of one surface.
struct Part {
  std::vector<glm::vec3> positions;
  std::vector<glm::vec3> normals;
  std::vector<glm::vec2> uvs;  // empty, or one a vertex
  std::vector<std::uint32_t> indices;
  int surface = 0;
  glm::vec3 low{0};
  glm::vec3 high{0};
};

struct Item {
  int part = 0;
  glm::mat4 transform{1};
};

struct Lamp {
  bool spot = false;
  glm::vec3 color{1};  // at distance one
  glm::vec3 position{0};
  glm::vec3 direction{0, -1, 0};
  float cosInner = 1;
  float cosOuter = -1;
};

struct Sun {
  glm::vec3 towards{0, 1, 0};
  glm::vec3 color{1};
};

struct Camera {
  glm::mat4 toWorld{1};  // looks along -Z, +Y up, no scale
  float verticalView = 0.8f;
};

struct Model {
  std::vector<Image> images;
  std::vector<Surface> surfaces;
  std::vector<Part> parts;
  std::vector<Item> items;
  std::vector<Lamp> lamps;
  std::optional<Sun> sun;
  std::optional<Camera> camera;
  std::optional<glm::vec3> background;  // as on the screen, 0 to 1
};

// A box around everything; empty for a model without triangles.
struct Box {
  glm::vec3 low{0};
  glm::vec3 high{0};
  glm::vec3 Center() const { return (low + high) * 0.5f; }
  float Radius() const { return glm::length(high - low) * 0.5f; }
};
std::optional<Box> BoxOf(const Model& model);

}  // namespace kvpicture
