// What a second process receives of each command, byte by byte: every field at its place, as plain
// numbers.

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LinkFixture.h"

namespace quellix {
namespace {

using nlohmann::json;

// One received message.
class Message {
 public:
  explicit Message(const json& line)
      : size(line.at("message").get<std::size_t>()), name(line.at("name").get<std::string>()) {
    const std::string hex = line.at("bytes").get<std::string>();
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
      bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
  }

  template <class Value>
  Value At(std::size_t offset) const {
    Value value{};
    if (offset + sizeof value > bytes.size()) {
      ADD_FAILURE() << name << " has only " << bytes.size() << " bytes, wanted some at " << offset;
      return value;
    }
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
  }

  Message& U8(std::size_t offset, unsigned wanted) {
    EXPECT_EQ(unsigned{At<std::uint8_t>(offset)}, wanted) << name << " u8 at " << offset;
    return *this;
  }
  Message& U32(std::size_t offset, std::uint32_t wanted) {
    EXPECT_EQ(At<std::uint32_t>(offset), wanted) << name << " u32 at " << offset;
    return *this;
  }
  Message& I32(std::size_t offset, std::vector<std::int32_t> wanted) {
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      EXPECT_EQ(At<std::int32_t>(offset + 4 * i), wanted[i])
          << name << " i32 at " << offset + 4 * i;
    }
    return *this;
  }
  Message& U64(std::size_t offset, std::uint64_t wanted) {
    EXPECT_EQ(At<std::uint64_t>(offset), wanted) << name << " u64 at " << offset;
    return *this;
  }
  Message& F32(std::size_t offset, std::vector<float> wanted) {
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      EXPECT_EQ(At<float>(offset + 4 * i), wanted[i]) << name << " f32 at " << offset + 4 * i;
    }
    return *this;
  }
  // A text with its NUL, and the u32 field that points at it.
  Message& Text(std::size_t field, std::uint32_t offset, const std::string& wanted) {
    U32(field, offset);
    const std::string found(bytes.data() + std::min<std::size_t>(offset, bytes.size()),
                            std::min<std::size_t>(wanted.size() + 1, bytes.size() - offset));
    EXPECT_EQ(found, wanted + '\0') << name << " text at " << offset;
    return *this;
  }
  Message& Raw(std::size_t offset, const std::string& wanted) {
    EXPECT_EQ(bytes.substr(std::min(offset, bytes.size()), wanted.size()), wanted)
        << name << " bytes at " << offset;
    return *this;
  }

  std::size_t size;
  std::string name;

 private:
  std::string bytes;
};

std::vector<float> Sixteen(float first) {
  std::vector<float> values;
  for (int i = 0; i < 16; ++i) values.push_back(first + static_cast<float>(i));
  return values;
}

class WireBytes : public LinkTest {
 protected:
  // The one message that the calls since the start have made.
  Message Only() {
    std::vector<json> commands = Received();
    EXPECT_EQ(commands.size(), 2u) << "one command and CloseApp were to be received";
    return Message(commands.at(0));
  }
};

TEST_F(WireBytes, CommandsWithoutVariableData) {
  Start();
  const std::vector<float> matrix = Sixteen(0.5f);
  const float color[3] = {0.25f, 0.5f, 4.0f};
  const float position[4] = {1.0f, 2.0f, 3.0f, 1.0f};
  const float direction[3] = {0.0f, -1.5f, 2.5f};
  CameraValues camera{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, 10.5f, {11, 12, 13}};
  BackgroundValues background{{0.1f, 0.2f, 0.3f}, {1, -2, 3, -4, 5, -6}, 2.9f};

  link.PrepareRendering(true);
  link.PrepareRendering(false);
  link.SetCamera(camera, true);
  link.SetCamera(camera, false);
  link.AppendOmniLight(color, position);
  link.AppendSpotLight(color, position, direction, 0.26f, 0.78f);
  link.InstanciateMesh(0x8877665544332211ull, matrix.data(), 0xFFEEDDCCBBAA9988ull);
  link.UpdateInstanceTransform(77, matrix.data());
  link.SetBackgroundSettings(background);
  background.last = -2.9f;
  link.SetCameraAndBackgroundSettings(camera, background);
  link.SetProgress(0.5f);
  EXPECT_FALSE(link.GetLinkCamera());
  link.SetLinkCamera(true);
  link.SetLinkCamera(false);
  link.ReloadFromPlugin();
  link.ClearModelDataForReload();
  std::vector<Message> messages;
  for (const json& line : Received()) messages.emplace_back(line);
  ASSERT_EQ(messages.size(), 17u);

  const std::size_t sizes[] = {8, 8, 60, 60, 28, 48, 88, 80, 44, 104, 8, 4, 8, 8, 4, 4, 4};
  for (std::size_t i = 0; i < messages.size(); ++i) {
    EXPECT_EQ(messages[i].size, sizes[i]) << messages[i].name;
  }
  messages[0].U32(0, 1).U8(4, 1);
  messages[1].U32(0, 1).U8(4, 0);
  const std::vector<float> cameraFloats = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10.5f, 11, 12, 13};
  messages[2].U32(0, 3).F32(4, cameraFloats).U8(56, 1);
  messages[3].U32(0, 3).F32(4, cameraFloats).U8(56, 0);
  messages[4].U32(0, 6).F32(4, {0.25f, 0.5f, 4.0f, 1, 2, 3});
  messages[5].U32(0, 7).F32(4, {0.25f, 0.5f, 4.0f, 1, 2, 3, 0.0f, -1.5f, 2.5f, 0.26f, 0.78f});
  messages[6].U32(0, 13).U64(8, 0x8877665544332211ull).F32(16, matrix);
  messages[6].U64(80, 0xFFEEDDCCBBAA9988ull);
  messages[7].U32(0, 24).U64(8, 77).F32(16, matrix);
  messages[8].U32(0, 15).F32(4, {0.1f, 0.2f, 0.3f}).I32(16, {1, -2, 3, -4, 5, -6, 2});
  messages[9].U32(0, 25).F32(4, cameraFloats).U8(56, 0);
  messages[9].U32(60, 15).F32(64, {0.1f, 0.2f, 0.3f}).I32(76, {1, -2, 3, -4, 5, -6, -2});
  messages[10].U32(0, 17).F32(4, {0.5f});
  messages[11].U32(0, 18);
  messages[12].U32(0, 26).U8(4, 1);
  messages[13].U32(0, 26).U8(4, 0);
  messages[14].U32(0, 19);
  messages[15].U32(0, 20);
  messages[16].U32(0, 2);
}

TEST_F(WireBytes, TextsAreUtf8AndAlwaysEnded) {
  Start();
  link.SetModelName("家🏠 بيت");
  link.SetMessage("");
  link.SetMessage("Exporting lights...");
  const std::vector<json> commands = Received();
  ASSERT_EQ(commands.size(), 4u);
  const std::string name = "\xE5\xAE\xB6\xF0\x9F\x8F\xA0 \xD8\xA8\xD9\x8A\xD8\xAA";
  Message first(commands[0]);
  EXPECT_EQ(first.size, 8 + name.size() + 1);
  first.U32(0, 14).Text(4, 8, name);
  Message(commands[1]).U32(0, 16).Text(4, 8, "");
  EXPECT_EQ(Message(commands[1]).size, 9u);
  Message(commands[2]).U32(0, 16).Text(4, 8, "Exporting lights...");
}

ClassicMaterialRecord FullMaterial(const std::string& pixels) {
  ClassicMaterialRecord material;
  material.index = 7;
  const float colors[9] = {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f, 0.9f};
  std::copy_n(colors, 3, material.ambientColor);
  std::copy_n(colors + 3, 3, material.diffuseColor);
  std::copy_n(colors + 6, 3, material.specularColor);
  material.diffuse = 0.95f;
  material.specular = 0.15f;
  material.reflection = 0.25f;
  material.reflectionBlur = true;
  material.refraction = 1.5f;
  material.refractionBlur = true;
  material.opacity = 0.75f;
  material.hasTexture = true;
  material.textureName = "téx";
  material.texture = {2, 1, pixels.size(), pixels.data()};
  material.bumpDepth = 0.125f;
  material.lightPower = 5.0f;
  material.hidden = true;
  material.name = "レンガ";
  material.materialType = "Metallic";
  material.key = 0x0000000300000011ull;
  return material;
}

TEST_F(WireBytes, ClassicMaterial) {
  Start();
  const std::string pixels("\x01\x02\x03\x04\x05\x06\x07\x08", 8);
  link.AppendMaterial(FullMaterial(pixels));
  Message message = Only();
  // Texts of 4 + 1, 9 + 1 and 8 + 1 bytes, then the pixels.
  EXPECT_EQ(message.size, 144u + 5 + 10 + 9 + 8);
  message.U32(0, 4).U32(4, 7).F32(8, {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f, 0.7f, 0.8f, 0.9f});
  message.F32(44, {0.95f, 0.15f, 0.25f}).U32(56, 1).F32(60, {1.5f}).U32(64, 1).F32(68, {0.75f});
  message.U8(72, 1).Text(76, 144, "t\xC3\xA9x").U64(80, 2).U64(88, 1).U64(96, 8).U64(104, 168);
  message.F32(112, {0.125f, 5.0f}).U8(120, 1);
  message.Text(124, 149, "\xE3\x83\xAC\xE3\x83\xB3\xE3\x82\xAC").Text(128, 159, "Metallic");
  message.U64(136, 0x0000000300000011ull).Raw(168, pixels);
}

TEST_F(WireBytes, ClassicMaterialWithoutTextureAndTexts) {
  Start();
  ClassicMaterialRecord material;
  material.index = 3;
  material.key = 21;
  link.AppendMaterial(material);
  Message message = Only();
  EXPECT_EQ(message.size, 147u);
  message.U8(72, 0).Text(76, 144, "").U64(80, 0).U64(88, 0).U64(96, 0).U64(104, 147);
  message.Text(124, 145, "").Text(128, 146, "").U32(56, 0).U32(64, 0).U8(120, 0).U64(136, 21);
}

TEST_F(WireBytes, MetallicRoughnessMaterial) {
  Start();
  const std::string base(4, 'b');
  const std::string metallic(8, 'm');
  const std::string roughness(12, 'r');
  const std::string normal(16, 'n');
  PbrMaterialRecord material;
  material.index = 9;
  material.name = "Stahl";
  const float color[3] = {0.5f, 0.25f, 0.125f};
  std::copy_n(color, 3, material.baseColor);
  material.hasBaseTexture = true;
  material.baseTexture = {1, 1, 4, base.data()};
  material.metallic = 0.9f;
  material.hasMetallicTexture = true;
  material.metallicTexture = {{2, 1, 8, metallic.data()}, 32, 8};
  material.roughness = 0.3f;
  material.hasRoughnessTexture = true;
  material.roughnessTexture = {{3, 1, 12, roughness.data()}, 32, 12};
  material.normalScale = 0.7f;
  material.hasNormalTexture = true;
  material.normalTexture = {{2, 2, 16, normal.data()}, 32, 8};
  material.transparency = 0.4f;
  material.refraction = 1.25f;
  material.lightPower = 500.0f;
  material.hidden = true;
  material.materialType = nullptr;
  material.key = 0x0000000500000022ull;
  link.AppendPBRMaterial(material);
  Message message = Only();
  EXPECT_EQ(message.size, 256u + 6 + 1 + 4 + 8 + 12 + 16);
  message.U32(0, 5).U32(4, 9).F32(8, {0.5f, 0.25f, 0.125f}).U8(20, 1);
  message.U64(24, 1).U64(32, 1).U64(40, 4).U64(48, 263);
  message.F32(56, {0.9f}).U8(60, 1).U64(64, 2).U64(72, 1).U64(80, 32).U64(88, 8).U64(96, 8);
  message.U64(104, 267);
  message.F32(112, {0.3f}).U8(116, 1).U64(120, 3).U64(128, 1).U64(136, 32).U64(144, 12);
  message.U64(152, 12).U64(160, 275);
  message.F32(168, {0.7f}).U8(172, 1).U64(176, 2).U64(184, 2).U64(192, 32).U64(200, 8);
  message.U64(208, 16).U64(216, 287);
  message.F32(224, {0.4f, 1.25f, 500.0f}).U8(236, 1).Text(240, 256, "Stahl").Text(244, 262, "");
  message.U64(248, 0x0000000500000022ull);
  message.Raw(263, "bbbbmmmmmmmmrrrrrrrrrrrrnnnnnnnnnnnnnnnn");
}

TEST_F(WireBytes, MeshVerticesAndTrianglesFollowAtOnce) {
  Start();
  const std::vector<float> matrix = Sixteen(1.0f);
  std::vector<float> vertices;
  for (int i = 0; i < 30; ++i) vertices.push_back(static_cast<float>(i) * 0.5f);
  const std::uint32_t triangle[5] = {0, 1, 2, 4, 1};
  link.AppendMesh(0x1122334455667788ull, matrix.data(), 3, vertices.data(), 1, triangle, 1, true,
                  0x99AABBCCDDEEFF00ull);
  Message message = Only();
  EXPECT_EQ(message.size, 252u);
  message.U32(0, 10).U64(8, 0x1122334455667788ull).F32(16, matrix);
  message.U32(80, 3).U32(84, 112).U32(88, 1).U32(92, 232).U8(96, 1).U8(97, 1);
  message.U64(104, 0x99AABBCCDDEEFF00ull).F32(112, vertices);
  message.U32(232, 0).U32(236, 1).U32(240, 2).U32(244, 4).U32(248, 1);
}

TEST_F(WireBytes, ListsAreSentOnlyWhenTheyHoldSomething) {
  Start();
  link.InstanciateMeshBatch({});
  link.AppendCachedMaterials({});
  link.InstanciateMeshBatch({0x0102030405060708ull, 0});
  link.AppendCachedMaterials({{5, 0.5f, 0x00000001000000AAull}, {0, 0.0f, 0xFFFFFFFFull}});
  const std::vector<json> commands = Received();
  ASSERT_EQ(commands.size(), 3u);
  Message owners(commands[0]);
  EXPECT_EQ(owners.size, 28u);
  owners.U32(0, 22).U32(4, 2).U32(8, 12).U64(12, 0x0102030405060708ull).U64(20, 0);
  Message materials(commands[1]);
  EXPECT_EQ(materials.size, 44u);
  materials.U32(0, 23).U32(4, 2).U32(8, 12);
  materials.U32(12, 5).F32(16, {0.5f}).U64(20, 0x00000001000000AAull);
  materials.U32(28, 0).F32(32, {0.0f}).U64(36, 0xFFFFFFFFull);
}

TEST_F(WireBytes, ABackgroundIntegerThatNoIntegerHoldsIsTheNearestOne) {
  Start();
  const std::pair<float, std::int32_t> cases[] = {{3e9f, std::numeric_limits<std::int32_t>::max()},
                                                  {-3e9f, std::numeric_limits<std::int32_t>::min()},
                                                  {std::numeric_limits<float>::quiet_NaN(), 0}};
  for (const auto& [value, wanted] : cases) {
    BackgroundValues background;
    background.last = value;
    link.SetBackgroundSettings(background);
  }
  const std::vector<json> commands = Received();
  ASSERT_EQ(commands.size(), 4u);
  for (std::size_t i = 0; i < 3; ++i) Message(commands[i]).I32(40, {cases[i].second});
}

// A classic material whose message has exactly that many bytes.
void SendMaterialOf(IpcInterface& link, std::uint64_t messageBytes) {
  const std::string pixels(messageBytes - 147, 'x');
  ClassicMaterialRecord material;
  material.texture = {1, 1, pixels.size(), pixels.data()};
  link.AppendMaterial(material);
}

TEST_F(WireBytes, TheSegmentGrowsOnlyForWhatDoesNotFit) {
  Start();
  EXPECT_EQ(link.SegmentSize(), 80'530'640u);
  SendMaterialOf(link, 67'108'864);
  EXPECT_EQ(link.SegmentSize(), 80'530'640u);
  SendMaterialOf(link, 67'108'868);
  EXPECT_EQ(link.SegmentSize(), 80'530'640u);
  SendMaterialOf(link, 67'108'872);
  EXPECT_EQ(link.SegmentSize(), 161'061'280u);
  link.SetMessage("after");
  const std::vector<json> commands = Received();
  std::vector<std::pair<int, std::uint64_t>> seen;
  for (const json& line : commands) seen.emplace_back(line.at("id"), line.at("message"));
  const std::vector<std::pair<int, std::uint64_t>> wanted = {
      {4, 67'108'864}, {4, 67'108'868}, {21, 4}, {4, 67'108'872}, {16, 14}, {2, 4}};
  EXPECT_EQ(seen, wanted);
}

}  // namespace
}  // namespace quellix
