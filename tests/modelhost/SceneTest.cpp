#include "HostFixture.h"

namespace {

class SceneTest : public ::testing::Test {
 protected:
  void TearDown() override {
    SUModelRelease(&model);
    EXPECT_EQ(modelhost_owned_objects(), 0u) << "something was not released";
  }

  // The message; empty when all went well.
  std::string load(const std::string& json) {
    const TemporaryFile file("scene.json", json);
    SUModelRelease(&model);
    SUStringRef message = SU_INVALID;
    SUStringCreate(&message);
    const SUResult result = modelhost_load(file.path().c_str(), &model, &message);
    std::string text = textOf(message);
    SUStringRelease(&message);
    EXPECT_EQ(result == SU_ERROR_NONE, SUIsValid(model));
    if (result != SU_ERROR_NONE && text.empty()) text = "no message";
    // Without the file's own name, which every message begins with.
    const auto colon = text.find(".json: ");
    return colon == std::string::npos ? text : text.substr(colon + 7);
  }

  SUModelRef model = SU_INVALID;
};

TEST_F(SceneTest, TextsInLatin1BecomeUtf8) {
  ASSERT_EQ(
      load("{\"layers\": [\"W\xe4nde\"], \"materials\": {\"Gr\xfcn\": {\"color\": \"#00ff00\","
           "\"attributes\": {\"Ma\xdf\": {\"H\xf6he\": \"fu\xdf\"}}}}}"),
      "");
  size_t n = 0;
  SUMaterialRef material = SU_INVALID;
  SUModelGetMaterials(model, 1, &material, &n);
  EXPECT_EQ(readText([&](SUStringRef* s) { return SUMaterialGetName(material, s); }), "Grün");
  SULayerRef layers[2] = {SU_INVALID, SU_INVALID};
  SUModelGetLayers(model, 2, layers, &n);
  EXPECT_EQ(readText([&](SUStringRef* s) { return SULayerGetName(layers[1], s); }), "Wände");
  SUAttributeDictionaryRef dictionary = SU_INVALID;
  SUEntityGetAttributeDictionaries(SUMaterialToEntity(material), 1, &dictionary, &n);
  EXPECT_EQ(readText([&](SUStringRef* s) { return SUAttributeDictionaryGetName(dictionary, s); }),
            "Maß");
  SUTypedValueRef value = SU_INVALID;
  SUTypedValueCreate(&value);
  EXPECT_EQ(SUAttributeDictionaryGetValue(dictionary, "Höhe", &value), SU_ERROR_NONE);
  EXPECT_EQ(readText([&](SUStringRef* s) { return SUTypedValueGetString(value, s); }), "fuß");
  SUTypedValueRelease(&value);
}

TEST_F(SceneTest, SaysEverythingTheHostHolds) {
  ASSERT_EQ(load(R"({
    "name": "Haus 家", "title": "T",
    "rendering": {"FaceFrontColor": "#112233"},
    "camera": {"eye": [1, 2, 3], "target": [4, 5, 6], "fov": 40},
    "layers": ["Walls", {"name": "Off", "visible": false, "pid": 11}],
    "folders": [{"name": "F", "visible": false, "folders": [{"name": "G", "layers": ["Trees"]}]}],
    "materials": {
      "Plain": "#ff8000",
      "Tex": {"texture": {"rows": ["ab", "cd"], "palette": {"a": "#ff0000", "b": "#00ff00",
              "c": "#0000ff", "d": "#ffffff"}, "size": [4, 2], "name": "t.png"},
              "opacity": 0.5, "pid": 12, "attributes": {"corvane_II": {"diffuse": 0.5}}},
      "Pbr": {"color": [1, 2, 3], "metallic": 0.7, "roughness": {"factor": 0.2,
              "texture": {"pattern": "checker", "colors": ["#000000", "#ffffff"], "bits": 8}}},
      "Tinted": {"texture": {"pattern": "wood", "colors": ["#654321", "#876543"]},
                 "colorize": [10, 0.1, -0.1]}
    },
    "components": {
      "Outer": {"entities": [{"instance": "Lamp", "at": [0, 0, 5]}]},
      "Lamp": {"faces_camera": true, "pid": 13, "attributes": [
        {"corvane_II": {"light-type": "point", "light-power": {"float": 2.5}, "on": true}},
        {"corvane_II": {"light-type": "other"}}],
        "entities": [{"sphere": [0, 0, 0], "radius": 2, "sides": 8}]}
    },
    "entities": [
      {"face": [[0,0,0],[10,0,0],[10,0,10],[0,0,10]], "pid": 21, "layer": "Walls",
       "holes": [[[1,0,1],[3,0,1],[3,0,3],[1,0,3]]], "openings": [[[5,0,5],[6,0,5],[6,0,6]]],
       "front": "Tex", "uv": [[0,0,0,0,0],[10,0,0,1,0],[0,0,10,0,1]], "back": "Plain",
       "smooth": [1], "soft": true},
      {"instance": "Outer", "name": "o", "matrix": [1,0,0,0, 0,1,0,0, 0,0,1,0, 7,8,9,1],
       "layer": "Trees", "hidden": true, "material": "Plain"},
      {"group": "g", "at": [1,0,0], "rotate": 90, "scale": [2,1,1], "definition_pid": 22,
       "entities": [{"group": "h", "entities": [{"box": [[0,0,0],[1,1,1]], "front": "Pbr"}]}]},
      {"image": {"pattern": "disc", "colors": ["#ff000080"], "pixels": [8, 4], "name": "i.png"},
       "as": "pic", "size": [16, 8], "at": [0, 0, 20]},
      {"image": {}, "as": "pic", "size": [4, 2], "rotate": [[1, 0, 0, 90], [0, 0, 1, 45]]},
      {"mesh": {"points": [[0,0,0],[1,0,0],[1,1,0.5],[0,1,0]], "faces": [[0,1,2,3]]}},
      {"edge": [[0,0,0],[0,0,9]], "color": "#00ff00"}
    ]})"),
            "");
  EXPECT_EQ(readText([&](SUStringRef* s) { return SUModelGetName(model, s); }), "Haus 家");
  const SUEntitiesRef root = rootOf(model);
  const auto faces = facesOf(root);
  ASSERT_EQ(faces.size(), 3u) << "a wall and a bent quad cut in two";
  int64_t id = 0;
  SUEntityGetPersistentID(SUFaceToEntity(faces[0]), &id);
  EXPECT_EQ(id, 21);
  double area = 0;
  SUFaceGetArea(faces[0], nullptr, &area);
  EXPECT_NEAR(area, 100 - 4 - 0.5, 1e-9);
  SULayerRef layer = SU_INVALID;
  SUDrawingElementGetLayer(SUFaceToDrawingElement(faces[0]), &layer);
  EXPECT_EQ(readText([&](SUStringRef* s) { return SULayerGetName(layer, s); }), "Walls");

  const auto instances = instancesOf(root);
  ASSERT_EQ(instances.size(), 1u);
  SUTransformation t{};
  SUComponentInstanceGetTransform(instances[0], &t);
  EXPECT_EQ(t.values[13], 8);
  bool hidden = false;
  SUDrawingElementGetHidden(SUComponentInstanceToDrawingElement(instances[0]), &hidden);
  EXPECT_TRUE(hidden);
  SUComponentDefinitionRef outer = SU_INVALID;
  SUComponentInstanceGetDefinition(instances[0], &outer);
  SUEntitiesRef inOuter = SU_INVALID;
  SUComponentDefinitionGetEntities(outer, &inOuter);
  SUComponentDefinitionRef lamp = SU_INVALID;
  SUComponentInstanceGetDefinition(instancesOf(inOuter).at(0), &lamp);
  SUComponentBehavior behavior{};
  SUComponentDefinitionGetBehavior(lamp, &behavior);
  EXPECT_TRUE(behavior.component_always_face_camera);
  bool manifold = false;
  SUComponentDefinitionIsManifold(lamp, &manifold);
  EXPECT_TRUE(manifold) << "a sphere is closed";
  size_t dictionaries = 0;
  SUEntityGetNumAttributeDictionaries(SUComponentDefinitionToEntity(lamp), &dictionaries);
  EXPECT_EQ(dictionaries, 2u);

  const auto groups = groupsOf(root);
  ASSERT_EQ(groups.size(), 1u);
  // Scaled, then turned, then moved: x becomes twice as long and points along y.
  SUGroupGetTransform(groups[0], &t);
  EXPECT_NEAR(t.values[1], 2, 1e-12);
  EXPECT_NEAR(t.values[4], -1, 1e-12);
  EXPECT_EQ(t.values[12], 1);
  SUComponentDefinitionRef definition = SU_INVALID;
  SUGroupGetDefinition(groups[0], &definition);
  SUEntityGetPersistentID(SUComponentDefinitionToEntity(definition), &id);
  EXPECT_EQ(id, 22);

  const auto images = imagesOf(root);
  ASSERT_EQ(images.size(), 2u);
  SUComponentDefinitionRef one = SU_INVALID, two = SU_INVALID;
  SUImageGetDefinition(images[0], &one);
  SUImageGetDefinition(images[1], &two);
  EXPECT_TRUE(SUAreEqual(one, two));
  double width = 0, height = 0;
  SUImageGetDimensions(images[1], &width, &height);
  EXPECT_NEAR(width, 4, 1e-12);
  EXPECT_EQ(readText([&](SUStringRef* s) { return SUImageGetFileName(images[1], s); }), "i.png");

  ModelHostCamera camera{};
  ASSERT_EQ(modelhost_get_camera(model, &camera), SU_ERROR_NONE);
  EXPECT_EQ(camera.target.z, 6);
  EXPECT_EQ(camera.up.z, 1);
  EXPECT_EQ(camera.field_of_view, 40);
}

TEST_F(SceneTest, RowsOfAPictureRunFromTheTop) {
  ASSERT_EQ(load(R"({"materials": {"M": {"texture": {"rows": ["ab", "cd"], "palette":
    {"a": "#ff0000", "b": "#00ff00", "c": "#0000ff", "d": "#ffffff"}}}}})"),
            "");
  SUMaterialRef material = SU_INVALID;
  size_t n = 0;
  SUModelGetMaterials(model, 1, &material, &n);
  SUTextureRef texture = SU_INVALID;
  SUMaterialGetTexture(material, &texture);
  SUImageRepRef rep = SU_INVALID;
  SUImageRepCreate(&rep);
  SUTextureGetImageRep(texture, &rep);
  SUByte bytes[12] = {};
  ASSERT_EQ(SUImageRepGetData(rep, 12, bytes), SU_ERROR_NONE);
  SUImageRepRelease(&rep);
  // Blue, white, then red, green; each pixel blue first.
  const SUByte wanted[12] = {255, 0, 0, 255, 255, 255, 0, 0, 255, 0, 255, 0};
  EXPECT_TRUE(std::equal(bytes, bytes + 12, wanted));
}

TEST_F(SceneTest, MistakesAreNamedWithTheirPlace) {
  const struct {
    const char* json;
    const char* message;
  } cases[] = {
      {"[]", "a scene is an object"},
      {"", "this is not valid JSON: parse error at line 1, column 1"},
      {"{\"name\": \"x\"", "this is not valid JSON: parse error at line 1, column"},
      {R"({"nmae": "x"})", "\"nmae\" means nothing here"},
      {R"({"name": 3})", "name: a text is wanted here"},
      {R"({"entities": {}})", "entities: a list is wanted here"},
      {R"({"entities": [{}]})", "entities[0]: one of face, mesh, box"},
      {R"({"entities": [{"face": [[0,0,0],[1,0,0]]}]})",
       "entities[0].face: at least 3 points are wanted here"},
      {R"({"entities": [{"face": [[0,0,0],[1,0,0],[2,0]]}]})",
       "entities[0].face[2]: a list of 3 numbers is wanted here"},
      {R"({"entities": [{"face": [[0,0,0],[1,0,0],[2,"x",0]]}]})",
       "entities[0].face[2][1]: a number is wanted here"},
      {R"({"entities": [{"face": [[0,0,0],[1,0,0],[2,0,0]]}]})",
       "entities[0].face: the points are not in one plane or enclose no area"},
      {R"({"entities": [{"face": [[0,0,0],[1,0,0],[0,1,0]], "smooth": [3]}]})",
       "entities[0].smooth[0]: a whole number from 0 to 2 is wanted here"},
      {R"({"entities": [{"face": [[0,0,0],[1,0,0],[0,1,0]], "holes": [[[0,0,1],[1,0,1],[0,1,1]]]}]})",
       "entities[0].holes[0]: the hole is not in the plane"},
      {R"({"entities": [{"face": [[0,0,0],[1,0,0],[0,1,0]], "front": "Brik"}]})",
       "entities[0].front: there is no material \"Brik\""},
      {R"({"entities": [{"group": "g", "entities": [{"instance": "x"}]}]})",
       "entities[0].entities[0].instance: there is no component \"x\""},
      {R"({"entities": [{"mesh": {"points": [[0,0,0]], "faces": [[0,0,1]]}}]})",
       "entities[0].mesh.faces[0][2]: a whole number from 0 to 0 is wanted here"},
      {R"({"components": {"A": {"entities": [{"instance": "A"}]}}})",
       "components.A.entities[0]: it would lie inside itself"},
      {R"({"components": {"A": {"entities": [{"instance": "B"}]},
           "B": {"entities": [{"group": "g", "entities": [{"instance": "A"}]}]}}})",
       "components.B.entities[0].entities[0]: it would lie inside itself"},
      {R"({"materials": {"M": "#12345"}})", "materials.M: a colour is wanted here"},
      {R"({"materials": {"M": {"opacity": 2}}})", "materials.M.opacity: opacity is from 0 to 1"},
      {R"({"materials": {"M": {"texture": "no.png"}}})", "materials.M.texture: \""},
      {R"({"materials": {"M": {"texture": {"pattern": "plaid", "colors": ["#000000"]}}}})",
       "materials.M.texture.pattern: there is no pattern of this name"},
      {R"({"layers": ["L"], "entities": [{"edge": [[0,0,0],[0,0,0]]}]})",
       "entities[0].edge: an edge joins two different points"},
      {R"({"entities": [{"group": "a", "pid": 5}, {"group": "b", "pid": 5}]})",
       "entities[1].pid: another entity has this id"},
      {R"({"entities": [{"group": "a", "attributes": {"d": {"k": {"flaot": 1}}}}]})",
       "entities[0].attributes.d.k.flaot: this is none of the types"},
      {R"({"entities": [{"group": "a", "attributes": {"d": {"k": 3000000000}}}]})",
       "entities[0].attributes.d.k: the number does not fit the type"},
      {R"({"entities": [{"box": [[0,0,0],[1,1,0]]}]})", "entities[0].box: the first corner"},
      {R"({"camera": {"eye": [0,0,1]}})", "camera: \"target\" is missing"},
      {R"({"entities": [{"face": [[0,0,0],[1,0,0],[0,1e999,0]]}]})",
       "a number or a text in it cannot be represented"},
  };
  for (const auto& [json, message] : cases) {
    const std::string said = load(json);
    EXPECT_EQ(said.rfind(message, 0), 0u) << json << "\n  said: " << said;
    EXPECT_EQ(said.find('\n'), std::string::npos) << "one sentence";
    EXPECT_TRUE(SUIsInvalid(model)) << json;
  }
}

TEST_F(SceneTest, DeepNestingIsRefusedNotFollowed) {
  const std::string lists(100'000, '[');
  EXPECT_EQ(load("{\"entities\": " + lists), "objects and lists are nested deeper than 200");
  std::string groups = "{\"entities\": [";
  for (int i = 0; i < 5000; ++i) groups += "{\"group\": \"g\", \"entities\": [";
  EXPECT_EQ(load(groups), "objects and lists are nested deeper than 200");
}

}  // namespace
