#pragma once

// The layout of everything that crosses between the plug-in and the renderer: object names, the
// commands' fixed records, the header and the bodies of requests, and the shared state of an event.
// All integers are little-endian. An offset is a byte offset from the start of its segment. Bytes
// named `pad` are unspecified: a writer may leave them as they are and a reader ignores them.
// Nothing here has behaviour; both ends include this one header.

#include <cstddef>
#include <cstdint>

#include <boost/interprocess/sync/interprocess_condition.hpp>
#include <boost/interprocess/sync/interprocess_mutex.hpp>

namespace quellix::wire {

inline constexpr char kToAppSegment[] = "Qlx_Mem_ToApp";
inline constexpr char kToPluginSegment[] = "Qlx_Mem_ToPlugin";
inline constexpr char kCommandReady[] = "Qlx_Lock_ToApp1";
inline constexpr char kCommandDone[] = "Qlx_Lock_ToApp2";
inline constexpr char kSegmentReplaced[] = "Qlx_Lock_ToApp3";
inline constexpr char kRequestReady[] = "Qlx_Lock_ToPlugin1";
inline constexpr char kRequestDone[] = "Qlx_Lock_ToPlugin2";

// An event lives in a managed segment of its own, named event name + suffix, as one named object.
inline constexpr char kEventSegmentSuffix[] = "_seg";
inline constexpr char kEventStateObject[] = "state";
inline constexpr std::size_t kEventSegmentBytes = 65536;

struct EventState {
  boost::interprocess::interprocess_mutex mutex;
  boost::interprocess::interprocess_condition condition;
  std::uint32_t signaled;
};

enum class CommandId : std::uint32_t {
  None = 0,
  PrepareRendering = 1,
  CloseApp = 2,
  SetCamera = 3,
  AppendMaterial = 4,
  AppendPBRMaterial = 5,
  AppendOmniLight = 6,
  AppendSpotLight = 7,
  AppendDirectionalLight = 8,
  AppendLEMLight = 9,
  AppendMesh = 10,
  IsCached = 11,
  InstanciateMesh2 = 12,
  InstanciateMesh = 13,
  SetModelName = 14,
  SetBackgroundSettings = 15,
  SetMessage = 16,
  SetProgress = 17,
  GetLinkCamera = 18,
  ReloadFromPlugin = 19,
  ClearModelDataForReload = 20,
  MemoryDestroyed = 21,
  InstanciateMeshBatch = 22,
  AppendCachedMaterials = 23,
  UpdateInstanceTransform = 24,
  SetCameraAndBackgroundSettings = 25,
  SetLinkCamera = 26,
};

inline constexpr std::uint32_t kLastCommandId = 26;

// The text of a command id in logs and digests; "?" for an id outside the catalogue.
constexpr const char* CommandName(std::uint32_t id) {
  constexpr const char* names[] = {"?",
                                   "PrepareRendering",
                                   "CloseApp",
                                   "DoRendering(SetCamera)",
                                   "AppendMaterial",
                                   "AppendPBRMaterial",
                                   "AppendOmniLight",
                                   "AppendSpotLight",
                                   "AppendDirectionalLight",
                                   "AppendLEMLight",
                                   "AppendMesh",
                                   "IsCached",
                                   "InstanciateMesh2(cache)",
                                   "InstanciateMesh",
                                   "SetModelName",
                                   "SetBackgroundSettings",
                                   "SetMessage",
                                   "SetProgress",
                                   "GetLinkCamera",
                                   "ReloadFromPlugin",
                                   "ClearModelDataForReload",
                                   "MemoryDestroyed",
                                   "InstanciateMeshBatch",
                                   "AppendCachedMaterials",
                                   "UpdateInstanceTransform",
                                   "SetCameraAndBackgroundSettings",
                                   "SetLinkCamera"};
  return id <= kLastCommandId ? names[id] : "?";
}

// Pins a record's layout: a field that moves or grows fails to compile.
#define QLX_AT(record, field, offset) static_assert(offsetof(record, field) == (offset))

struct CommandOnly {
  std::uint32_t id;
};
static_assert(sizeof(CommandOnly) == 4);

struct PrepareRendering {
  std::uint32_t id;
  std::uint8_t reload;
  std::uint8_t pad[3];
};
static_assert(sizeof(PrepareRendering) == 8);
QLX_AT(PrepareRendering, reload, 4);

struct SetCamera {
  std::uint32_t id;
  float vector1[3];
  float vector2[3];
  float vector3[3];
  float cameraScalar;
  float vector4[3];
  std::uint8_t withProgress;
  std::uint8_t pad[3];
};
static_assert(sizeof(SetCamera) == 60);
QLX_AT(SetCamera, vector1, 4);
QLX_AT(SetCamera, vector2, 16);
QLX_AT(SetCamera, vector3, 28);
QLX_AT(SetCamera, cameraScalar, 40);
QLX_AT(SetCamera, vector4, 44);
QLX_AT(SetCamera, withProgress, 56);

struct AppendMaterial {
  std::uint32_t id;
  std::uint32_t index;
  float ambientColor[3];
  float diffuseColor[3];
  float specularColor[3];
  float diffuse;
  float specular;
  float reflection;
  std::uint32_t reflectionBlur;
  float refraction;
  std::uint32_t refractionBlur;
  float opacity;
  std::uint8_t hasTexture;
  std::uint8_t pad1[3];
  std::uint32_t textureNameOffset;
  std::uint64_t textureWidth;
  std::uint64_t textureHeight;
  std::uint64_t textureSize;
  std::uint64_t textureOffset;
  float bumpDepth;
  float lightPower;
  std::uint8_t hidden;
  std::uint8_t pad2[3];
  std::uint32_t nameOffset;
  std::uint32_t materialTypeOffset;
  std::uint8_t pad3[4];
  std::uint64_t key;
};
static_assert(sizeof(AppendMaterial) == 144);
QLX_AT(AppendMaterial, index, 4);
QLX_AT(AppendMaterial, ambientColor, 8);
QLX_AT(AppendMaterial, diffuseColor, 20);
QLX_AT(AppendMaterial, specularColor, 32);
QLX_AT(AppendMaterial, diffuse, 44);
QLX_AT(AppendMaterial, specular, 48);
QLX_AT(AppendMaterial, reflection, 52);
QLX_AT(AppendMaterial, reflectionBlur, 56);
QLX_AT(AppendMaterial, refraction, 60);
QLX_AT(AppendMaterial, refractionBlur, 64);
QLX_AT(AppendMaterial, opacity, 68);
QLX_AT(AppendMaterial, hasTexture, 72);
QLX_AT(AppendMaterial, textureNameOffset, 76);
QLX_AT(AppendMaterial, textureWidth, 80);
QLX_AT(AppendMaterial, textureHeight, 88);
QLX_AT(AppendMaterial, textureSize, 96);
QLX_AT(AppendMaterial, textureOffset, 104);
QLX_AT(AppendMaterial, bumpDepth, 112);
QLX_AT(AppendMaterial, lightPower, 116);
QLX_AT(AppendMaterial, hidden, 120);
QLX_AT(AppendMaterial, nameOffset, 124);
QLX_AT(AppendMaterial, materialTypeOffset, 128);
QLX_AT(AppendMaterial, key, 136);

// One texture of a metallic-roughness material, as metallic, roughness and normal carry it.
struct ChannelTexture {
  std::uint64_t width;
  std::uint64_t height;
  std::uint64_t bitsPerPixel;
  std::uint64_t stride;
  std::uint64_t size;
  std::uint64_t offset;
};
static_assert(sizeof(ChannelTexture) == 48);

struct AppendPBRMaterial {
  std::uint32_t id;
  std::uint32_t index;
  float baseColor[3];
  std::uint8_t hasBaseTexture;
  std::uint8_t pad1[3];
  std::uint64_t baseWidth;
  std::uint64_t baseHeight;
  std::uint64_t baseSize;
  std::uint64_t baseOffset;
  float metallic;
  std::uint8_t hasMetallicTexture;
  std::uint8_t pad2[3];
  ChannelTexture metallicTexture;
  float roughness;
  std::uint8_t hasRoughnessTexture;
  std::uint8_t pad3[3];
  ChannelTexture roughnessTexture;
  float normalScale;
  std::uint8_t hasNormalTexture;
  std::uint8_t pad4[3];
  ChannelTexture normalTexture;
  float transparency;
  float refraction;
  float lightPower;
  std::uint8_t hidden;
  std::uint8_t pad5[3];
  std::uint32_t nameOffset;
  std::uint32_t materialTypeOffset;
  std::uint64_t key;
};
static_assert(sizeof(AppendPBRMaterial) == 256);
QLX_AT(AppendPBRMaterial, index, 4);
QLX_AT(AppendPBRMaterial, baseColor, 8);
QLX_AT(AppendPBRMaterial, hasBaseTexture, 20);
QLX_AT(AppendPBRMaterial, baseWidth, 24);
QLX_AT(AppendPBRMaterial, baseHeight, 32);
QLX_AT(AppendPBRMaterial, baseSize, 40);
QLX_AT(AppendPBRMaterial, baseOffset, 48);
QLX_AT(AppendPBRMaterial, metallic, 56);
QLX_AT(AppendPBRMaterial, hasMetallicTexture, 60);
QLX_AT(AppendPBRMaterial, metallicTexture, 64);
QLX_AT(AppendPBRMaterial, roughness, 112);
QLX_AT(AppendPBRMaterial, hasRoughnessTexture, 116);
QLX_AT(AppendPBRMaterial, roughnessTexture, 120);
QLX_AT(AppendPBRMaterial, normalScale, 168);
QLX_AT(AppendPBRMaterial, hasNormalTexture, 172);
QLX_AT(AppendPBRMaterial, normalTexture, 176);
QLX_AT(AppendPBRMaterial, transparency, 224);
QLX_AT(AppendPBRMaterial, refraction, 228);
QLX_AT(AppendPBRMaterial, lightPower, 232);
QLX_AT(AppendPBRMaterial, hidden, 236);
QLX_AT(AppendPBRMaterial, nameOffset, 240);
QLX_AT(AppendPBRMaterial, materialTypeOffset, 244);
QLX_AT(AppendPBRMaterial, key, 248);

struct AppendOmniLight {
  std::uint32_t id;
  float color[3];
  float position[3];
};
static_assert(sizeof(AppendOmniLight) == 28);
QLX_AT(AppendOmniLight, color, 4);
QLX_AT(AppendOmniLight, position, 16);

struct AppendSpotLight {
  std::uint32_t id;
  float color[3];
  float position[3];
  float direction[3];
  float beamAngle;
  float wideBeamAngle;
};
static_assert(sizeof(AppendSpotLight) == 48);
QLX_AT(AppendSpotLight, color, 4);
QLX_AT(AppendSpotLight, position, 16);
QLX_AT(AppendSpotLight, direction, 28);
QLX_AT(AppendSpotLight, beamAngle, 40);
QLX_AT(AppendSpotLight, wideBeamAngle, 44);

struct AppendMesh {
  std::uint32_t id;
  std::uint8_t pad1[4];
  std::uint64_t meshId;
  float transform[16];
  std::uint32_t vertexCount;
  std::uint32_t vertexOffset;
  std::uint32_t triangleCount;
  std::uint32_t triangleOffset;
  std::uint8_t pass;
  std::uint8_t manifold;
  std::uint8_t pad2[6];
  std::uint64_t cacheKey;
};
static_assert(sizeof(AppendMesh) == 112);
QLX_AT(AppendMesh, meshId, 8);
QLX_AT(AppendMesh, transform, 16);
QLX_AT(AppendMesh, vertexCount, 80);
QLX_AT(AppendMesh, vertexOffset, 84);
QLX_AT(AppendMesh, triangleCount, 88);
QLX_AT(AppendMesh, triangleOffset, 92);
QLX_AT(AppendMesh, pass, 96);
QLX_AT(AppendMesh, manifold, 97);
QLX_AT(AppendMesh, cacheKey, 104);

// One vertex of AppendMesh: transformed position and normal, texture coordinates of both sides.
struct MeshVertex {
  float position[3];
  float normal[3];
  float frontUv[2];
  float backUv[2];
};
static_assert(sizeof(MeshVertex) == 40);

// One triangle of AppendMesh: three vertex indexes, then the materials of its two sides.
struct TriangleRecord {
  std::uint32_t vertex[3];
  std::uint32_t frontMaterial;
  std::uint32_t backMaterial;
};
static_assert(sizeof(TriangleRecord) == 20);

struct InstanciateMesh {
  std::uint32_t id;
  std::uint8_t pad[4];
  std::uint64_t meshId;
  float transform[16];
  std::uint64_t cacheKey;
};
static_assert(sizeof(InstanciateMesh) == 88);
QLX_AT(InstanciateMesh, meshId, 8);
QLX_AT(InstanciateMesh, transform, 16);
QLX_AT(InstanciateMesh, cacheKey, 80);

// A counted list follows the record at once, at listOffset = 12 (so its 64-bit members are
// unaligned): owner ids of InstanciateMeshBatch, CachedMaterialReference of AppendCachedMaterials.
struct ListHeader {
  std::uint32_t id;
  std::uint32_t count;
  std::uint32_t listOffset;
};
static_assert(sizeof(ListHeader) == 12);

struct CachedMaterialReference {
  std::uint32_t index;
  float lightPower;
  std::uint64_t key;
};
static_assert(sizeof(CachedMaterialReference) == 16);
QLX_AT(CachedMaterialReference, lightPower, 4);
QLX_AT(CachedMaterialReference, key, 8);

struct UpdateInstanceTransform {
  std::uint32_t id;
  std::uint8_t pad[4];
  std::uint64_t ownerId;
  float transform[16];
};
static_assert(sizeof(UpdateInstanceTransform) == 80);
QLX_AT(UpdateInstanceTransform, ownerId, 8);
QLX_AT(UpdateInstanceTransform, transform, 16);

// SetModelName and SetMessage; the text follows at textOffset = 8.
struct TextCommand {
  std::uint32_t id;
  std::uint32_t textOffset;
};
static_assert(sizeof(TextCommand) == 8);

struct SetBackgroundSettings {
  std::uint32_t id;
  float bgFloat[3];
  std::int32_t bgInt[7];
};
static_assert(sizeof(SetBackgroundSettings) == 44);
QLX_AT(SetBackgroundSettings, bgFloat, 4);
QLX_AT(SetBackgroundSettings, bgInt, 16);

struct SetCameraAndBackgroundSettings {
  SetCamera camera;
  SetBackgroundSettings background;
};
static_assert(sizeof(SetCameraAndBackgroundSettings) == 104);
QLX_AT(SetCameraAndBackgroundSettings, background, 60);

struct SetProgress {
  std::uint32_t id;
  float progress;
};
static_assert(sizeof(SetProgress) == 8);

struct SetLinkCamera {
  std::uint32_t id;
  std::uint8_t linked;
  std::uint8_t pad[3];
};
static_assert(sizeof(SetLinkCamera) == 8);

enum class RequestCode : std::uint32_t {
  ReplyTooLarge = 101,
  Reload = 102,
  CameraChanged = 103,
  RendererQuit = 104,
  DateTimeUpdated = 105,
  GetScenes = 106,
  CameraInfo = 107,
  ShadowInfo = 108,
  ModelOutOfSync = 109,
  SaveParameters = 110,
  LoadParameters = 111,
  RemoveAttribute = 112,
  SetUsePbr = 113,
  GetUsePbr = 114,
  GetSuVersion = 115,
  SuppressAutosyncOnce = 116,
};

// The start of the ToPlugin segment; request data and answers follow from offset 24.
struct RequestHeader {
  std::uint32_t code;
  std::uint8_t pad[4];
  std::uint64_t capacity;
  std::uint64_t required;
};
static_assert(sizeof(RequestHeader) == 24);
QLX_AT(RequestHeader, capacity, 8);
QLX_AT(RequestHeader, required, 16);

// One scene of the answer to GetScenes. The name field holds at most 15 bytes and their NUL.
struct SceneRecord {
  char name[16];
  std::uint64_t nameLength;
  std::uint64_t nameCapacity;
  float values[10];
  std::uint8_t flag;
  std::uint8_t pad[3];
  std::int32_t integers[6];
  float lastValues[3];
};
static_assert(sizeof(SceneRecord) == 112);
QLX_AT(SceneRecord, nameLength, 16);
QLX_AT(SceneRecord, nameCapacity, 24);
QLX_AT(SceneRecord, values, 32);
QLX_AT(SceneRecord, flag, 72);
QLX_AT(SceneRecord, integers, 76);
QLX_AT(SceneRecord, lastValues, 100);

// Layouts of request data and of the answers that have one, all from offset 24 of the segment.
struct ScenesAnswer {
  std::uint64_t tableOffset;
  std::uint32_t count;
  std::uint8_t pad[4];
};
static_assert(sizeof(ScenesAnswer) == 16);

struct ShadowInfoAnswer {
  float values[3];
  std::int32_t integers[7];
};
static_assert(sizeof(ShadowInfoAnswer) == 40);

struct SaveParametersRequest {
  std::uint64_t nameOffset;
  std::uint64_t dataOffset;
  std::uint32_t byteCount;
  std::uint8_t pad[4];
};
QLX_AT(SaveParametersRequest, byteCount, 16);

struct LoadParametersAnswer {
  std::uint64_t dataOffset;
  std::uint64_t byteCount;
};
static_assert(sizeof(LoadParametersAnswer) == 16);

#undef QLX_AT

}  // namespace quellix::wire
