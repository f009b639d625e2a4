#include "app/MessageDigest.h"

#include <cstddef>
#include <cstring>

#include "app/Fnv.h"

namespace kvapp {

namespace wire = quellix::wire;

namespace {

using Bytes = std::span<const std::byte>;

template <class Record>
Record ReadRecord(Bytes segment) {
  Record record;
  std::memcpy(&record, segment.data(), sizeof record);
  return record;
}

Bytes TextBytes(const std::string& text) {
  return std::as_bytes(std::span(text));
}

Bytes Part(Bytes segment, std::uint64_t offset, std::uint64_t size) {
  return segment.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
}

void AddClassic(Fnv& hash, const Material& material, Bytes segment) {
  const auto record = ReadRecord<wire::AppendMaterial>(segment);
  constexpr std::size_t kFirst = offsetof(wire::AppendMaterial, index);
  hash.Add(segment.subspan(kFirst, offsetof(wire::AppendMaterial, hasTexture) + 1 - kFirst));
  hash.AddValue(record.textureWidth);
  hash.AddValue(record.textureHeight);
  hash.AddValue(record.bumpDepth);
  hash.AddValue(record.lightPower);
  hash.AddValue(record.hidden);
  hash.AddValue(record.key);
  hash.AddSized(TextBytes(material.name));
  hash.AddSized(TextBytes(material.type));
  hash.AddSized(Part(segment, record.textureOffset, record.textureSize));
}

void AddChannel(Fnv& hash, float factor, std::uint8_t flag, const wire::ChannelTexture& texture) {
  hash.AddValue(factor);
  hash.AddValue(flag);
  hash.AddValue(texture.width);
  hash.AddValue(texture.height);
  hash.AddValue(texture.bitsPerPixel);
  hash.AddValue(texture.stride);
}

void AddPbr(Fnv& hash, const Material& material, Bytes segment) {
  const auto record = ReadRecord<wire::AppendPBRMaterial>(segment);
  hash.AddValue(record.index);
  hash.AddValue(record.baseColor);
  hash.AddValue(record.hasBaseTexture);
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
  hash.AddSized(TextBytes(material.name));
  hash.AddSized(TextBytes(material.type));
  hash.AddSized(Part(segment, record.baseOffset, record.baseSize));
  for (const wire::ChannelTexture* texture :
       {&record.metallicTexture, &record.roughnessTexture, &record.normalTexture}) {
    hash.AddSized(Part(segment, texture->offset, texture->size));
  }
}

void AddMesh(Fnv& hash, Bytes segment) {
  const auto record = ReadRecord<wire::AppendMesh>(segment);
  hash.AddValue(record.transform);
  hash.AddValue(record.vertexCount);
  hash.AddSized(Part(segment, record.vertexOffset, std::uint64_t{record.vertexCount} * 40));
  hash.AddValue(record.triangleCount);
  hash.AddSized(Part(segment, record.triangleOffset, std::uint64_t{record.triangleCount} * 20));
  hash.AddValue(record.pass);
  hash.AddValue(record.cacheKey);
}

MessageDigest DigestOfList(Bytes segment, std::size_t elementBytes, const char* slot) {
  const auto header = ReadRecord<wire::ListHeader>(segment);
  MessageDigest digest{0, header.count, slot};
  for (std::uint32_t i = 0; i < header.count; ++i) {
    Fnv hash;
    hash.Add(segment.subspan(header.listOffset + i * elementBytes, elementBytes));
    digest.value ^= hash.Value();
  }
  return digest;
}

// Control commands: the bytes after the id, up to the pads, or the text.
void AddControl(Fnv& hash, const Decoded& decoded, Bytes segment) {
  std::size_t end = decoded.recordBytes;
  if (const auto* name = std::get_if<command::SetModelName>(&decoded.command)) {
    return hash.AddSized(TextBytes(name->name));
  }
  if (const auto* message = std::get_if<command::SetMessage>(&decoded.command)) {
    return hash.AddSized(TextBytes(message->text));
  }
  if (std::holds_alternative<command::PrepareRendering>(decoded.command) ||
      std::holds_alternative<command::SetLinkCamera>(decoded.command)) {
    end = 5;
  }
  constexpr std::size_t kFlag = offsetof(wire::SetCamera, withProgress);
  if (std::holds_alternative<command::SetCamera>(decoded.command)) end = kFlag + 1;
  if (std::holds_alternative<command::SetCameraAndBackgroundSettings>(decoded.command)) {
    hash.Add(segment.subspan(4, kFlag + 1 - 4));
    hash.Add(segment.subspan(sizeof(wire::SetCamera), sizeof(wire::SetBackgroundSettings)));
    return;
  }
  hash.Add(segment.subspan(4, end - 4));
}

}  // namespace

MessageDigest DigestOf(const Decoded& decoded, Bytes segment) {
  Fnv hash;
  std::string slot = wire::CommandName(decoded.id);
  switch (static_cast<wire::CommandId>(decoded.id)) {
    case wire::CommandId::AppendMaterial:
      AddClassic(hash, std::get<command::AppendMaterial>(decoded.command).material, segment);
      break;
    case wire::CommandId::AppendPBRMaterial:
      AddPbr(hash, std::get<command::AppendMaterial>(decoded.command).material, segment);
      break;
    case wire::CommandId::AppendOmniLight:
      hash.Add(segment.subspan(4, sizeof(wire::AppendOmniLight) - 4));
      break;
    case wire::CommandId::AppendSpotLight:
      hash.Add(segment.subspan(4, sizeof(wire::AppendSpotLight) - 4));
      break;
    case wire::CommandId::AppendMesh:
      AddMesh(hash, segment);
      break;
    case wire::CommandId::InstanciateMesh:
      hash.Add(segment.subspan(
          offsetof(wire::InstanciateMesh, transform),
          sizeof(wire::InstanciateMesh) - offsetof(wire::InstanciateMesh, transform)));
      break;
    case wire::CommandId::InstanciateMeshBatch:
      return DigestOfList(
          segment, 8,
          wire::CommandName(static_cast<std::uint32_t>(wire::CommandId::InstanciateMesh2)));
    case wire::CommandId::AppendCachedMaterials:
      return DigestOfList(segment, sizeof(wire::CachedMaterialReference), slot.c_str());
    default:
      AddControl(hash, decoded, segment);
      slot.clear();
      break;
  }
  return {hash.Value(), 1, slot};
}

}  // namespace kvapp
