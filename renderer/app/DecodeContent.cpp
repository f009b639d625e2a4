#include "app/DecodeContent.h"

#include <algorithm>
#include <utility>

namespace kvapp {

namespace wire = quellix::wire;

namespace {

// Far above what a host can hold, and small enough that sizes cannot overflow 64 bits.
constexpr std::uint64_t kLargestSide = 1u << 20;

std::uint64_t PixelBytes(std::uint64_t width, std::uint64_t height) {
  return width > kLargestSide || height > kLargestSide ? ~0ull : width * height * 4;
}

Vector3 ToVector(const float (&values)[3]) {
  return {values[0], values[1], values[2]};
}

// A placement: finite, affine. Column-major, so the last row is elements 3, 7, 11 and 15.
Matrix ReadTransform(MessageReader& reader, const float (&values)[16]) {
  reader.Finite("transform", values);
  if (values[3] != 0 || values[7] != 0 || values[11] != 0 || values[15] != 1) {
    reader.Problem("the last row of transform is " + std::to_string(values[3]) + " " +
                   std::to_string(values[7]) + " " + std::to_string(values[11]) + " " +
                   std::to_string(values[15]) + ", wanted 0 0 0 1");
  }
  Matrix matrix;
  std::copy(std::begin(values), std::end(values), matrix.begin());
  return matrix;
}

struct TextureFields {
  const char* name;
  bool present;
  std::uint64_t width;
  std::uint64_t height;
  std::uint64_t size;
  std::uint64_t offset;
};

Texture ReadTexture(MessageReader& reader, const TextureFields& fields,
                    const DecodeOptions& options) {
  const std::string name = fields.name;
  if (!fields.present && (fields.width | fields.height | fields.size) != 0) {
    reader.Problem("absent " + name + " is " + std::to_string(fields.width) + " x " +
                   std::to_string(fields.height) + " with " + std::to_string(fields.size) +
                   " bytes, wanted zeros");
  }
  if (fields.size != PixelBytes(fields.width, fields.height)) {
    reader.Problem(name + " of " + std::to_string(fields.width) + " x " +
                   std::to_string(fields.height) + " pixels has " + std::to_string(fields.size) +
                   " bytes, wanted 4 a pixel");
  }
  const auto block = reader.Block(fields.name, fields.offset, fields.size);
  Texture texture;
  texture.present = fields.present;
  texture.width = static_cast<std::uint32_t>(std::min(fields.width, kLargestSide));
  texture.height = static_cast<std::uint32_t>(std::min(fields.height, kLargestSide));
  if (!options.headersOnly && !block.empty()) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(block.data());
    texture.pixels =
        std::make_shared<const std::vector<std::uint8_t>>(first, first + block.size());
  }
  return texture;
}

Texture ReadChannel(MessageReader& reader, const char* name, std::uint8_t flag,
                    const wire::ChannelTexture& fields, const DecodeOptions& options) {
  const bool present = reader.Flag((std::string("flag of ") + name).c_str(), flag);
  const std::uint64_t wantedBits = present ? 32 : 0;
  if (fields.bitsPerPixel != wantedBits) {
    reader.Wrong((std::string("bits per pixel of ") + name).c_str(), fields.bitsPerPixel,
                 wantedBits);
  }
  if (fields.width <= kLargestSide && fields.stride != fields.width * 4) {
    reader.Wrong((std::string("stride of ") + name).c_str(), fields.stride, fields.width * 4);
  }
  return ReadTexture(
      reader, {name, present, fields.width, fields.height, fields.size, fields.offset}, options);
}

void CheckTriangles(MessageReader& reader, const Geometry& geometry) {
  std::uint32_t highest = 0;
  for (const wire::TriangleRecord& triangle : geometry.Triangles()) {
    highest = std::max({highest, triangle.vertex[0], triangle.vertex[1], triangle.vertex[2]});
  }
  if (geometry.triangleCount > 0 && highest >= geometry.vertexCount) {
    reader.Problem("a triangle names vertex " + std::to_string(highest) + ", wanted one below " +
                   std::to_string(geometry.vertexCount));
  }
}

void CheckVertices(MessageReader& reader, const Geometry& geometry) {
  constexpr std::size_t kFloats = sizeof(wire::MeshVertex) / sizeof(float);
  const auto* first = reinterpret_cast<const float*>(geometry.vertexData.get());
  const std::size_t count = geometry.vertexCount * kFloats;
  if (AllFinite(first, count)) return;
  const float* bad =
      std::find_if(first, first + count, [](float value) { return !AllFinite(&value, 1); });
  const auto at = static_cast<std::size_t>(bad - first);
  reader.Problem("float " + std::to_string(at % kFloats) + " of vertex " +
                 std::to_string(at / kFloats) + " is " + std::to_string(*bad) +
                 ", wanted a finite number");
}

template <class Element>
std::vector<Element> ReadList(MessageReader& reader) {
  wire::ListHeader header;
  if (!reader.ReadRecord(header)) return {};
  if (header.count == 0) reader.Problem("the list is empty, wanted no command for an empty list");
  const auto block =
      reader.Block("list", header.listOffset, std::uint64_t{header.count} * sizeof(Element));
  std::vector<Element> elements(block.size() / sizeof(Element));
  if (!elements.empty()) std::memcpy(elements.data(), block.data(), block.size());
  return elements;
}

}  // namespace

Command DecodeClassicMaterial(MessageReader& reader, const DecodeOptions& options) {
  wire::AppendMaterial record;
  if (!reader.ReadRecord(record)) return {};
  Material material;
  material.index = record.index;
  material.key = record.key;
  material.refraction = record.refraction;
  material.lightPower = record.lightPower;
  material.hidden = reader.Flag("hidden", record.hidden);
  ClassicFields& classic = material.classic;
  classic.ambientColor = ToVector(record.ambientColor);
  classic.diffuseColor = ToVector(record.diffuseColor);
  classic.specularColor = ToVector(record.specularColor);
  classic.diffuse = record.diffuse;
  classic.specular = record.specular;
  classic.reflection = record.reflection;
  classic.reflectionBlur = reader.Flag("reflectionBlur", record.reflectionBlur);
  classic.refractionBlur = reader.Flag("refractionBlur", record.refractionBlur);
  classic.opacity = record.opacity;
  classic.bumpDepth = record.bumpDepth;
  const bool textured = reader.Flag("hasTexture", record.hasTexture);
  reader.Finite("ambientColor", record.ambientColor);
  reader.Finite("diffuseColor", record.diffuseColor);
  reader.Finite("specularColor", record.specularColor);
  const float scalars[] = {record.diffuse, record.specular,  record.reflection, record.refraction,
                           record.opacity, record.bumpDepth, record.lightPower};
  reader.Finite("diffuse, specular, reflection, refraction, opacity, bumpDepth, lightPower",
                scalars);
  classic.textureName = reader.Text("textureName", record.textureNameOffset);
  material.name = reader.Text("name", record.nameOffset);
  material.type = reader.Text("materialType", record.materialTypeOffset);
  if (reader.InOrder() && textured == classic.textureName.empty()) {
    reader.Problem(textured ? "hasTexture is 1 with an empty textureName, wanted a name"
                            : "hasTexture is 0 with textureName \"" + classic.textureName +
                                  "\", wanted none");
  }
  material.colorTexture =
      ReadTexture(reader,
                  {"texture", textured, record.textureWidth, record.textureHeight,
                   record.textureSize, record.textureOffset},
                  options);
  return command::AppendMaterial{std::move(material)};
}

Command DecodePbrMaterial(MessageReader& reader, const DecodeOptions& options) {
  wire::AppendPBRMaterial record;
  if (!reader.ReadRecord(record)) return {};
  Material material;
  material.isPbr = true;
  material.index = record.index;
  material.key = record.key;
  material.refraction = record.refraction;
  material.lightPower = record.lightPower;
  material.hidden = reader.Flag("hidden", record.hidden);
  PbrFields& pbr = material.pbr;
  pbr.baseColor = ToVector(record.baseColor);
  pbr.metallic = record.metallic;
  pbr.roughness = record.roughness;
  pbr.normalScale = record.normalScale;
  pbr.transparency = record.transparency;
  reader.Finite("baseColor", record.baseColor);
  const float scalars[] = {record.metallic,     record.roughness,  record.normalScale,
                           record.transparency, record.refraction, record.lightPower};
  reader.Finite("metallic, roughness, normalScale, transparency, refraction, lightPower", scalars);
  material.name = reader.Text("name", record.nameOffset);
  material.type = reader.Text("materialType", record.materialTypeOffset);
  const bool hasBase = reader.Flag("flag of base texture", record.hasBaseTexture);
  material.colorTexture = ReadTexture(reader,
                                      {"base texture", hasBase, record.baseWidth, record.baseHeight,
                                       record.baseSize, record.baseOffset},
                                      options);
  pbr.metallicTexture = ReadChannel(reader, "metallic texture", record.hasMetallicTexture,
                                    record.metallicTexture, options);
  pbr.roughnessTexture = ReadChannel(reader, "roughness texture", record.hasRoughnessTexture,
                                     record.roughnessTexture, options);
  pbr.normalTexture =
      ReadChannel(reader, "normal texture", record.hasNormalTexture, record.normalTexture, options);
  return command::AppendMaterial{std::move(material)};
}

Command DecodeOmniLight(MessageReader& reader) {
  wire::AppendOmniLight record;
  if (!reader.ReadRecord(record)) return {};
  reader.Finite("color", record.color);
  reader.Finite("position", record.position);
  Light light;
  light.color = ToVector(record.color);
  light.position = ToVector(record.position);
  return command::AppendLight{light};
}

Command DecodeSpotLight(MessageReader& reader) {
  wire::AppendSpotLight record;
  if (!reader.ReadRecord(record)) return {};
  reader.Finite("color", record.color);
  reader.Finite("position", record.position);
  reader.Finite("direction", record.direction);
  const float angles[] = {record.beamAngle, record.wideBeamAngle};
  reader.Finite("beam angles", angles);
  return command::AppendLight{Light{true, ToVector(record.color), ToVector(record.position),
                                    ToVector(record.direction), record.beamAngle,
                                    record.wideBeamAngle}};
}

Command DecodeMesh(MessageReader& reader, const DecodeOptions& options) {
  wire::AppendMesh record;
  if (!reader.ReadRecord(record)) return {};
  command::AppendMesh mesh;
  mesh.meshId = record.meshId;
  mesh.transform = ReadTransform(reader, record.transform);
  mesh.pass = record.pass;
  mesh.manifold = reader.Flag("manifold", record.manifold);
  mesh.cacheKey = record.cacheKey;
  reader.Flag("pass", record.pass);
  if (record.pass == 1 && (record.meshId >> 63) == 0) {
    reader.Problem("meshId of a camera-facing mesh is " + std::to_string(record.meshId) +
                   ", wanted its top bit set");
  }
  if (record.vertexCount == 0 || record.triangleCount == 0) {
    reader.Problem("the mesh has " + std::to_string(record.vertexCount) + " vertices and " +
                   std::to_string(record.triangleCount) + " triangles, wanted no empty mesh");
  }
  Geometry& geometry = mesh.geometry;
  geometry.vertexCount = record.vertexCount;
  geometry.triangleCount = record.triangleCount;
  const auto vertices =
      reader.Block("vertices", record.vertexOffset, std::uint64_t{record.vertexCount} * 40);
  const auto triangles =
      reader.Block("triangles", record.triangleOffset, std::uint64_t{record.triangleCount} * 20);
  if (options.headersOnly || !reader.InOrder()) return mesh;
  geometry.vertexData = std::make_unique_for_overwrite<wire::MeshVertex[]>(record.vertexCount);
  geometry.triangleData =
      std::make_unique_for_overwrite<wire::TriangleRecord[]>(record.triangleCount);
  if (!vertices.empty()) std::memcpy(geometry.vertexData.get(), vertices.data(), vertices.size());
  if (!triangles.empty()) {
    std::memcpy(geometry.triangleData.get(), triangles.data(), triangles.size());
  }
  CheckVertices(reader, geometry);
  CheckTriangles(reader, geometry);
  return mesh;
}

Command DecodeInstance(MessageReader& reader) {
  wire::InstanciateMesh record;
  if (!reader.ReadRecord(record)) return {};
  return command::InstanciateMesh{record.meshId, ReadTransform(reader, record.transform),
                                  record.cacheKey};
}

Command DecodeOwnerList(MessageReader& reader) {
  return command::InstanciateMeshBatch{ReadList<std::uint64_t>(reader)};
}

Command DecodeMaterialReferences(MessageReader& reader) {
  command::AppendCachedMaterials command{ReadList<wire::CachedMaterialReference>(reader)};
  for (const wire::CachedMaterialReference& reference : command.references) {
    reader.Finite("lightPower of a reference", std::span(&reference.lightPower, 1));
  }
  return command;
}

Command DecodeTransformUpdate(MessageReader& reader) {
  wire::UpdateInstanceTransform record;
  if (!reader.ReadRecord(record)) return {};
  return command::UpdateInstanceTransform{record.ownerId, ReadTransform(reader, record.transform)};
}

}  // namespace kvapp
