#include "HostFixture.h"

namespace {

class AttributeTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    SUTypedValueCreate(&value);
  }
  void TearDown() override {
    SUTypedValueRelease(&value);
    HostTest::TearDown();
  }
  SUTypedValueRef value = SU_INVALID;
};

TEST_F(AttributeTest, AValueIsReadAsWhatItIsAndNothingElse) {
  const SUColor red{255, 0, 0, 128};
  const double vector[3] = {1, 2, 3};
  const struct {
    SUTypedValueType type;
    SUResult stored;
  } cases[] = {
      {SUTypedValueType_Byte, SUTypedValueSetByte(value, 'x')},
      {SUTypedValueType_Short, SUTypedValueSetInt16(value, -5)},
      {SUTypedValueType_Int32, SUTypedValueSetInt32(value, 3)},
      {SUTypedValueType_Float, SUTypedValueSetFloat(value, 2.5f)},
      {SUTypedValueType_Double, SUTypedValueSetDouble(value, 2.5)},
      {SUTypedValueType_Bool, SUTypedValueSetBool(value, true)},
      {SUTypedValueType_Color, SUTypedValueSetColor(value, &red)},
      {SUTypedValueType_Time, SUTypedValueSetTime(value, 86400)},
      {SUTypedValueType_String, SUTypedValueSetString(value, "日本")},
      {SUTypedValueType_Vector3D, SUTypedValueSetVector3d(value, vector)},
  };
  for (const auto& [type, stored] : cases) EXPECT_EQ(stored, SU_ERROR_NONE) << type;
  SUTypedValueType type = SUTypedValueType_Empty;
  SUTypedValueGetType(value, &type);
  EXPECT_EQ(type, SUTypedValueType_Vector3D);

  SUTypedValueSetInt32(value, 3);
  SUTypedValueGetType(value, &type);
  EXPECT_EQ(type, 3);
  double d = 7;
  float f = 7;
  bool b = false;
  int32_t i = 0;
  size_t n = 0;
  EXPECT_EQ(SUTypedValueGetDouble(value, &d), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUTypedValueGetFloat(value, &f), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUTypedValueGetBool(value, &b), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUTypedValueGetNumArrayItems(value, &n), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUTypedValueGetInt32(value, &i), SU_ERROR_NONE);
  EXPECT_EQ(i, 3);
  EXPECT_EQ(d, 7) << "a refused read leaves the result alone";
}

TEST_F(AttributeTest, ItemsOfAnArrayBelongToIt) {
  SUTypedValueRef items[2] = {SU_INVALID, SU_INVALID};
  SUTypedValueCreate(&items[0]);
  SUTypedValueCreate(&items[1]);
  SUTypedValueSetString(items[0], "a");
  SUTypedValueSetDouble(items[1], 1.5);
  ASSERT_EQ(SUTypedValueSetArrayItems(value, 2, items), SU_ERROR_NONE);
  SUTypedValueRelease(&items[0]);
  SUTypedValueRelease(&items[1]);
  auto inside =
      listOf<SUTypedValueRef>(&SUTypedValueGetNumArrayItems, &SUTypedValueGetArrayItems, value);
  ASSERT_EQ(inside.size(), 2u);
  EXPECT_EQ(readText([&](SUStringRef* s) { return SUTypedValueGetString(inside[0], s); }), "a");
  SUTypedValueRef first = inside[0];
  EXPECT_EQ(SUTypedValueRelease(&first), SU_ERROR_INVALID_OPERATION);
  // An array that becomes one of its own items.
  ASSERT_EQ(SUTypedValueSetArrayItems(value, 1, &inside[1]), SU_ERROR_NONE);
  EXPECT_EQ(SUTypedValueSetBool(value, true), SU_ERROR_NONE);
  EXPECT_EQ(SUTypedValueSetBool(inside[0], true), SU_ERROR_INVALID_INPUT);
}

TEST_F(AttributeTest, DictionariesKeepTheirOrderAndMayShareAName) {
  const SUEntityRef face = SUFaceToEntity(addFace(root, square(0, 0)));
  for (const int n : {1, 2}) {
    SUAttributeDictionaryRef dictionary = SU_INVALID;
    SUAttributeDictionaryCreate(&dictionary, "twice");
    SUTypedValueSetInt32(value, n);
    SUAttributeDictionarySetValue(dictionary, "n", value);
    ASSERT_EQ(SUEntityAddAttributeDictionary(face, dictionary), SU_ERROR_NONE);
    EXPECT_EQ(SUAttributeDictionaryRelease(&dictionary), SU_ERROR_INVALID_OPERATION);
  }
  SUAttributeDictionaryRef made = SU_INVALID;
  ASSERT_EQ(SUEntityGetAttributeDictionary(face, "made", &made), SU_ERROR_NONE);
  const auto all = listOf<SUAttributeDictionaryRef>(&SUEntityGetNumAttributeDictionaries,
                                                    &SUEntityGetAttributeDictionaries, face);
  ASSERT_EQ(all.size(), 3u);
  int32_t n = 0;
  ASSERT_EQ(SUAttributeDictionaryGetValue(all[0], "n", &value), SU_ERROR_NONE);
  SUTypedValueGetInt32(value, &n);
  EXPECT_EQ(n, 1);
  EXPECT_EQ(SUAttributeDictionaryGetValue(all[0], "missing", &value), SU_ERROR_NO_DATA);
  size_t keys = 9;
  SUAttributeDictionaryGetNumKeys(made, &keys);
  EXPECT_EQ(keys, 0u);
  SUAttributeDictionaryRef null = SU_INVALID;
  EXPECT_EQ(SUAttributeDictionaryGetValue(null, "n", &value), SU_ERROR_INVALID_INPUT);
}

TEST_F(AttributeTest, RenderingOptions) {
  SURenderingOptionsRef options = SU_INVALID;
  ASSERT_EQ(SUModelGetRenderingOptions(model, &options), SU_ERROR_NONE);
  SUColor color{};
  for (const char* key : {"FaceFrontColor", "FaceBackColor"}) {
    ASSERT_EQ(SURenderingOptionsGetValue(options, key, &value), SU_ERROR_NONE) << key;
    EXPECT_EQ(SUTypedValueGetColor(value, &color), SU_ERROR_NONE) << key;
  }
  const SUColor green{0, 255, 0, 255};
  SUTypedValueSetColor(value, &green);
  SURenderingOptionsSetValue(options, "FaceFrontColor", value);
  SURenderingOptionsGetValue(options, "FaceFrontColor", &value);
  SUTypedValueGetColor(value, &color);
  EXPECT_EQ(color.green, 255);
  EXPECT_EQ(color.red, 0);
  EXPECT_EQ(SURenderingOptionsGetValue(options, "NoSuchOption", &value), SU_ERROR_NO_DATA);
}

TEST_F(AttributeTest, LayersAndFolders) {
  SULayerRef layer = SU_INVALID;
  SULayerCreate(&layer);
  SULayerSetName(layer, "Bäume");
  ASSERT_EQ(SUModelAddLayers(model, 1, &layer), SU_ERROR_NONE);
  SULayerRef twin = SU_INVALID;
  SULayerCreate(&twin);
  SULayerSetName(twin, "Bäume");
  EXPECT_EQ(SUModelAddLayers(model, 1, &twin), SU_ERROR_DUPLICATE);
  EXPECT_EQ(SULayerRelease(&twin), SU_ERROR_NONE);
  SULayerFolderRef outer = SU_INVALID, inner = SU_INVALID, parent = SU_INVALID;
  EXPECT_EQ(SULayerGetParentLayerFolder(layer, &parent), SU_ERROR_NO_DATA);
  SULayerFolderCreate(&outer);
  SULayerFolderCreate(&inner);
  SUModelAddLayerFolder(model, outer);
  SUModelAddLayerFolder(model, inner);
  ASSERT_EQ(SULayerFolderAddLayerFolder(outer, inner), SU_ERROR_NONE);
  EXPECT_EQ(SULayerFolderAddLayerFolder(inner, outer), SU_ERROR_INVALID_ARGUMENT) << "a circle";
  ASSERT_EQ(SULayerFolderAddLayer(inner, layer), SU_ERROR_NONE);
  SULayerFolderSetVisibility(outer, false);
  bool visible = false;
  SULayerGetVisibility(layer, &visible);
  EXPECT_TRUE(visible) << "a layer's own switch";
  ASSERT_EQ(SULayerGetParentLayerFolder(layer, &parent), SU_ERROR_NONE);
  ASSERT_EQ(SULayerFolderGetParentLayerFolder(parent, &parent), SU_ERROR_NONE);
  SULayerFolderGetVisibility(parent, &visible);
  EXPECT_FALSE(visible);
  EXPECT_EQ(SULayerFolderGetParentLayerFolder(parent, &parent), SU_ERROR_NO_DATA);
}

}  // namespace
