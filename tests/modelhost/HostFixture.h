// A model to build in, and short ways to say what the API takes many lines for.
#pragma once

#include <SketchUpAPI/sketchup.h>
#include <gtest/gtest.h>
#include <modelhost/ModelHost.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vector>

using Points = std::vector<SUPoint3D>;

inline std::string textOf(SUStringRef string) {
  size_t length = 0;
  SUStringGetUTF8Length(string, &length);
  std::string text(length + 1, '\0');
  SUStringGetUTF8(string, text.size(), text.data(), &length);
  text.resize(length);
  return text;
}

// The text that get(SUStringRef*) gives.
template <class Get>
std::string readText(Get get) {
  SUStringRef string = SU_INVALID;
  SUStringCreate(&string);
  EXPECT_EQ(get(&string), SU_ERROR_NONE);
  const std::string text = textOf(string);
  SUStringRelease(&string);
  return text;
}

template <class Ref, class Count, class Get, class... Arguments>
std::vector<Ref> listOf(Count count, Get get, Arguments... arguments) {
  size_t n = 0;
  EXPECT_EQ(count(arguments..., &n), SU_ERROR_NONE);
  std::vector<Ref> list(n, Ref(SU_INVALID));
  if (n > 0) {
    EXPECT_EQ(get(arguments..., n, list.data(), &n), SU_ERROR_NONE);
  }
  list.resize(n);
  return list;
}

inline std::vector<SUFaceRef> facesOf(SUEntitiesRef entities) {
  return listOf<SUFaceRef>(&SUEntitiesGetNumFaces, &SUEntitiesGetFaces, entities);
}
inline std::vector<SUEdgeRef> edgesOf(SUEntitiesRef entities) {
  return listOf<SUEdgeRef>(&SUEntitiesGetNumEdges, &SUEntitiesGetEdges, entities, false);
}
inline std::vector<SUGroupRef> groupsOf(SUEntitiesRef entities) {
  return listOf<SUGroupRef>(&SUEntitiesGetNumGroups, &SUEntitiesGetGroups, entities);
}
inline std::vector<SUComponentInstanceRef> instancesOf(SUEntitiesRef entities) {
  return listOf<SUComponentInstanceRef>(&SUEntitiesGetNumInstances, &SUEntitiesGetInstances,
                                        entities);
}
inline std::vector<SUImageRef> imagesOf(SUEntitiesRef entities) {
  return listOf<SUImageRef>(&SUEntitiesGetNumImages, &SUEntitiesGetImages, entities);
}
inline SUEntitiesRef rootOf(SUModelRef model) {
  SUEntitiesRef root = SU_INVALID;
  EXPECT_EQ(SUModelGetEntities(model, &root), SU_ERROR_NONE);
  return root;
}

inline SUFaceRef addFace(SUEntitiesRef entities, const Points& points) {
  SUFaceRef face = SU_INVALID;
  EXPECT_EQ(SUFaceCreateSimple(&face, points.data(), points.size()), SU_ERROR_NONE);
  EXPECT_EQ(SUEntitiesAddFaces(entities, 1, &face), SU_ERROR_NONE);
  return face;
}

inline SULoopInputRef loopOver(size_t n) {
  SULoopInputRef loop = SU_INVALID;
  SULoopInputCreate(&loop);
  for (size_t i = 0; i < n; ++i) SULoopInputAddVertexIndex(loop, i);
  return loop;
}

// A square of side 2 around (x, y) in the plane z = 0, counter-clockwise from above.
inline Points square(double x, double y, double half = 1) {
  return {{x - half, y - half, 0},
          {x + half, y - half, 0},
          {x + half, y + half, 0},
          {x - half, y + half, 0}};
}

class HostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(SUModelCreate(&model), SU_ERROR_NONE);
    root = rootOf(model);
    owned_ = modelhost_owned_objects();
  }
  void TearDown() override {
    modelhost_reset_modes();
    SUModelRelease(&model);
    EXPECT_EQ(modelhost_owned_objects(), owned_) << "something was not released";
  }

  SUMaterialRef addMaterial(const char* name) {
    SUMaterialRef material = SU_INVALID;
    SUMaterialCreate(&material);
    SUMaterialSetName(material, name);
    EXPECT_EQ(SUModelAddMaterials(model, 1, &material), SU_ERROR_NONE);
    return material;
  }

  // A texture of given pixels (rows from the bottom up) whose tile is `tile` wide and high.
  SUMaterialRef addTextured(const char* name, size_t width, size_t height, size_t bits,
                            const std::vector<SUByte>& pixels, double tile) {
    const SUMaterialRef material = addMaterial(name);
    SUImageRepRef rep = SU_INVALID;
    SUImageRepCreate(&rep);
    EXPECT_EQ(SUImageRepSetData(rep, width, height, bits, 0, pixels.data()), SU_ERROR_NONE);
    SUTextureRef texture = SU_INVALID;
    EXPECT_EQ(SUTextureCreateFromImageRep(&texture, rep), SU_ERROR_NONE);
    SUImageRepRelease(&rep);
    EXPECT_EQ(SUTextureSetDimensions(texture, 1 / tile, 1 / tile), SU_ERROR_NONE);
    EXPECT_EQ(SUMaterialSetTexture(material, texture), SU_ERROR_NONE);
    return material;
  }

  SUComponentDefinitionRef addDefinition(const char* name) {
    SUComponentDefinitionRef definition = SU_INVALID;
    SUComponentDefinitionCreate(&definition);
    SUComponentDefinitionSetName(definition, name);
    EXPECT_EQ(SUModelAddComponentDefinitions(model, 1, &definition), SU_ERROR_NONE);
    return definition;
  }

  SUComponentInstanceRef place(SUComponentDefinitionRef definition, SUEntitiesRef entities) {
    SUComponentInstanceRef instance = SU_INVALID;
    EXPECT_EQ(SUComponentDefinitionCreateInstance(definition, &instance), SU_ERROR_NONE);
    EXPECT_EQ(SUEntitiesAddInstance(entities, instance, nullptr), SU_ERROR_NONE);
    return instance;
  }

  static SUEntitiesRef inside(SUComponentDefinitionRef definition) {
    SUEntitiesRef entities = SU_INVALID;
    EXPECT_EQ(SUComponentDefinitionGetEntities(definition, &entities), SU_ERROR_NONE);
    return entities;
  }

  SUModelRef model = SU_INVALID;
  SUEntitiesRef root = SU_INVALID;

 private:
  size_t owned_ = 0;
};

// A file that is gone when the test ends.
class TemporaryFile {
 public:
  // A path where nothing is yet.
  explicit TemporaryFile(const std::string& name)
      : path_(std::filesystem::temp_directory_path() /
              ("modelhost_" + std::to_string(::getpid()) + "_" + name)) {}
  TemporaryFile(const std::string& name, const std::string& content) : TemporaryFile(name) {
    std::ofstream(path_, std::ios::binary) << content;
  }
  ~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  std::string path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};
