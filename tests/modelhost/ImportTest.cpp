#include <algorithm>
#include <cmath>
#include <map>

#include "HostFixture.h"

// assimp loses some memory of files that it refuses; what is ours is still looked at.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:libassimp\n";
}

namespace {

namespace fs = std::filesystem;

constexpr const char* kModels = "/usr/share/assimp/models";

class ImportTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!fs::exists(kModels)) GTEST_SKIP() << "the package assimp-testmodels is not installed";
  }
  void TearDown() override {
    SUModelRelease(&model);
    EXPECT_EQ(modelhost_owned_objects(), 0u) << "something was not released";
  }

  bool load(const std::string& path) {
    SUModelRelease(&model);
    SUStringRef text = SU_INVALID;
    SUStringCreate(&text);
    const SUResult result = modelhost_load(path.c_str(), &model, &text);
    message = textOf(text);
    SUStringRelease(&text);
    return result == SU_ERROR_NONE;
  }

  bool loadModel(const std::string& name) { return load(std::string(kModels) + "/" + name); }

  // Faces of everything that is placed, each placement counted.
  static size_t placedFaces(SUEntitiesRef entities) {
    size_t faces = facesOf(entities).size();
    for (const SUGroupRef group : groupsOf(entities)) {
      SUEntitiesRef inside = SU_INVALID;
      SUGroupGetEntities(group, &inside);
      faces += placedFaces(inside);
    }
    for (const SUComponentInstanceRef instance : instancesOf(entities)) {
      SUComponentDefinitionRef definition = SU_INVALID;
      SUComponentInstanceGetDefinition(instance, &definition);
      SUEntitiesRef inside = SU_INVALID;
      SUComponentDefinitionGetEntities(definition, &inside);
      faces += placedFaces(inside);
    }
    return faces;
  }

  SUBoundingBox3D bounds() const {
    SUBoundingBox3D box{};
    SUEntitiesGetBoundingBox(rootOf(model), &box);
    return box;
  }

  SUModelRef model = SU_INVALID;
  std::string message;
};

TEST_F(ImportTest, FilesOfManyFormats) {
  std::map<std::string, int> loaded;
  int total = 0;
  int withFaces = 0;
  for (const auto& entry : fs::recursive_directory_iterator(kModels)) {
    const std::string suffix = entry.path().extension().string();
    static const std::vector<std::string> kSuffixes = {
        ".obj", ".dae", ".DAE", ".gltf", ".glb",  ".fbx", ".stl", ".ply", ".3ds", ".3DS", ".ac",
        ".off", ".dxf", ".lwo", ".x",    ".ms3d", ".b3d", ".cob", ".nff", ".ase", ".ASE", ".md2"};
    if (std::find(kSuffixes.begin(), kSuffixes.end(), suffix) == kSuffixes.end()) continue;
    if (load(entry.path().string())) {
      ++loaded[suffix];
      ++total;
      withFaces += placedFaces(rootOf(model)) > 0 ? 1 : 0;
    } else {
      EXPECT_FALSE(message.empty()) << entry.path();
      EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    }
  }
  EXPECT_GE(total, 190);
  EXPECT_GE(withFaces, 170);
  EXPECT_GE(loaded.size(), 15u) << "formats";
}

TEST_F(ImportTest, MeshesShownByTwoNodesAreComponents) {
  ASSERT_TRUE(loadModel("glTF/TwoBoxes/TwoBoxes.gltf")) << message;
  const auto instances = instancesOf(rootOf(model));
  ASSERT_EQ(instances.size(), 2u);
  SUComponentDefinitionRef a = SU_INVALID, b = SU_INVALID;
  SUComponentInstanceGetDefinition(instances[0], &a);
  SUComponentInstanceGetDefinition(instances[1], &b);
  EXPECT_TRUE(SUAreEqual(a, b));
  EXPECT_EQ(readText([&](SUStringRef* s) { return SUComponentInstanceGetName(instances[0], s); }),
            "BottomBox");
  // Metres with Y up have become inches with Z up: the small box stands on the large one.
  EXPECT_NEAR(bounds().max_point.z - bounds().min_point.z, 1.75 / 0.0254, 0.01);
  EXPECT_NEAR(bounds().max_point.x - bounds().min_point.x, 1 / 0.0254, 0.01);
}

TEST_F(ImportTest, RealFiles) {
  const struct {
    const char* file;
    size_t faces;
    const char* message;
  } cases[] = {
      {"OBJ/box.obj", 6, ""},
      {"Collada/ConcavePolygon.dae", 1, ""},
      {"OBJ/spider.obj", 1312, "56 polygons without area"},
      {"glTF2/BoxWithInfinites-glTF-Binary/BoxWithInfinites.glb", 0, "no numbers"},
      {"glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", 12, ""},
  };
  for (const auto& [file, faces, said] : cases) {
    ASSERT_TRUE(loadModel(file)) << message;
    EXPECT_EQ(placedFaces(rootOf(model)), faces) << file;
    EXPECT_NE(message.find(said), std::string::npos) << file << ": " << message;
  }
  // An embedded texture, the right way up and on every face.
  size_t n = 0;
  SUMaterialRef material = SU_INVALID;
  SUModelGetMaterials(model, 1, &material, &n);
  ASSERT_EQ(n, 1u);
  SUTextureRef texture = SU_INVALID;
  EXPECT_EQ(SUMaterialGetTexture(material, &texture), SU_ERROR_NONE);
  SUMaterialWorkflow workflow = SUMaterialWorkflow_Classic;
  SUMaterialGetWorkflow(material, &workflow);
  EXPECT_EQ(workflow, SUMaterialWorkflow_PBRMetallicRoughness);
}

// Files of older programs are in Latin-1, and so may be the names of the files that they name.
TEST_F(ImportTest, NamesInLatin1BecomeUtf8) {
  const TemporaryFile picture("bl\xe4tter.png");
  fs::copy_file(std::string(kModels) + "/OBJ/SpiderTex.jpg", picture.path());
  const std::string pictureName = fs::path(picture.path()).filename();
  const TemporaryFile materials("latin.mtl", "newmtl Gr\xfcn\nmap_Kd " + pictureName + "\n");
  const TemporaryFile file("latin.obj",
                           "mtllib " + fs::path(materials.path()).filename().string() +
                               "\no Geb\xe4ude\nv 0 0 0\nv 1 0 0\nv 1 1 0\nusemtl Gr\xfcn\n"
                               "f 1 2 3\n");
  ASSERT_TRUE(load(file.path())) << message;
  EXPECT_EQ(message, "");
  const SUGroupRef group = groupsOf(rootOf(model)).at(0);
  EXPECT_EQ(readText([&](SUStringRef* s) { return SUGroupGetName(group, s); }), "Gebäude");
  size_t n = 0;
  SUMaterialRef material = SU_INVALID;
  SUModelGetMaterials(model, 1, &material, &n);
  EXPECT_EQ(readText([&](SUStringRef* s) { return SUMaterialGetName(material, s); }), "Grün");
  SUTextureRef texture = SU_INVALID;
  ASSERT_EQ(SUMaterialGetTexture(material, &texture), SU_ERROR_NONE);
  EXPECT_TRUE(readText([&](SUStringRef* s) {
                return SUTextureGetFileName(texture, s);
              }).ends_with("blätter.png"));
}

TEST_F(ImportTest, UnreadableFilesGiveOneSentence) {
  const TemporaryFile text("text.obj", "no model at all");
  const TemporaryFile unknown("file.unknown", "x");
  for (const std::string& path :
       {std::string("/no/such/file.obj"), std::string("/tmp"), text.path(), unknown.path(),
        std::string(kModels) + "/invalid/OutOfMemory.off",
        std::string(kModels) + "/glTF2/RecursiveNodes/RecursiveNodes.gltf"}) {
    EXPECT_FALSE(load(path)) << path;
    EXPECT_EQ(message.rfind(path, 0), 0u) << message;
    EXPECT_GT(message.size(), path.size() + 4) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
  }
}

TEST_F(ImportTest, RoundThingsAreSmoothAndBoxesAreNot) {
  // A cylinder of quads on a square base, told apart by angle alone: OBJ without normals.
  std::string obj;
  for (const int z : {0, 3}) {
    for (int i = 0; i < 16; ++i) {
      obj += "v " + std::to_string(std::cos(i * 0.3926990817)) + " " + std::to_string(z) + " " +
             std::to_string(-std::sin(i * 0.3926990817)) + "\n";
    }
  }
  for (int i = 0; i < 16; ++i) {
    const int next = (i + 1) % 16;
    obj += "f " + std::to_string(i + 1) + " " + std::to_string(next + 1) + " " +
           std::to_string(next + 17) + " " + std::to_string(i + 17) + "\n";
  }
  obj += "f 17 18 19 20 21 22 23 24 25 26 27 28 29 30 31 32\n";
  const TemporaryFile file("round.obj", obj);
  ASSERT_TRUE(load(file.path())) << message;
  SUEntitiesRef entities = SU_INVALID;
  SUGroupGetEntities(groupsOf(rootOf(model)).at(0), &entities);
  EXPECT_EQ(facesOf(entities).size(), 17u) << "polygons stay polygons";
  size_t smooth = 0;
  for (const SUEdgeRef edge : edgesOf(entities)) {
    bool flag = false;
    SUEdgeGetSmooth(edge, &flag);
    smooth += flag ? 1 : 0;
  }
  EXPECT_EQ(smooth, 16u) << "the walls, not the rims";
  EXPECT_NEAR(bounds().max_point.z, 3, 1e-6) << "upright";
}

}  // namespace
