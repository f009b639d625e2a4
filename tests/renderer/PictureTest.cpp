#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Bytes.h"
#include "app/Decoder.h"
#include "app/Findings.h"
#include "app/GlbWriter.h"
#include "app/Scene.h"
#include "picture/GltfLoader.h"
#include "picture/OffscreenContext.h"
#include "picture/Painter.h"

// From commands to the file and from the file to the picture: what is where, and which way round.

namespace kvapp::test {

namespace {

class PictureTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "kvglb-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    Take(TextCommand(14, "House"));
    Take(PlainMaterial(0, 0xffffffff, "Front", {0.9f, 0.1f, 0.1f}));
    Take(PlainMaterial(1, 0xfffffffe, "Back", {0.1f, 0.1f, 0.9f}));
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  void Take(const Bytes& bytes) {
    Decoded decoded = Decode(bytes);
    ASSERT_EQ(decoded.problems, std::vector<std::string>{});
    scene_.Apply(std::move(decoded.command), ++commands_, decoded.messageBytes);
  }

  kvpicture::Model Load() {
    scene_.Settle();
    WriteGlb(scene_, folder_ / "scene.glb");
    return kvpicture::LoadGltf((folder_ / "scene.glb").string());
  }

  // The file's JSON part.
  nlohmann::json Document() {
    std::ifstream stream(folder_ / "scene.glb", std::ios::binary);
    std::array<std::uint32_t, 5> head{};
    stream.read(reinterpret_cast<char*>(head.data()), sizeof head);
    EXPECT_EQ(head[0], 0x46546c67u);
    EXPECT_EQ(head[2], std::filesystem::file_size(folder_ / "scene.glb"));
    std::string text(head[3], ' ');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    return nlohmann::json::parse(text);
  }

  // Looks from `eye` (host axes, Z up) at the origin.
  void LookFrom(float x, float y, float z) {
    Take(Camera(0).F32(4, {x, y, z, 0, 0, 0, 0, 0, 1, 40, x + 0.1f, y, z + 0.5f}));
  }

  kvpicture::Image Draw() {
    const kvpicture::Model model = Load();
    const kvpicture::OffscreenContext context;
    return kvpicture::Paint(model, 160, 120);
  }

  static std::string ColorAt(const kvpicture::Image& image, int x, int y) {
    const std::uint8_t* p = &image.rgba[static_cast<std::size_t>((y * image.width + x) * 4)];
    if (p[0] > p[1] + 60 && p[0] > p[2] + 60) return "red";
    if (p[1] > p[0] + 40 && p[1] > p[2] + 40) return "green";
    if (p[2] > p[0] + 60 && p[2] > p[1] + 40) return "blue";
    return "other";
  }

  std::filesystem::path folder_;
  Findings findings_;
  Scene scene_{findings_};
  std::uint64_t commands_ = 0;
};

// A square from -1 to 1 in the plane y = 0, seen from -y, with texture coordinates 0 to 1.
Bytes Square(std::uint64_t id, std::uint64_t owner, std::uint32_t front, std::uint32_t back) {
  Bytes bytes(112);
  bytes.U32(0, 10).U64(8, id).Identity(16).U32(80, 4).U32(84, 112).U32(88, 2).U32(92, 272);
  bytes.U64(104, owner);
  bytes.F32(112, {-1, 0, -1, 0, -1, 0, 0, 0, 0, 0}).F32(152, {1, 0, -1, 0, -1, 0, 1, 0, 1, 0});
  bytes.F32(192, {1, 0, 1, 0, -1, 0, 1, 1, 1, 1}).F32(232, {-1, 0, 1, 0, -1, 0, 0, 1, 0, 1});
  bytes.U32(272, 0).U32(276, 1).U32(280, 2).U32(284, front).U32(288, back);
  return bytes.U32(292, 0).U32(296, 2).U32(300, 3).U32(304, front).U32(308, back);
}

}  // namespace

TEST_F(PictureTest, BothSidesShowTheirOwnMaterial) {
  Take(Square(50, 7, 0, 1));
  LookFrom(0, -6, 0);
  EXPECT_EQ(ColorAt(Draw(), 80, 60), "red");
  LookFrom(0, 6, 0);
  EXPECT_EQ(ColorAt(Draw(), 80, 60), "blue");
  // Mirrored, the front still is where the host has it.
  Take(MoveOwner(7, 500));
  Take(Bytes(Instance(50, 8)).F32(16, {-1}));
  LookFrom(0, -6, 0);
  EXPECT_EQ(ColorAt(Draw(), 80, 60), "red");
}

TEST_F(PictureTest, TexturesStandUprightAndAreNotMirrored) {
  // 2 x 2 pixels, blue first, the bottom row first: red and green below, blue and white above.
  Bytes material = Bytes(144).U32(0, 4).U32(4, 2).F32(20, {1, 1, 1}).F32(44, {1}).F32(68, {1});
  material.U8(72, 1).U32(76, 144).U64(80, 2).U64(88, 2).U64(96, 16).U64(104, 159);
  material.U32(124, 146).U32(128, 151).U64(136, (1ull << 32) | 20);
  material.Text(144, "t").Text(146, "Four").Text(151, "Default");
  const unsigned pixels[] = {0, 0, 255, 255, 0, 255, 0, 255, 255, 0, 0, 255, 255, 255, 255, 255};
  for (unsigned i = 0; i < 16; ++i) material.U8(159 + i, pixels[i]);
  Take(material);
  Take(Square(50, 7, 2, 2));
  LookFrom(0, -6, 0);
  const kvpicture::Image image = Draw();
  EXPECT_EQ(ColorAt(image, 62, 78), "red");
  EXPECT_EQ(ColorAt(image, 98, 78), "green");
  EXPECT_EQ(ColorAt(image, 62, 42), "blue");
  // The same on both sides: one primitive for both.
  EXPECT_EQ(Document()["meshes"][0]["primitives"].size(), 1u);
  EXPECT_EQ(Document()["materials"][0]["doubleSided"], true);
}

TEST_F(PictureTest, SeeThroughSurfacesShowWhatIsBehind) {
  Take(PlainMaterial(2, 20, "Glass", {1, 1, 1}, 0.2f));
  Take(PlainMaterial(3, 21, "Gone", {0, 1, 0}, 0));
  Take(Square(50, 7, 0, 0));
  Take(Square(60, 8, 2, 2));
  Take(MoveOwner(8, 0).F32(68, {-1}));
  Take(Square(61, 9, 3, 3));
  Take(MoveOwner(9, 0).F32(68, {-2}));
  LookFrom(0, -8, 0);
  EXPECT_EQ(ColorAt(Draw(), 80, 60), "red");
}

TEST_F(PictureTest, PlacesLightsAndCameraWhereTheHostHasThem) {
  Take(Square(50, 7, 0, 1));
  Take(Bytes(Instance(50, 8, 3)).F32(20, {0.5f}));  // sheared: no translation, rotation and scale
  Take(Bytes(Instance(50, 9)).F32(16, {-1}));       // mirrored
  Take(OmniLight(4, 10));
  Take(SpotLight());
  Take(Background(0.25f));
  LookFrom(0, -6, 0);
  const kvpicture::Model model = Load();
  ASSERT_EQ(model.items.size(), 6u);  // two sides each
  // Host Z is up in the file's Y; the sheared one is baked into vertices of its own.
  const auto cornerOf = [&model](std::size_t item) {
    const auto& part = model.parts[static_cast<std::size_t>(model.items[item].part)];
    return glm::vec3(model.items[item].transform * glm::vec4(part.positions[1], 1));
  };
  EXPECT_LT(glm::distance(cornerOf(0), glm::vec3(1, -1, 0)), 1e-5f);
  EXPECT_LT(glm::distance(cornerOf(2), glm::vec3(4, -1, -0.5f)), 1e-5f);
  EXPECT_LT(glm::distance(cornerOf(4), glm::vec3(-1, -1, 0)), 1e-5f);
  ASSERT_EQ(model.lamps.size(), 2u);
  EXPECT_LT(glm::distance(model.lamps[0].position, glm::vec3(10, 30, -20)), 1e-4f);
  EXPECT_LT(glm::distance(model.lamps[1].direction, glm::vec3(0, -1, 0)), 1e-5f);
  ASSERT_TRUE(model.camera.has_value());
  EXPECT_LT(glm::distance(glm::vec3(model.camera->toWorld[3]), glm::vec3(0, 0, 6)), 1e-5f);
  EXPECT_NEAR(model.camera->verticalView, 40 * 3.14159265 / 180, 1e-5);
  ASSERT_TRUE(model.background.has_value());
  EXPECT_FLOAT_EQ(model.background->x, 0.25f);
  const nlohmann::json document = Document();
  EXPECT_EQ(document["scenes"][0]["extras"]["modelName"], "House");
  EXPECT_EQ(document["meshes"].size(), 2u);
}

TEST_F(PictureTest, AnEmptySceneIsAFileAndAPictureToo) {
  const kvpicture::Image image = Draw();
  EXPECT_EQ(image.rgba.size(), 160u * 120 * 4);
  EXPECT_FALSE(Document().contains("buffers"));
}

}  // namespace kvapp::test
