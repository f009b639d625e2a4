#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Bytes.h"
#include "app/CommandLog.h"
#include "app/Decoder.h"
#include "app/Fnv.h"
#include "app/MessageDigest.h"

namespace kvapp::test {

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Decodes from a buffer of exactly the size of the bytes, so that the address sanitizer sees any
// read beyond.
Decoded DecodeExactly(std::span<const std::byte> bytes) {
  const auto copy = std::make_unique<std::byte[]>(bytes.size());
  if (!bytes.empty()) std::memcpy(copy.get(), bytes.data(), bytes.size());
  return Decode({copy.get(), bytes.size()});
}

struct Sound {
  const char* name;
  Bytes bytes;
  std::uint32_t record;
  std::uint64_t message;
  const char* fields;  // some of them, as they must read
};

std::vector<Sound> SoundMessages() {
  return {
      {"PrepareRendering", Bytes(8).U32(0, 1).U8(4, 1).U8(5, 0xee), 8, 8, R"({"reload":true})"},
      {"CloseApp", BareCommand(2), 4, 4, "{}"},
      {"SetCamera", Camera(7), 60, 60,
       R"({"vector1":[7.0,-5.0,3.0],"vector3":[0.0,0.0,1.0],"cameraScalar":45.0,"withProgress":true})"},
      {"AppendMaterial", ClassicMaterial(2, 0x500000007), 144, 168,
       R"({"index":2,"key":21474836487,"name":"Brick","materialType":"Default","textureName":"t",
           "texture":[2,1],"opacity":0.75,"lightPower":2.0,"bumpDepth":0.5,"reflection":0.25,
           "refraction":1.0,"reflectionBlur":true,"refractionBlur":false,"hidden":false})"},
      {"AppendPBRMaterial", PbrMaterial(3, 9), 256, 287,
       R"({"index":3,"key":9,"name":"Steel","materialType":"Metallic","texture":[1,1],
           "normalTexture":[1,1],"metallicTexture":[1,1],"roughnessTexture":[1,1],
           "normalScale":1.5,"refraction":1.0,"lightPower":0.5})"},
      {"AppendOmniLight", OmniLight(1, 10), 28, 28,
       R"({"color":[1.0,2.0,3.0],"position":[10.0,20.0,30.0]})"},
      {"AppendSpotLight", SpotLight(), 48, 48,
       R"({"direction":[0.0,0.0,-1.0],"beamAngle":0.25,"wideBeamAngle":0.75})"},
      {"AppendMesh", TriangleMesh(50, 7, 0, 1), 112, 252,
       R"({"meshId":50,"cacheKey":7,"vertexCount":3,"triangleCount":1,"pass":0,"manifold":false})"},
      {"AppendMesh of pass 1", TriangleMesh(0x8000000000000032, 7, 0, 1), 112, 252,
       R"({"meshId":9223372036854775858,"pass":1})"},
      {"InstanciateMesh", Instance(50, 8, 3), 88, 88,
       R"({"meshId":50,"cacheKey":8,"transform":[1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,
           3.0,0.0,0.0,1.0]})"},
      {"SetModelName", TextCommand(14, "Maison d'été"), 8, 23, R"({"text":"Maison d'été"})"},
      {"SetBackgroundSettings", Background(0.5f), 44, 44, R"({"bgInt":[0,1,2,3,4,5,-2]})"},
      {"SetMessage", TextCommand(16, ""), 8, 9, R"({"text":""})"},
      {"SetProgress", ProgressCommand(0.25f), 8, 8, R"({"progress":0.25})"},
      {"GetLinkCamera", BareCommand(18), 4, 4, "{}"},
      {"ReloadFromPlugin", BareCommand(19), 4, 4, "{}"},
      {"ClearModelDataForReload", BareCommand(20), 4, 4, "{}"},
      {"MemoryDestroyed", BareCommand(21), 4, 4, "{}"},
      {"InstanciateMeshBatch", OwnerBatch({7, 8}), 12, 28, R"({"count":2,"owners":[7,8]})"},
      {"AppendCachedMaterials", CachedMaterials({{0, 0, 0xffffffff}, {2, 5, 7}}), 12, 44,
       R"({"count":2,"references":[{"index":0,"lightPower":0.0,"key":4294967295},
                                   {"index":2,"lightPower":5.0,"key":7}]})"},
      {"UpdateInstanceTransform", MoveOwner(7, 2), 80, 80, R"({"owner":7})"},
      {"SetCameraAndBackgroundSettings",
       [] {
         Bytes bytes = Camera(7);
         bytes.U32(0, 25).U8(56, 0).U32(60, 15).F32(64, {0.5f, 0.25f, 1}).U32(100, 9);
         return bytes;
       }(),
       104, 104, R"({"vector4":[0.30000001192092896,-0.4000000059604645,0.800000011920929],
                     "bgFloat":[0.5,0.25,1.0],"bgInt":[0,0,0,0,0,0,9]})"},
      {"SetLinkCamera", Bytes(8).U32(0, 26).U8(4, 1), 8, 8, R"({"linked":true})"},
  };
}

}  // namespace

TEST(Decoder, ReadsEveryFieldFromItsPlace) {
  for (const Sound& sound : SoundMessages()) {
    SCOPED_TRACE(sound.name);
    const Decoded decoded = DecodeExactly(sound.bytes);
    EXPECT_EQ(decoded.problems, std::vector<std::string>{});
    EXPECT_EQ(decoded.recordBytes, sound.record);
    EXPECT_EQ(decoded.messageBytes, sound.message);
    const nlohmann::json fields = KeyFields(decoded.command);
    const nlohmann::json wanted = nlohmann::json::parse(sound.fields);
    for (const auto& [name, value] : wanted.items()) {
      EXPECT_EQ(fields.value(name, nlohmann::json("no such field")), value) << name;
    }
  }
}

TEST(Decoder, FindsEveryCutAndSurvivesEveryChangedByte) {
  for (const Sound& sound : SoundMessages()) {
    SCOPED_TRACE(sound.name);
    const std::span<const std::byte> whole = sound.bytes;
    for (std::size_t length = 0; length < whole.size(); ++length) {
      EXPECT_FALSE(DecodeExactly(whole.first(length)).problems.empty())
          << "cut to " << length << " of " << whole.size() << " bytes";
    }
    for (std::size_t at = 0; at < whole.size(); ++at) {
      for (const unsigned value : {0x00u, 0x01u, 0x7fu, 0x80u, 0xffu}) {
        Bytes changed = sound.bytes;
        DecodeExactly(changed.U8(at, value));
      }
    }
  }
}

TEST(Decoder, SaysWhatIsWrong) {
  struct Case {
    const char* problem;
    Bytes bytes;
  };
  const Bytes mesh = TriangleMesh(50, 7, 0, 1);
  const Bytes classic = ClassicMaterial(2, 7);
  const Bytes pbr = PbrMaterial(3, 9);
  const auto changed = [](Bytes bytes, auto change) {
    change(bytes);
    return bytes;
  };
  const Case cases[] = {
      {"command id 0 is never sent", BareCommand(0)},
      {"command id 8 is never sent", Bytes(64).U32(0, 8)},
      {"command id 12 is never sent", Bytes(64).U32(0, 12)},
      {"command id 27 is not in the catalogue, wanted 1 to 26", Bytes(64).U32(0, 27)},
      {"reload is 2, wanted 0 or 1", Bytes(8).U32(0, 1).U8(4, 2)},
      {"vector2[1] is nan", changed(Camera(1), [](Bytes& b) { b.F32(20, {kNan}); })},
      {"cameraScalar[0] is inf", changed(Camera(1), [](Bytes& b) { b.F32(40, {kInfinity}); })},
      {"withProgress is 255", changed(Camera(1), [](Bytes& b) { b.U8(56, 255); })},
      {"withProgress is 1, wanted 0",
       changed(Camera(1).Resize(104), [](Bytes& b) { b.U32(0, 25).U32(60, 15); })},
      {"id of the background record is 16, wanted 15",
       changed(Camera(1).Resize(104), [](Bytes& b) { b.U32(0, 25).U8(56, 0).U32(60, 16); })},
      {"bgFloat[0] is nan", Background(kNan)},
      {"progress is nan", ProgressCommand(kNan)},
      {"progress is -0.1", ProgressCommand(-0.1f)},
      {"linked is 7", Bytes(8).U32(0, 26).U8(4, 7)},
      {"model name offset is 9, wanted 8", TextCommand(14, "abc").U32(4, 9)},
      {"the model name is empty", TextCommand(14, "")},
      {"message at 8 has no NUL", TextCommand(16, "abc").Resize(11)},
      {"message at 8 is not valid UTF-8", TextCommand(16, "a\xc3")},
      {"message at 8 is not valid UTF-8", TextCommand(16, "\xc0\xaf")},
      {"message at 8 is not valid UTF-8", TextCommand(16, "\xed\xa0\x80")},
      {"color[0] is nan", OmniLight(kNan, 0)},
      {"beam angles[1] is inf", SpotLight().F32(44, {kInfinity})},

      {"textureName offset is 145, wanted 144", Bytes(classic).U32(76, 145)},
      {"name offset is 144, wanted 146", Bytes(classic).U32(124, 144)},
      {"materialType offset is 4294967295, wanted 152", Bytes(classic).U32(128, 0xffffffff)},
      {"texture offset is 161, wanted 160", Bytes(classic).U64(104, 161)},
      {"texture of 3 x 1 pixels has 8 bytes, wanted 4 a pixel", Bytes(classic).U64(80, 3)},
      {"wanted 4 a pixel", Bytes(classic).U64(80, 1ull << 62).U64(88, 1ull << 62).U64(96, 0)},
      {"wanted its end inside the segment",
       Bytes(classic).U64(80, 4096).U64(88, 4096).U64(96, 67108864)},
      {"hasTexture is 2", Bytes(classic).U8(72, 2)},
      {"hasTexture is 0 with textureName \"t\"", Bytes(classic).U8(72, 0)},
      {"absent texture is 2 x 1 with 8 bytes", Bytes(classic).U8(72, 0)},
      {"hasTexture is 1 with an empty textureName",
       PlainMaterial(2, 7, "Red", {1, 0, 0}).U8(72, 1)},
      {"reflectionBlur is 2", Bytes(classic).U32(56, 2)},
      {"diffuseColor[2] is nan", Bytes(classic).F32(28, {kNan})},
      {"lightPower[4] is nan", Bytes(classic).F32(68, {kNan})},
      {"hidden is 9", Bytes(classic).U8(120, 9)},

      {"name offset is 0, wanted 256", Bytes(pbr).U32(240, 0)},
      {"base texture offset is 270, wanted 271", Bytes(pbr).U64(48, 270)},
      {"bits per pixel of metallic texture is 24, wanted 32", Bytes(pbr).U64(80, 24)},
      {"stride of roughness texture is 3, wanted 4", Bytes(pbr).U64(144, 3)},
      {"flag of normal texture is 3", Bytes(pbr).U8(172, 3)},
      {"bits per pixel of normal texture is 32, wanted 0", Bytes(pbr).U8(172, 0)},
      {"normal texture has 4 bytes from 283", Bytes(pbr).Resize(286)},
      {"transparency, refraction, lightPower[4] is inf", Bytes(pbr).F32(228, {kInfinity})},

      {"transform[5] is nan", Bytes(mesh).F32(36, {kNan})},
      {"the last row of transform is 0.000000 0.000000 0.000000 2.000000",
       Bytes(mesh).F32(76, {2})},
      {"the last row of transform", Instance(50, 8).F32(28, {0.5f})},
      {"the last row of transform", MoveOwner(7, 1).F32(76, {0})},
      {"vertices offset is 116, wanted 112", Bytes(mesh).U32(84, 116)},
      {"triangles offset is 112, wanted 232", Bytes(mesh).U32(92, 112)},
      {"vertices has 171798691800 bytes", Bytes(mesh).U32(80, 0xffffffff)},
      {"triangles has 40 bytes from 232", Bytes(mesh).U32(88, 2)},
      {"3 vertices and 0 triangles, wanted no empty mesh", Bytes(mesh).U32(88, 0)},
      {"a triangle names vertex 3, wanted one below 3", Bytes(mesh).U32(240, 3)},
      {"a triangle names vertex 4294967295", Bytes(mesh).U32(232, 0xffffffff)},
      {"float 9 of vertex 2 is nan", Bytes(mesh).F32(228, {kNan})},
      {"pass is 2", Bytes(mesh).U8(96, 2)},
      {"manifold is 3", Bytes(mesh).U8(97, 3)},
      {"wanted its top bit set", Bytes(mesh).U8(96, 1)},

      {"the list is empty", OwnerBatch({})},
      {"list offset is 16, wanted 12", OwnerBatch({7}).U32(8, 16)},
      {"list has 34359738360 bytes", OwnerBatch({7}).U32(4, 0xffffffff)},
      {"lightPower of a reference[0] is nan", CachedMaterials({{0, kNan, 5}})},
  };
  for (const Case& test : cases) {
    const Decoded decoded = DecodeExactly(test.bytes);
    std::string all;
    for (const std::string& problem : decoded.problems) all += problem + "\n";
    EXPECT_NE(all.find(test.problem), std::string::npos)
        << "wanted: " << test.problem << "\nfound: " << all;
  }
}

TEST(Decoder, HeadersOnlyStillChecksPlacesAndSizes) {
  const DecodeOptions headers{.headersOnly = true};
  Bytes mesh = TriangleMesh(50, 7, 0, 1);
  mesh.U32(240, 99);  // content, which is not looked at
  EXPECT_TRUE(Decode(mesh, headers).problems.empty());
  EXPECT_EQ(Decode(mesh, headers).messageBytes, 252u);
  EXPECT_FALSE(Decode(mesh.U32(92, 0), headers).problems.empty());
  EXPECT_FALSE(Decode(ClassicMaterial(2, 7).Resize(167), headers).problems.empty());
}

// Computed apart, from the definition: which bytes count, and in which order.
TEST(MessageDigest, AgreesWithThePluginsDigestOfSceneCommands) {
  struct Case {
    const char* slot;
    Bytes bytes;
    const char* digest;
    std::uint64_t count;
  };
  const Case cases[] = {
      {"AppendMaterial", ClassicMaterial(2, 0x500000007), "cf982d021c9cb735", 1},
      {"AppendPBRMaterial", PbrMaterial(3, 9), "2abe9c6b6b503e0c", 1},
      {"AppendOmniLight", OmniLight(1, 10), "9f07354d8b34d6eb", 1},
      {"AppendSpotLight", SpotLight(), "d1aa5073c3927242", 1},
      {"AppendMesh", TriangleMesh(50, 7, 0, 1), "2ee665cd9b527eef", 1},
      {"AppendMesh", TriangleMesh(51, 7, 0, 1).U8(97, 1).Fill(98, 6, 0xee), "2ee665cd9b527eef", 1},
      {"InstanciateMesh", Instance(50, 8, 3), "26ab1e4fda4e232d", 1},
      {"InstanciateMesh2(cache)", OwnerBatch({8, 7}), "eb49936d78d8d1af", 2},
      {"AppendCachedMaterials", CachedMaterials({{2, 5, 7}, {0, 0, 0xffffffff}}),
       "6e7b62cd87df5421", 2},
  };
  for (const Case& test : cases) {
    const MessageDigest digest = DigestOf(Decode(test.bytes), test.bytes);
    EXPECT_EQ(digest.slot, test.slot);
    EXPECT_EQ(DigestText(digest.value), test.digest) << test.slot;
    EXPECT_EQ(digest.count, test.count) << test.slot;
  }
  const auto digestOf = [](const Bytes& bytes) { return DigestOf(Decode(bytes), bytes).value; };
  EXPECT_EQ(digestOf(ClassicMaterial(2, 7)), digestOf(ClassicMaterial(2, 7).Fill(73, 3, 0xee)));
  EXPECT_EQ(digestOf(Camera(1)), digestOf(Camera(1).Fill(57, 3, 0xee)));
  EXPECT_NE(digestOf(Camera(1)), digestOf(Camera(2)));
}

}  // namespace kvapp::test
