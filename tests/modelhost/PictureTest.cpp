#include "HostFixture.h"

namespace {

class PictureTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    SUImageRepCreate(&rep);
  }
  void TearDown() override {
    SUImageRepRelease(&rep);
    HostTest::TearDown();
  }
  std::vector<SUByte> data() const {
    size_t size = 0, bits = 0;
    EXPECT_EQ(SUImageRepGetDataSize(rep, &size, &bits), SU_ERROR_NONE);
    std::vector<SUByte> bytes(size);
    EXPECT_EQ(SUImageRepGetData(rep, size, bytes.data()), SU_ERROR_NONE);
    return bytes;
  }
  SUImageRepRef rep = SU_INVALID;
};

TEST_F(PictureTest, EveryDepthSurvivesAFile) {
  const struct {
    size_t bits;
    std::vector<SUByte> rows;  // two by two, two bytes of padding
    std::vector<SUByte> packed;
    std::vector<SUByte> widened;
  } cases[] = {
      {8,
       {1, 2, 9, 9, 3, 4, 9, 9},
       {1, 2, 3, 4},
       {1, 1, 1, 255, 2, 2, 2, 255, 3, 3, 3, 255, 4, 4, 4, 255}},
      {24,
       {1, 2, 3, 4, 5, 6, 9, 9, 7, 8, 9, 10, 11, 12, 9, 9},
       {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
       {1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255, 10, 11, 12, 255}},
      {32,
       {1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9, 10, 11, 12, 13, 14, 15, 16, 9, 9},
       {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16},
       {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}},
  };
  for (const auto& [bits, rows, packed, widened] : cases) {
    ASSERT_EQ(SUImageRepSetData(rep, 2, 2, bits, 2, rows.data()), SU_ERROR_NONE);
    EXPECT_EQ(data(), packed) << bits;
    const TemporaryFile file("rep.png");
    ASSERT_EQ(SUImageRepSaveToFile(rep, file.path().c_str()), SU_ERROR_NONE) << bits;
    ASSERT_EQ(SUImageRepLoadFile(rep, file.path().c_str()), SU_ERROR_NONE) << bits;
    EXPECT_EQ(data(), packed) << bits;
    ASSERT_EQ(SUImageRepConvertTo32BitsPerPixel(rep), SU_ERROR_NONE);
    EXPECT_EQ(data(), widened) << bits;
  }
  SUByte small[3];
  EXPECT_EQ(SUImageRepGetData(rep, 3, small), SU_ERROR_INSUFFICIENT_SIZE);
}

TEST_F(PictureTest, WhatIsNoPictureIsRefused) {
  size_t size = 0, bits = 0;
  EXPECT_EQ(SUImageRepGetDataSize(rep, &size, &bits), SU_ERROR_NO_DATA) << "never filled";
  EXPECT_EQ(SUImageRepConvertTo32BitsPerPixel(rep), SU_ERROR_NO_DATA);
  const SUByte bytes[4] = {};
  EXPECT_EQ(SUImageRepSetData(rep, 0, 1, 32, 0, bytes), SU_ERROR_OUT_OF_RANGE);
  EXPECT_EQ(SUImageRepSetData(rep, 1, 1 << 20, 32, 0, bytes), SU_ERROR_OUT_OF_RANGE);
  EXPECT_EQ(SUImageRepSetData(rep, 1, 1, 16, 0, bytes), SU_ERROR_UNSUPPORTED);
  const TemporaryFile text("text.png", "this is no picture");
  EXPECT_EQ(SUImageRepLoadFile(rep, text.path().c_str()), SU_ERROR_SERIALIZATION);
  EXPECT_EQ(SUImageRepLoadFile(rep, "/no/such/file.png"), SU_ERROR_SERIALIZATION);
  SUImageRef image = SU_INVALID;
  EXPECT_EQ(SUImageCreateFromFile(&image, text.path().c_str()), SU_ERROR_SERIALIZATION);
  EXPECT_EQ(SUImageCreateFromImageRep(&image, rep), SU_ERROR_INVALID_INPUT);
}

TEST_F(PictureTest, TexturesGiveTheirPixelsPlainAndColorized) {
  // Grey and darker grey, half see-through.
  const SUMaterialRef material =
      addTextured("m", 2, 1, 32, {128, 128, 128, 100, 64, 64, 64, 200}, 1);
  SUTextureRef texture = SU_INVALID;
  ASSERT_EQ(SUMaterialGetTexture(material, &texture), SU_ERROR_NONE);
  double h = 1, s = 1, l = 1;
  SUMaterialGetColorizeDeltas(material, &h, &s, &l);
  EXPECT_EQ(h, 0);
  EXPECT_EQ(s, 0);
  EXPECT_EQ(l, 0);
  bool alpha = false;
  SUTextureGetUseAlphaChannel(texture, &alpha);
  EXPECT_TRUE(alpha);

  // Pure red of the mean grey's lightness and full saturation.
  modelhost_material_set_colorize(material, 0, 1, 0);
  SUMaterialGetColorizeDeltas(material, &h, &s, &l);
  EXPECT_EQ(s, 1);
  ASSERT_EQ(SUTextureGetImageRep(texture, &rep), SU_ERROR_NONE);
  EXPECT_EQ(data(), (std::vector<SUByte>{128, 128, 128, 100, 64, 64, 64, 200}));
  ASSERT_EQ(SUTextureGetColorizedImageRep(texture, &rep), SU_ERROR_NONE);
  const auto colorized = data();
  ASSERT_EQ(colorized.size(), 8u);
  EXPECT_NEAR(colorized[2], 255, 2) << "red";
  EXPECT_NEAR(colorized[0], 1, 2) << "blue";
  EXPECT_EQ(colorized[3], 255) << "opaque, whatever the texture is";
  EXPECT_NEAR(colorized[6], 128, 2);

  SUImageRepRef none = SU_INVALID;
  EXPECT_EQ(SUTextureGetImageRep(texture, &none), SU_ERROR_INVALID_OUTPUT);
  SUTextureRef copy = texture;
  EXPECT_EQ(SUTextureRelease(&copy), SU_ERROR_INVALID_OPERATION) << "it is the material's";
}

TEST_F(PictureTest, ColourOfAMaterialGoesToItsTexture) {
  const SUMaterialRef material = addTextured("m", 1, 1, 24, {40, 80, 160}, 1);
  SUColor color{};
  SUMaterialGetColor(material, &color);
  EXPECT_EQ(color.red, 160) << "the mean of the texture";
  const SUColor wanted{20, 200, 90, 255};
  SUMaterialSetColor(material, &wanted);
  SUMaterialSetType(material, SUMaterialType_ColorizedTexture);
  SUTextureRef texture = SU_INVALID;
  SUMaterialGetTexture(material, &texture);
  SUTextureGetColorizedImageRep(texture, &rep);
  EXPECT_NEAR(data()[0], 90, 2);
  EXPECT_NEAR(data()[1], 200, 2);
  EXPECT_NEAR(data()[2], 20, 2);
}

TEST_F(PictureTest, ImagesHaveTheirSizeFromTheirTransformation) {
  const std::vector<SUByte> pixels(4 * 2 * 3, 50);
  SUImageRepSetData(rep, 4, 2, 24, 0, pixels.data());
  SUImageRef image = SU_INVALID;
  ASSERT_EQ(SUImageCreateFromImageRep(&image, rep), SU_ERROR_NONE);
  ASSERT_EQ(SUEntitiesAddImage(root, image), SU_ERROR_NONE);
  // Turned by a quarter, three inches a pixel.
  const SUTransformation t = {{0, 3, 0, 0, -3, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}};
  SUImageSetTransform(image, &t);
  double width = 0, height = 0;
  SUImageGetDimensions(image, &width, &height);
  EXPECT_DOUBLE_EQ(width, 12);
  EXPECT_DOUBLE_EQ(height, 6);
  SUBoundingBox3D box{};
  SUEntitiesGetBoundingBox(root, &box);
  EXPECT_DOUBLE_EQ(box.max_point.y, 14);
  EXPECT_DOUBLE_EQ(box.min_point.x, -5);

  // Another image of the same definition; it lives as long as any of them.
  SUComponentDefinitionRef definition = SU_INVALID;
  SUImageGetDefinition(image, &definition);
  const SUComponentInstanceRef twin = place(definition, root);
  const SUImageRef second = SUImageFromComponentInstance(twin);
  ASSERT_TRUE(SUIsValid(second));
  EXPECT_EQ(imagesOf(root).size(), 2u);
  SUEntityRef doomed = SUImageToEntity(image);
  SUEntitiesErase(root, 1, &doomed);
  ASSERT_EQ(SUImageGetImageRep(second, &rep), SU_ERROR_NONE);
  EXPECT_EQ(data(), pixels);
  doomed = SUImageToEntity(second);
  SUEntitiesErase(root, 1, &doomed);
  size_t n = 0;
  EXPECT_EQ(SUComponentDefinitionGetNumInstances(definition, &n), SU_ERROR_INVALID_INPUT);
  size_t definitions = 9;
  SUModelGetNumComponentDefinitions(model, &definitions);
  EXPECT_EQ(definitions, 0u);
}

TEST_F(PictureTest, MetallicRoughness) {
  const SUMaterialRef material = addMaterial("m");
  SUMaterialWorkflow workflow = SUMaterialWorkflow_PBRMetallicRoughness;
  SUMaterialGetWorkflow(material, &workflow);
  EXPECT_EQ(workflow, SUMaterialWorkflow_Classic);
  SUMaterialSetRoughnessEnabled(material, true);
  SUMaterialSetRoughnessFactor(material, 0.25);
  const SUByte pixel[4] = {1, 2, 3, 4};
  SUImageRepSetData(rep, 1, 1, 32, 0, pixel);
  SUTextureRef texture = SU_INVALID;
  SUTextureCreateFromImageRep(&texture, rep);
  ASSERT_EQ(SUMaterialSetRoughnessTexture(material, texture), SU_ERROR_NONE);
  EXPECT_EQ(SUMaterialSetNormalTexture(material, texture), SU_ERROR_INVALID_INPUT)
      << "it belongs to the roughness";
  SUMaterialGetWorkflow(material, &workflow);
  EXPECT_EQ(workflow, SUMaterialWorkflow_PBRMetallicRoughness);
  SUTextureRef back = SU_INVALID;
  EXPECT_EQ(SUMaterialGetRoughnessTexture(material, &back), SU_ERROR_NONE);
  EXPECT_TRUE(SUAreEqual(back, texture));
  EXPECT_EQ(SUMaterialGetMetallicTexture(material, &back), SU_ERROR_NO_DATA);
  bool enabled = true;
  SUMaterialIsMetalnessEnabled(material, &enabled);
  EXPECT_FALSE(enabled);
}

}  // namespace
