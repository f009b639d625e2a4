#include "link/SceneDigest.h"

#include "link/IpcDigest.h"

namespace quellix {

namespace {

DigestEntries One(wire::CommandId id, const Fnv1a& hash) {
  return {id, {hash.Value()}};
}

// The bytes of a record from the end of the command id to the end of `lastField`.
template <class Record, class Field>
void AddFields(Fnv1a& hash, const Record& record, const Field& lastField) {
  const auto* start = reinterpret_cast<const unsigned char*>(&record) + sizeof record.id;
  const auto* end = reinterpret_cast<const unsigned char*>(&lastField) + sizeof lastField;
  hash.Add(start, static_cast<std::size_t>(end - start));
}

void AddChannel(Fnv1a& hash, float scalar, std::uint8_t hasTexture,
                const wire::ChannelTexture& texture) {
  hash.AddValue(scalar);
  hash.AddValue(hasTexture);
  hash.AddValue(texture.width);
  hash.AddValue(texture.height);
  hash.AddValue(texture.bitsPerPixel);
  hash.AddValue(texture.stride);
}

void AddPixels(Fnv1a& hash, const TexturePixels& pixels) {
  hash.AddSized(pixels.bytes, pixels.size);
}

}  // namespace

DigestEntries SceneDigest::OfMaterial(const void* material) {
  const auto& [record, values] = *static_cast<const Material*>(material);
  Fnv1a hash;
  AddFields(hash, record, record.hasTexture);
  hash.AddValue(record.textureWidth);
  hash.AddValue(record.textureHeight);
  hash.AddValue(record.bumpDepth);
  hash.AddValue(record.lightPower);
  hash.AddValue(record.hidden);
  hash.AddValue(record.key);
  hash.AddText(values.name);
  hash.AddText(values.materialType);
  AddPixels(hash, values.texture);
  return One(wire::CommandId::AppendMaterial, hash);
}

DigestEntries SceneDigest::OfPbrMaterial(const void* material) {
  const auto& [record, values] = *static_cast<const PbrMaterial*>(material);
  Fnv1a hash;
  AddFields(hash, record, record.hasBaseTexture);
  hash.AddValue(record.baseWidth);
  hash.AddValue(record.baseHeight);
  AddChannel(hash, record.metallic, record.hasMetallicTexture, record.metallicTexture);
  AddChannel(hash, record.roughness, record.hasRoughnessTexture, record.roughnessTexture);
  AddChannel(hash, record.normalScale, record.hasNormalTexture, record.normalTexture);
  hash.AddValue(record.transparency);
  hash.AddValue(record.refraction);
  hash.AddValue(record.lightPower);
  hash.AddValue(record.hidden);
  hash.AddValue(record.key);
  hash.AddText(values.name);
  hash.AddText(values.materialType);
  AddPixels(hash, values.baseTexture);
  AddPixels(hash, values.metallicTexture);
  AddPixels(hash, values.roughnessTexture);
  AddPixels(hash, values.normalTexture);
  return One(wire::CommandId::AppendPBRMaterial, hash);
}

DigestEntries SceneDigest::OfOmniLight(const void* record) {
  const auto& light = *static_cast<const wire::AppendOmniLight*>(record);
  Fnv1a hash;
  AddFields(hash, light, light.position);
  return One(wire::CommandId::AppendOmniLight, hash);
}

DigestEntries SceneDigest::OfSpotLight(const void* record) {
  const auto& light = *static_cast<const wire::AppendSpotLight*>(record);
  Fnv1a hash;
  AddFields(hash, light, light.wideBeamAngle);
  return One(wire::CommandId::AppendSpotLight, hash);
}

DigestEntries SceneDigest::OfMesh(const void* mesh) {
  const auto& [record, vertices, triangles] = *static_cast<const Mesh*>(mesh);
  Fnv1a hash;
  hash.AddValue(record.transform);
  hash.AddValue(record.vertexCount);
  hash.AddSized(vertices.bytes, vertices.size);
  hash.AddValue(record.triangleCount);
  hash.AddSized(triangles.bytes, triangles.size);
  hash.AddValue(record.pass);
  hash.AddValue(record.cacheKey);
  return One(wire::CommandId::AppendMesh, hash);
}

DigestEntries SceneDigest::OfInstance(const void* record) {
  const auto& instance = *static_cast<const wire::InstanciateMesh*>(record);
  Fnv1a hash;
  hash.AddValue(instance.transform);
  hash.AddValue(instance.cacheKey);
  return One(wire::CommandId::InstanciateMesh, hash);
}

// A cached owner counts as an element of its own, under the id that the catalogue keeps for it.
DigestEntries SceneDigest::OfOwners(const void* ownerIds) {
  DigestEntries entries{wire::CommandId::InstanciateMesh2, {}};
  for (const std::uint64_t owner : *static_cast<const std::vector<std::uint64_t>*>(ownerIds)) {
    Fnv1a hash;
    hash.AddValue(owner);
    entries.hashes.push_back(hash.Value());
  }
  return entries;
}

DigestEntries SceneDigest::OfCachedMaterials(const void* references) {
  const auto& list = *static_cast<const std::vector<wire::CachedMaterialReference>*>(references);
  DigestEntries entries{wire::CommandId::AppendCachedMaterials, {}};
  for (const wire::CachedMaterialReference& reference : list) {
    Fnv1a hash;
    hash.AddValue(reference);
    entries.hashes.push_back(hash.Value());
  }
  return entries;
}

}  // namespace quellix
