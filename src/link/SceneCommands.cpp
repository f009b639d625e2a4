// The commands that carry scene content.

#include "link/IpcInterface.h"

#include <algorithm>
#include <cstring>

#include "link/SceneDigest.h"
#include "support/Finite.h"
#include "support/TimingLog.h"

namespace quellix {

namespace {

constexpr std::uint64_t kMeshBytesLimit = 1ull << 31;

std::uint8_t Flag(bool value) {
  return value ? 1 : 0;
}

void FillChannel(wire::ChannelTexture& target, const ChannelPixels& pixels) {
  target.width = pixels.width;
  target.height = pixels.height;
  target.bitsPerPixel = pixels.bitsPerPixel;
  target.stride = pixels.stride;
  target.size = pixels.size;
}

wire::AppendMaterial ClassicRecord(const ClassicMaterialRecord& material) {
  wire::AppendMaterial record{};
  record.id = static_cast<std::uint32_t>(wire::CommandId::AppendMaterial);
  record.index = material.index;
  std::copy_n(material.ambientColor, 3, record.ambientColor);
  std::copy_n(material.diffuseColor, 3, record.diffuseColor);
  std::copy_n(material.specularColor, 3, record.specularColor);
  record.diffuse = material.diffuse;
  record.specular = material.specular;
  record.reflection = material.reflection;
  record.reflectionBlur = Flag(material.reflectionBlur);
  record.refraction = material.refraction;
  record.refractionBlur = Flag(material.refractionBlur);
  record.opacity = material.opacity;
  record.hasTexture = Flag(material.hasTexture);
  record.textureWidth = material.texture.width;
  record.textureHeight = material.texture.height;
  record.textureSize = material.texture.size;
  record.bumpDepth = material.bumpDepth;
  record.lightPower = material.lightPower;
  record.hidden = Flag(material.hidden);
  record.key = material.key;
  return record;
}

wire::AppendPBRMaterial PbrRecord(const PbrMaterialRecord& material) {
  wire::AppendPBRMaterial record{};
  record.id = static_cast<std::uint32_t>(wire::CommandId::AppendPBRMaterial);
  record.index = material.index;
  std::copy_n(material.baseColor, 3, record.baseColor);
  record.hasBaseTexture = Flag(material.hasBaseTexture);
  record.baseWidth = material.baseTexture.width;
  record.baseHeight = material.baseTexture.height;
  record.baseSize = material.baseTexture.size;
  record.metallic = material.metallic;
  record.hasMetallicTexture = Flag(material.hasMetallicTexture);
  FillChannel(record.metallicTexture, material.metallicTexture);
  record.roughness = material.roughness;
  record.hasRoughnessTexture = Flag(material.hasRoughnessTexture);
  FillChannel(record.roughnessTexture, material.roughnessTexture);
  record.normalScale = material.normalScale;
  record.hasNormalTexture = Flag(material.hasNormalTexture);
  FillChannel(record.normalTexture, material.normalTexture);
  record.transparency = material.transparency;
  record.refraction = material.refraction;
  record.lightPower = material.lightPower;
  record.hidden = Flag(material.hidden);
  record.key = material.key;
  return record;
}

// What has no place cannot be shown; the log tells what is missing.
bool HasPlace(const char* command, std::uint64_t id, const float* values, std::size_t count) {
  if (AllFinite(values, count)) return true;
  LogLine("%s: %llu left out, its place is no number", command,
          static_cast<unsigned long long>(id));
  return false;
}

}  // namespace

void IpcInterface::AppendMaterial(const ClassicMaterialRecord& material) {
  wire::AppendMaterial record = ClassicRecord(material);
  CommandMessage message(record);
  message.Text(record.textureNameOffset, material.textureName)
      .Text(record.nameOffset, material.name)
      .Text(record.materialTypeOffset, material.materialType)
      .Blob(record.textureOffset, material.texture.size, material.texture.bytes);
  const SceneDigest::Material digest{record, material};
  Send(message, {true, true, true, SceneDigest::OfMaterial, &digest});
}

void IpcInterface::AppendPBRMaterial(const PbrMaterialRecord& material) {
  wire::AppendPBRMaterial record = PbrRecord(material);
  CommandMessage message(record);
  message.Text(record.nameOffset, material.name)
      .Text(record.materialTypeOffset, material.materialType)
      .Blob(record.baseOffset, material.baseTexture.size, material.baseTexture.bytes)
      .Blob(record.metallicTexture.offset, material.metallicTexture.size,
            material.metallicTexture.bytes)
      .Blob(record.roughnessTexture.offset, material.roughnessTexture.size,
            material.roughnessTexture.bytes)
      .Blob(record.normalTexture.offset, material.normalTexture.size, material.normalTexture.bytes);
  const SceneDigest::PbrMaterial digest{record, material};
  Send(message, {true, true, true, SceneDigest::OfPbrMaterial, &digest});
}

void IpcInterface::AppendOmniLight(const float color[3], const float position[4]) {
  if (!HasPlace("AppendOmniLight", 0, position, 3) || !HasPlace("AppendOmniLight", 0, color, 3)) {
    return;
  }
  wire::AppendOmniLight record{};
  record.id = static_cast<std::uint32_t>(wire::CommandId::AppendOmniLight);
  std::copy_n(color, 3, record.color);
  std::copy_n(position, 3, record.position);
  Send(CommandMessage(record), {false, true, false, SceneDigest::OfOmniLight, &record});
}

void IpcInterface::AppendSpotLight(const float color[3], const float position[4],
                                   const float direction[3], float beamAngle, float wideBeamAngle) {
  if (!HasPlace("AppendSpotLight", 0, position, 3) || !HasPlace("AppendSpotLight", 0, color, 3) ||
      !HasPlace("AppendSpotLight", 0, direction, 3)) {
    return;
  }
  wire::AppendSpotLight record{};
  record.id = static_cast<std::uint32_t>(wire::CommandId::AppendSpotLight);
  std::copy_n(color, 3, record.color);
  std::copy_n(position, 3, record.position);
  std::copy_n(direction, 3, record.direction);
  record.beamAngle = beamAngle;
  record.wideBeamAngle = wideBeamAngle;
  Send(CommandMessage(record), {false, true, false, SceneDigest::OfSpotLight, &record});
}

bool IpcInterface::AppendMesh(std::uint64_t meshId, const float transform[16],
                              std::uint32_t vertexCount, const float* vertices,
                              std::uint32_t triangleCount, const std::uint32_t* triangles,
                              std::uint8_t pass, bool manifold, std::uint64_t cacheKey) {
  if (!HasPlace("AppendMesh", meshId, transform, 16)) return false;
  const SceneDigest::Block vertexBlock{vertices,
                                       sizeof(wire::MeshVertex) * std::uint64_t{vertexCount}};
  const SceneDigest::Block triangleBlock{
      triangles, sizeof(wire::TriangleRecord) * std::uint64_t{triangleCount}};
  const std::uint64_t bytes = sizeof(wire::AppendMesh) + vertexBlock.size + triangleBlock.size;
  if (bytes >= kMeshBytesLimit) {
    LogLine("AppendMesh: mesh %llu left out, its %llu bytes do not fit one command",
            static_cast<unsigned long long>(meshId), static_cast<unsigned long long>(bytes));
    return false;
  }
  wire::AppendMesh record{};
  record.id = static_cast<std::uint32_t>(wire::CommandId::AppendMesh);
  record.meshId = meshId;
  std::copy_n(transform, 16, record.transform);
  record.vertexCount = vertexCount;
  record.triangleCount = triangleCount;
  record.pass = pass;
  record.manifold = Flag(manifold);
  record.cacheKey = cacheKey;
  CommandMessage message(record);
  message.Blob(record.vertexOffset, vertexBlock.size, vertices)
      .Blob(record.triangleOffset, triangleBlock.size, triangles);
  const SceneDigest::Mesh digest{record, vertexBlock, triangleBlock};
  return Send(message, {true, true, true, SceneDigest::OfMesh, &digest});
}

bool IpcInterface::InstanciateMesh(std::uint64_t meshId, const float transform[16],
                                   std::uint64_t cacheKey) {
  if (!HasPlace("InstanciateMesh", cacheKey, transform, 16)) return false;
  wire::InstanciateMesh record{};
  record.id = static_cast<std::uint32_t>(wire::CommandId::InstanciateMesh);
  record.meshId = meshId;
  std::copy_n(transform, 16, record.transform);
  record.cacheKey = cacheKey;
  return Send(CommandMessage(record), {false, true, false, SceneDigest::OfInstance, &record});
}

void IpcInterface::InstanciateMeshBatch(const std::vector<std::uint64_t>& ownerIds) {
  if (ownerIds.empty()) return;
  wire::ListHeader record{static_cast<std::uint32_t>(wire::CommandId::InstanciateMeshBatch),
                          static_cast<std::uint32_t>(ownerIds.size()), 0};
  CommandMessage message(record);
  message.Blob(record.listOffset, ownerIds.size() * sizeof(std::uint64_t), ownerIds.data());
  Send(message, {true, true, false, SceneDigest::OfOwners, &ownerIds});
}

void IpcInterface::AppendCachedMaterials(
    const std::vector<wire::CachedMaterialReference>& references) {
  if (references.empty()) return;
  wire::ListHeader record{static_cast<std::uint32_t>(wire::CommandId::AppendCachedMaterials),
                          static_cast<std::uint32_t>(references.size()), 0};
  CommandMessage message(record);
  message.Blob(record.listOffset, references.size() * sizeof(wire::CachedMaterialReference),
               references.data());
  Send(message, {true, true, false, SceneDigest::OfCachedMaterials, &references});
}

void IpcInterface::UpdateInstanceTransform(std::uint64_t ownerId, const float transform[16]) {
  if (!HasPlace("UpdateInstanceTransform", ownerId, transform, 16)) return;
  wire::UpdateInstanceTransform record{};
  record.id = static_cast<std::uint32_t>(wire::CommandId::UpdateInstanceTransform);
  record.ownerId = ownerId;
  std::copy_n(transform, 16, record.transform);
  Send(CommandMessage(record), {});
}

}  // namespace quellix
