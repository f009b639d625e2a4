#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "link/WireRecords.h"

namespace kvapp {

using Vector3 = std::array<float, 3>;
// Column-major, the translation in elements 12 to 14.
using Matrix = std::array<float, 16>;

// Pixels of four bytes, rows packed, the bottom row of the picture first. Colour and channel
// textures have the order blue, green, red, alpha; normal maps red, green, blue, alpha. A texture
// whose pixels the plug-in could not read is present without pixels.
struct Texture {
  bool present = false;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  // Shared by the copies of a material, never changed; null without pixels.
  std::shared_ptr<const std::vector<std::uint8_t>> pixels;

  bool HasPixels() const { return pixels != nullptr; }
  std::span<const std::uint8_t> Pixels() const {
    return pixels ? std::span<const std::uint8_t>(*pixels) : std::span<const std::uint8_t>();
  }
};

struct ClassicFields {
  Vector3 ambientColor{};
  Vector3 diffuseColor{};
  Vector3 specularColor{};
  float diffuse = 0;
  float specular = 0;
  float reflection = 0;
  bool reflectionBlur = false;
  bool refractionBlur = false;
  float opacity = 1;
  float bumpDepth = 0;
  std::string textureName;  // a fresh random text each time it is sent
};

struct PbrFields {
  Vector3 baseColor{};
  float metallic = 0;
  Texture metallicTexture;
  float roughness = 0;
  Texture roughnessTexture;
  float normalScale = 0;
  Texture normalTexture;
  float transparency = 0;
};

struct Material {
  bool isPbr = false;
  std::uint32_t index = 0;
  std::uint64_t key = 0;
  std::string name;
  std::string type;
  float refraction = 0;
  float lightPower = 0;
  bool hidden = false;
  Texture colorTexture;
  ClassicFields classic;  // of a classic material
  PbrFields pbr;          // of a metallic-roughness material

  // Image entities come as classic materials with a texture and no texture id in their key.
  bool IsImage() const { return !isPbr && colorTexture.present && (key >> 32) == 0; }
};

struct Light {
  bool isSpot = false;
  Vector3 color{};  // already multiplied by the power
  Vector3 position{};
  Vector3 direction{};
  float beamAngle = 0;
  float wideBeamAngle = 0;
};

// eye, target and up; the vertical field of view in degrees; the direction towards the sun, zero
// for none. This is how this renderer reads the values; the plug-in hands them on unread.
struct CameraView {
  Vector3 eye{};
  Vector3 target{};
  Vector3 up{};
  float fieldOfView = 0;
  Vector3 towardsSun{};
  bool withProgress = false;
};

struct Background {
  Vector3 color{};  // red, green, blue, 0 to 1
  std::array<std::int32_t, 7> integers{};
};

// Vertices and triangles of one mesh, uninitialised storage of a known size.
struct Geometry {
  std::uint32_t vertexCount = 0;
  std::uint32_t triangleCount = 0;
  std::unique_ptr<quellix::wire::MeshVertex[]> vertexData;
  std::unique_ptr<quellix::wire::TriangleRecord[]> triangleData;

  std::span<const quellix::wire::MeshVertex> Vertices() const {
    return {vertexData.get(), vertexData ? vertexCount : 0};
  }
  std::span<const quellix::wire::TriangleRecord> Triangles() const {
    return {triangleData.get(), triangleData ? triangleCount : 0};
  }
  std::span<quellix::wire::TriangleRecord> Triangles() {
    return {triangleData.get(), triangleData ? triangleCount : 0};
  }
};

}  // namespace kvapp
