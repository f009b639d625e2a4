#include "HostFixture.h"

namespace {

class TextureTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    SUTextureWriterCreate(&writer);
  }
  void TearDown() override {
    SUTextureWriterRelease(&writer);
    HostTest::TearDown();
  }

  // Two by two pixels: red and green below, blue and white above.
  SUMaterialRef addFourColours(double tile) {
    return addTextured("four", 2, 2, 24, {0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 255}, tile);
  }

  SUUVQ uvqAt(SUFaceRef face, const SUPoint3D& p, long id = 0, bool front = true) {
    SUUVHelperRef helper = SU_INVALID;
    EXPECT_EQ(SUFaceGetUVHelperWithTextureHandle(face, front, !front, writer, id, &helper),
              SU_ERROR_NONE);
    SUUVQ uvq{};
    EXPECT_EQ(
        front ? SUUVHelperGetFrontUVQ(helper, &p, &uvq) : SUUVHelperGetBackUVQ(helper, &p, &uvq),
        SU_ERROR_NONE);
    SUUVQ other{};
    EXPECT_EQ(front ? SUUVHelperGetBackUVQ(helper, &p, &other)
                    : SUUVHelperGetFrontUVQ(helper, &p, &other),
              SU_ERROR_NO_DATA);
    SUUVHelperRelease(&helper);
    return uvq;
  }

  std::pair<long, long> load(SUFaceRef face) {
    long front = -1, back = -1;
    EXPECT_EQ(SUTextureWriterLoadFace(writer, face, &front, &back), SU_ERROR_NONE);
    return {front, back};
  }

  // Colour of a written picture at (u, v), (0, 0) being its lower left corner.
  SUColor colourIn(const std::string& path, double u, double v) {
    SUImageRepRef rep = SU_INVALID;
    SUImageRepCreate(&rep);
    EXPECT_EQ(SUImageRepLoadFile(rep, path.c_str()), SU_ERROR_NONE);
    SUImageRepConvertTo32BitsPerPixel(rep);
    size_t width = 0, height = 0, size = 0, bits = 0;
    SUImageRepGetPixelDimensions(rep, &width, &height);
    SUImageRepGetDataSize(rep, &size, &bits);
    std::vector<SUByte> data(size);
    SUImageRepGetData(rep, size, data.data());
    SUImageRepRelease(&rep);
    const auto x = static_cast<size_t>(u * static_cast<double>(width));
    const auto y = static_cast<size_t>(v * static_cast<double>(height));
    const SUByte* p = data.data() + (y * width + x) * 4;
    return {p[2], p[1], p[0], p[3]};
  }

  SUTextureWriterRef writer = SU_INVALID;
};

TEST_F(TextureTest, ByDefaultATextureLiesUprightAtItsSize) {
  const SUMaterialRef material = addFourColours(4);
  // A wall that faces -y, and its back: both show the picture the right way round.
  const SUFaceRef wall = addFace(root, {{0, 0, 0}, {8, 0, 0}, {8, 0, 8}, {0, 0, 8}});
  SUFaceSetFrontMaterial(wall, material);
  SUFaceSetBackMaterial(wall, material);
  SUUVQ uvq = uvqAt(wall, {2, 0, 4});
  EXPECT_DOUBLE_EQ(uvq.u, 0.5);
  EXPECT_DOUBLE_EQ(uvq.v, 1);
  EXPECT_DOUBLE_EQ(uvq.q, 1);
  uvq = uvqAt(wall, {2, 0, 4}, 0, false);
  EXPECT_DOUBLE_EQ(uvq.u, -0.5) << "seen from behind, right is -x";
  EXPECT_DOUBLE_EQ(uvq.v, 1);
  const SUFaceRef floor = addFace(root, square(0, 0, 20));
  SUFaceSetFrontMaterial(floor, material);
  uvq = uvqAt(floor, {4, 8, 0});
  EXPECT_DOUBLE_EQ(uvq.u, 1);
  EXPECT_DOUBLE_EQ(uvq.v, 2);
}

TEST_F(TextureTest, PositionedByOneToFourPoints) {
  const SUMaterialRef material = addFourColours(2);
  const SUFaceRef face = addFace(root, square(0, 0, 10));
  const struct {
    const char* what;
    Points points;
    std::vector<SUPoint2D> uvs;
    SUPoint3D at;
    double u, v;
  } cases[] = {
      {"one shifts", {{1, 1, 0}}, {{0, 0}}, {3, 5, 0}, 1, 2},
      {"two scale and turn",
       {{0, 0, 0}, {4, 0, 0}},
       {{0, 0}, {0, 1}},  // what lay along x now lies along v
       {0, 4, 0},
       -1,
       0},
      {"three are affine",
       {{0, 0, 0}, {2, 0, 0}, {0, 4, 0}},
       {{0.5, 0.5}, {1.5, 0.5}, {1, 1.5}},
       {2, 4, 0},
       2,
       1.5},
  };
  for (const auto& [what, points, uvs, at, u, v] : cases) {
    ASSERT_EQ(
        SUFacePositionMaterial(face, true, material, points.size(), points.data(), uvs.data()),
        SU_ERROR_NONE)
        << what;
    const SUUVQ uvq = uvqAt(face, at);
    EXPECT_NEAR(uvq.u, u, 1e-12) << what;
    EXPECT_NEAR(uvq.v, v, 1e-12) << what;
    EXPECT_DOUBLE_EQ(uvq.q, 1) << what;
    bool affine = false;
    SUFaceIsFrontMaterialAffine(face, &affine);
    EXPECT_TRUE(affine) << what;
  }
  const Points line{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}};
  const SUPoint2D uvs[3] = {{0, 0}, {1, 0}, {1, 1}};
  EXPECT_EQ(SUFacePositionMaterial(face, true, material, 3, line.data(), uvs),
            SU_ERROR_INVALID_ARGUMENT);
}

TEST_F(TextureTest, FourPointsDistort) {
  const SUMaterialRef material = addFourColours(2);
  // A trapezium that shows the whole picture once.
  const Points corners{{0, 0, 0}, {8, 0, 0}, {6, 4, 0}, {2, 4, 0}};
  const SUPoint2D uvs[4] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  const SUFaceRef face = addFace(root, corners);
  ASSERT_EQ(SUFacePositionMaterial(face, true, material, 4, corners.data(), uvs), SU_ERROR_NONE);
  SUFaceSetBackMaterial(face, material);
  bool affine = true;
  SUFaceIsFrontMaterialAffine(face, &affine);
  EXPECT_FALSE(affine);
  for (size_t i = 0; i < 4; ++i) {
    const SUUVQ uvq = uvqAt(face, corners[i]);
    EXPECT_NEAR(uvq.u / uvq.q, uvs[i].x, 1e-9);
    EXPECT_NEAR(uvq.v / uvq.q, uvs[i].y, 1e-9);
  }
  // The middle of the picture is where the diagonals meet, not at half the height.
  SUUVQ uvq = uvqAt(face, {4, 8.0 / 3, 0});
  EXPECT_NEAR(uvq.u / uvq.q, 0.5, 1e-9);
  EXPECT_NEAR(uvq.v / uvq.q, 0.5, 1e-9);

  // With its id, coordinates are those of the picture with the distortion in it.
  const auto [front, back] = load(face);
  EXPECT_NE(front, back) << "the back is not distorted";
  SUTextureWriterIsTextureAffine(writer, front, &affine);
  EXPECT_FALSE(affine);
  uvq = uvqAt(face, {2, 4, 0}, front);
  EXPECT_NEAR(uvq.u, 0.25, 1e-9);
  EXPECT_NEAR(uvq.v, 1, 1e-9);
  EXPECT_DOUBLE_EQ(uvq.q, 1);

  const TemporaryFile file("distorted.png");
  ASSERT_EQ(SUTextureWriterWriteTexture(writer, front, file.path().c_str(), false), SU_ERROR_NONE);
  // Where the face shows the middles of the four pixels, the written picture has their colours.
  const struct {
    double u, v;
    SUByte red, green, blue;
  } pixels[] = {{0.25, 0.25, 255, 0, 0}, {0.75, 0.25, 0, 255, 0}, {0.25, 0.75, 0, 0, 255}};
  for (const auto& [u, v, red, green, blue] : pixels) {
    // From the picture onto the trapezium: lines from the apex, heights as the perspective has
    // them.
    const double y = 4 * v * 2 / (1 + v);
    const double x = 4 + (u - 0.5) * 2 * (4 - y / 2);
    const SUColor c = colourIn(file.path(), x / 8, y / 4);
    EXPECT_NEAR(c.red, red, 60) << u << " " << v;
    EXPECT_NEAR(c.green, green, 60) << u << " " << v;
    EXPECT_NEAR(c.blue, blue, 60) << u << " " << v;
  }
}

TEST_F(TextureTest, IdsAreSharedByAffineFacesAndNotByDistortedOnes) {
  const SUMaterialRef textured = addFourColours(2);
  const SUMaterialRef plain = addMaterial("plain");
  const SUFaceRef a = addFace(root, square(0, 0, 5));
  const SUFaceRef b = addFace(root, square(20, 0, 5));
  SUFaceSetFrontMaterial(a, textured);
  SUFaceSetFrontMaterial(b, textured);
  SUFaceSetBackMaterial(a, plain);
  const SUPoint2D uvs[4] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  const Points skew{{-5, -5, 0}, {5, -5, 0}, {2, 5, 0}, {-2, 5, 0}};
  EXPECT_EQ(load(a), (std::pair{1L, 0L}));
  EXPECT_EQ(load(b), (std::pair{1L, 0L}));
  const Points affine = square(20, 0, 3);
  SUFacePositionMaterial(b, true, textured, 4, affine.data(), uvs);
  EXPECT_EQ(load(b).first, 1) << "four points that do not distort";
  SUFacePositionMaterial(b, true, textured, 4, skew.data(), uvs);
  EXPECT_EQ(load(b).first, 2);
  EXPECT_EQ(load(b).first, 2) << "loaded again";

  SUGroupRef group = SU_INVALID;
  SUGroupCreate(&group);
  SUEntitiesAddGroup(root, group);
  long id = -1;
  EXPECT_EQ(SUTextureWriterLoadEntity(writer, SUGroupToEntity(group), &id), SU_ERROR_NONE);
  EXPECT_EQ(id, 0);
  SUDrawingElementSetMaterial(SUGroupToDrawingElement(group), textured);
  SUTextureWriterLoadEntity(writer, SUGroupToEntity(group), &id);
  EXPECT_EQ(id, 1);
  // A face that inherits the group's material lays the texture at the texture's own size.
  SUEntitiesRef inGroup = SU_INVALID;
  SUGroupGetEntities(group, &inGroup);
  EXPECT_DOUBLE_EQ(uvqAt(addFace(inGroup, square(0, 0, 5)), {4, 2, 0}, id).u, 2);
  bool answer = false;
  for (const long bad : {0L, -1L, 3L, 1000L}) {
    EXPECT_EQ(SUTextureWriterIsTextureAffine(writer, bad, &answer), SU_ERROR_INVALID_INPUT) << bad;
    EXPECT_EQ(SUTextureWriterWriteTexture(writer, bad, "x.png", false), SU_ERROR_INVALID_INPUT);
  }
  // What has been loaded can be written after the material is gone.
  modelhost_remove(SUMaterialToEntity(textured));
  const TemporaryFile file("gone.png");
  EXPECT_EQ(SUTextureWriterWriteTexture(writer, 1, file.path().c_str(), false), SU_ERROR_NONE);
  EXPECT_EQ(colourIn(file.path(), 0.25, 0.25).red, 255);
  EXPECT_EQ(SUTextureWriterWriteTexture(writer, 1, "/no/such/folder/x.png", false),
            SU_ERROR_SERIALIZATION);
}

TEST_F(TextureTest, ReversedFacesSwapTheirSides) {
  const SUMaterialRef front = addMaterial("front");
  const SUFaceRef face = addFace(root, square(0, 0));
  SUFaceSetFrontMaterial(face, front);
  SUFaceReverse(face);
  SUMaterialRef now = SU_INVALID;
  EXPECT_EQ(SUFaceGetFrontMaterial(face, &now), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUFaceGetBackMaterial(face, &now), SU_ERROR_NONE);
  EXPECT_TRUE(SUAreEqual(now, front));
}

}  // namespace
