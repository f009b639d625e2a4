// The promises that every call keeps, checked for every call.
#include <algorithm>
#include <functional>
#include <map>

#include "HostFixture.h"

namespace {

// One call on a handle, with a place for the result or without.
struct Getter {
  const char* name;
  const char* kind;
  std::function<SUResult(void* handle, bool withOut)> call;
};

template <class Ref, class Out>
Getter getter(const char* name, const char* kind, SUResult (*f)(Ref, Out*)) {
  return {name, kind, [f](void* handle, bool withOut) {
            Out out{};
            return f(Ref{handle}, withOut ? &out : nullptr);
          }};
}

// A list: n handles are asked for.
template <class Ref, class Out>
Getter getter(const char* name, const char* kind, SUResult (*f)(Ref, size_t, Out*, size_t*)) {
  return {name, kind, [f](void* handle, bool withOut) {
            Out out[4] = {};
            size_t n = 0;
            return f(Ref{handle}, 4, withOut ? out : nullptr, withOut ? &n : nullptr);
          }};
}

#define GETTER(kind, function) getter(#function, kind, &function)

const std::vector<Getter>& getters() {
  static const std::vector<Getter> all = {
      GETTER("model", SUModelGetEntities),
      GETTER("model", SUModelGetNumLayers),
      GETTER("model", SUModelGetLayers),
      GETTER("model", SUModelGetDefaultLayer),
      GETTER("model", SUModelGetNumLayerFolders),
      GETTER("model", SUModelGetLayerFolders),
      GETTER("model", SUModelGetNumMaterials),
      GETTER("model", SUModelGetMaterials),
      GETTER("model", SUModelGetNumComponentDefinitions),
      GETTER("model", SUModelGetComponentDefinitions),
      GETTER("model", SUModelGetRenderingOptions),
      GETTER("model", SUModelGetName),
      GETTER("entities", SUEntitiesGetBoundingBox),
      GETTER("entities", SUEntitiesGetNumFaces),
      GETTER("entities", SUEntitiesGetFaces),
      GETTER("entities", SUEntitiesGetNumGroups),
      GETTER("entities", SUEntitiesGetGroups),
      GETTER("entities", SUEntitiesGetNumImages),
      GETTER("entities", SUEntitiesGetImages),
      GETTER("entities", SUEntitiesGetNumInstances),
      GETTER("entities", SUEntitiesGetInstances),
      GETTER("face", SUFaceGetNormal),
      GETTER("face", SUFaceGetPlane),
      GETTER("face", SUFaceGetOuterLoop),
      GETTER("face", SUFaceGetNumInnerLoops),
      GETTER("face", SUFaceGetInnerLoops),
      GETTER("face", SUFaceGetNumOpenings),
      GETTER("face", SUFaceGetOpenings),
      GETTER("face", SUFaceGetNumEdges),
      GETTER("face", SUFaceGetEdges),
      GETTER("face", SUFaceGetNumVertices),
      GETTER("face", SUFaceGetVertices),
      GETTER("face", SUFaceGetFrontMaterial),
      GETTER("face", SUFaceGetBackMaterial),
      GETTER("face", SUFaceIsFrontMaterialAffine),
      GETTER("face", SUFaceIsBackMaterialAffine),
      GETTER("face", SUDrawingElementGetBoundingBox),
      GETTER("face", SUDrawingElementGetMaterial),
      GETTER("face", SUDrawingElementGetLayer),
      GETTER("face", SUDrawingElementGetHidden),
      GETTER("face", SUDrawingElementGetCastsShadows),
      GETTER("face", SUDrawingElementGetReceivesShadows),
      GETTER("face", SUEntityGetID),
      GETTER("face", SUEntityGetPersistentID),
      GETTER("face", SUEntityGetModel),
      GETTER("face", SUEntityGetParentEntities),
      GETTER("face", SUEntityGetNumAttributeDictionaries),
      GETTER("face", SUEntityGetAttributeDictionaries),
      GETTER("loop", SULoopGetNumVertices),
      GETTER("loop", SULoopGetVertices),
      GETTER("loop", SULoopGetEdges),
      GETTER("loop", SULoopIsOuterLoop),
      GETTER("loop", SULoopGetFace),
      GETTER("edge", SUEdgeGetStartVertex),
      GETTER("edge", SUEdgeGetEndVertex),
      GETTER("edge", SUEdgeGetSoft),
      GETTER("edge", SUEdgeGetSmooth),
      GETTER("edge", SUEdgeGetColor),
      GETTER("edge", SUEdgeGetNumFaces),
      GETTER("edge", SUEdgeGetFaces),
      GETTER("vertex", SUVertexGetPosition),
      GETTER("vertex", SUVertexGetNumEdges),
      GETTER("vertex", SUVertexGetEdges),
      GETTER("vertex", SUVertexGetNumFaces),
      GETTER("vertex", SUVertexGetFaces),
      GETTER("definition", SUComponentDefinitionGetName),
      GETTER("definition", SUComponentDefinitionGetDescription),
      GETTER("definition", SUComponentDefinitionGetEntities),
      GETTER("definition", SUComponentDefinitionGetType),
      GETTER("definition", SUComponentDefinitionGetBehavior),
      GETTER("definition", SUComponentDefinitionIsManifold),
      GETTER("definition", SUComponentDefinitionGetNumInstances),
      GETTER("definition", SUComponentDefinitionGetInstances),
      GETTER("definition", SUComponentDefinitionCreateInstance),
      GETTER("instance", SUComponentInstanceGetName),
      GETTER("instance", SUComponentInstanceGetTransform),
      GETTER("instance", SUComponentInstanceGetDefinition),
      GETTER("group", SUGroupGetName),
      GETTER("group", SUGroupGetTransform),
      GETTER("group", SUGroupGetEntities),
      GETTER("group", SUGroupGetDefinition),
      GETTER("image", SUImageGetName),
      GETTER("image", SUImageGetTransform),
      GETTER("image", SUImageGetFileName),
      GETTER("image", SUImageGetImageRep),
      GETTER("image", SUImageGetDefinition),
      GETTER("layer", SULayerGetName),
      GETTER("layer", SULayerGetVisibility),
      GETTER("layer", SULayerGetParentLayerFolder),
      GETTER("folder", SULayerFolderGetName),
      GETTER("folder", SULayerFolderGetVisibility),
      GETTER("folder", SULayerFolderGetParentLayerFolder),
      GETTER("folder", SULayerFolderGetNumLayers),
      GETTER("folder", SULayerFolderGetLayers),
      GETTER("folder", SULayerFolderGetNumLayerFolders),
      GETTER("folder", SULayerFolderGetLayerFolders),
      GETTER("material", SUMaterialGetName),
      GETTER("material", SUMaterialGetType),
      GETTER("material", SUMaterialGetColor),
      GETTER("material", SUMaterialGetOpacity),
      GETTER("material", SUMaterialGetUseOpacity),
      GETTER("material", SUMaterialGetTexture),
      GETTER("material", SUMaterialGetColorizeType),
      GETTER("material", SUMaterialGetWorkflow),
      GETTER("material", SUMaterialIsMetalnessEnabled),
      GETTER("material", SUMaterialGetMetallicFactor),
      GETTER("material", SUMaterialGetMetallicTexture),
      GETTER("material", SUMaterialIsRoughnessEnabled),
      GETTER("material", SUMaterialGetRoughnessFactor),
      GETTER("material", SUMaterialGetRoughnessTexture),
      GETTER("material", SUMaterialIsNormalEnabled),
      GETTER("material", SUMaterialGetNormalScale),
      GETTER("material", SUMaterialGetNormalTexture),
      GETTER("texture", SUTextureGetFileName),
      GETTER("texture", SUTextureGetUseAlphaChannel),
      GETTER("texture", SUTextureGetImageRep),
      GETTER("texture", SUTextureGetColorizedImageRep),
      GETTER("dictionary", SUAttributeDictionaryGetName),
      GETTER("dictionary", SUAttributeDictionaryGetNumKeys),
      GETTER("dictionary", SUAttributeDictionaryGetKeys),
      GETTER("options", SURenderingOptionsGetNumKeys),
      GETTER("options", SURenderingOptionsGetKeys),
      GETTER("writer", SUTextureWriterGetNumTextures),
      GETTER("helper", SUMeshHelperGetNumTriangles),
      GETTER("helper", SUMeshHelperGetNumVertices),
      GETTER("helper", SUMeshHelperGetVertexIndices),
      GETTER("helper", SUMeshHelperGetVertices),
      GETTER("helper", SUMeshHelperGetNormals),
      GETTER("helper", SUMeshHelperGetFrontSTQCoords),
      GETTER("helper", SUMeshHelperGetBackSTQCoords),
      GETTER("string", SUStringGetUTF8Length),
      GETTER("value", SUTypedValueGetType),
  };
  return all;
}

// A model with one of everything, and a handle of each kind.
class ContractTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    const SUFaceRef face = addFace(root, square(0, 0));
    SULoopRef loop = SU_INVALID;
    SUFaceGetOuterLoop(face, &loop);
    SUVertexRef vertices[4];
    size_t n = 0;
    SULoopGetVertices(loop, 4, vertices, &n);
    const SUMaterialRef material = addTextured("textured", 1, 1, 24, {1, 2, 3}, 1);
    SUTextureRef texture = SU_INVALID;
    SUMaterialGetTexture(material, &texture);
    SUFaceSetFrontMaterial(face, material);
    SUGroupRef group = SU_INVALID;
    SUGroupCreate(&group);
    SUEntitiesAddGroup(root, group);
    const SUComponentDefinitionRef definition = addDefinition("definition");
    SULayerRef layer = SU_INVALID;
    SUModelGetDefaultLayer(model, &layer);
    SULayerFolderRef folder = SU_INVALID;
    SULayerFolderCreate(&folder);
    SUModelAddLayerFolder(model, folder);
    SURenderingOptionsRef options = SU_INVALID;
    SUModelGetRenderingOptions(model, &options);
    SUAttributeDictionaryRef dictionary = SU_INVALID;
    SUEntityGetAttributeDictionary(SUFaceToEntity(face), "d", &dictionary);
    const SUByte pixel[3] = {1, 2, 3};
    SUImageRepRef rep = SU_INVALID;
    SUImageRepCreate(&rep);
    SUImageRepSetData(rep, 1, 1, 24, 0, pixel);
    SUImageRef image = SU_INVALID;
    SUImageCreateFromImageRep(&image, rep);
    SUEntitiesAddImage(root, image);
    SUImageRepRelease(&rep);
    SUTextureWriterCreate(&writer_);
    SUMeshHelperCreate(&helper_, face);
    SUStringCreate(&string_);
    SUTypedValueCreate(&value_);
    handles = {{"model", model.ptr},
               {"entities", root.ptr},
               {"face", face.ptr},
               {"loop", loop.ptr},
               {"edge", edgesOf(root).at(0).ptr},
               {"vertex", vertices[0].ptr},
               {"definition", definition.ptr},
               {"instance", place(definition, root).ptr},
               {"group", group.ptr},
               {"image", image.ptr},
               {"layer", layer.ptr},
               {"folder", folder.ptr},
               {"material", material.ptr},
               {"texture", texture.ptr},
               {"dictionary", dictionary.ptr},
               {"options", options.ptr},
               {"writer", writer_.ptr},
               {"helper", helper_.ptr},
               {"string", string_.ptr},
               {"value", value_.ptr}};
  }
  void TearDown() override {
    SUTextureWriterRelease(&writer_);
    SUMeshHelperRelease(&helper_);
    SUStringRelease(&string_);
    SUTypedValueRelease(&value_);
    HostTest::TearDown();
  }

  std::map<std::string, void*> handles;

 private:
  SUTextureWriterRef writer_ = SU_INVALID;
  SUMeshHelperRef helper_ = SU_INVALID;
  SUStringRef string_ = SU_INVALID;
  SUTypedValueRef value_ = SU_INVALID;
};

TEST_F(ContractTest, NoReadTakesAHandleOfAnotherKind) {
  // Reads that several kinds answer: of all entities, of all drawing elements, of all instances.
  const auto mayAnswer = [](const Getter& getter, const std::string& kind) {
    const std::string name = getter.name;
    static const std::vector<std::string> kNotEntities = {"model",  "entities", "options", "writer",
                                                          "helper", "string",   "value"};
    const auto among = [&](const std::vector<std::string>& list) {
      return std::find(list.begin(), list.end(), kind) != list.end();
    };
    if (name.rfind("SUEntityGet", 0) == 0) return !among(kNotEntities);
    if (name.rfind("SUDrawingElementGet", 0) == 0) {
      return among({"face", "edge", "definition", "instance", "group", "image"});
    }
    if (name.rfind("SUComponentInstanceGet", 0) == 0) return among({"instance", "group", "image"});
    return kind == getter.kind;
  };
  for (const Getter& getter : getters()) {
    for (const bool withOut : {true, false}) {
      EXPECT_EQ(getter.call(nullptr, withOut), SU_ERROR_INVALID_INPUT) << getter.name << " of null";
      for (const auto& [kind, handle] : handles) {
        if (mayAnswer(getter, kind)) continue;
        EXPECT_EQ(getter.call(handle, withOut), SU_ERROR_INVALID_INPUT)
            << getter.name << " of a " << kind;
      }
    }
  }
}

TEST_F(ContractTest, NoReadWritesThroughANullPointer) {
  for (const Getter& getter : getters()) {
    const SUResult result = getter.call(handles.at(getter.kind), false);
    EXPECT_EQ(result, SU_ERROR_NULL_POINTER_OUTPUT) << getter.name;
  }
}

// A fault at its first call makes each read answer that, and at its second call only that one.
TEST_F(ContractTest, EveryReadCanBeMadeToFail) {
  for (const Getter& getter : getters()) {
    void* handle = handles.at(getter.kind);
    const SUResult usual = getter.call(handle, false);
    modelhost_fail(getter.name, 2, SU_ERROR_MODEL_VERSION, false);
    EXPECT_EQ(getter.call(handle, false), usual) << getter.name;
    EXPECT_EQ(getter.call(handle, false), SU_ERROR_MODEL_VERSION) << getter.name;
    EXPECT_EQ(getter.call(handle, false), usual) << getter.name;
    EXPECT_EQ(modelhost_calls(getter.name), 3u) << getter.name;
    modelhost_reset_modes();
  }
}

// What a caller still holds must not be followed into a model that is gone.
TEST_F(ContractTest, LoneThingsOutliveTheModelTheyReferTo) {
  SUModelRef other = SU_INVALID;
  SUModelCreate(&other);
  SUMaterialRef material = SU_INVALID;
  SUMaterialCreate(&material);
  SUMaterialSetName(material, "m");
  SUModelAddMaterials(other, 1, &material);
  SULayerRef layer = SU_INVALID;
  SUModelGetDefaultLayer(other, &layer);
  SUComponentDefinitionRef definition = SU_INVALID;
  SUComponentDefinitionCreate(&definition);
  SUModelAddComponentDefinitions(other, 1, &definition);

  const Points points = square(0, 0);
  SUFaceRef face = SU_INVALID;
  SUFaceCreateSimple(&face, points.data(), points.size());
  SUFaceSetFrontMaterial(face, material);
  SUFaceSetBackMaterial(face, material);
  SUDrawingElementSetLayer(SUFaceToDrawingElement(face), layer);
  SUComponentInstanceRef instance = SU_INVALID;
  SUComponentDefinitionCreateInstance(definition, &instance);
  SUGeometryInputRef input = SU_INVALID;
  SUGeometryInputCreate(&input);
  SUGeometryInputSetVertices(input, points.size(), points.data());
  SULoopInputRef loop = loopOver(4);
  SULoopInputEdgeSetMaterial(loop, 0, material);
  SULoopInputEdgeSetLayer(loop, 0, layer);
  SUGeometryInputAddFace(input, &loop, nullptr);
  SUGeometryInputFaceSetLayer(input, 0, layer);
  SUModelRelease(&other);

  EXPECT_EQ(SUFaceGetFrontMaterial(face, &material), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUFaceGetBackMaterial(face, &material), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUComponentInstanceGetDefinition(instance, &definition), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUEntitiesAddInstance(root, instance, nullptr), SU_ERROR_INVALID_INPUT);
  EXPECT_EQ(SUEntitiesAddFaces(root, 1, &face), SU_ERROR_NONE);
  EXPECT_EQ(SUEntitiesFill(root, input, true), SU_ERROR_NONE);
  SULayerRef now = SU_INVALID;
  EXPECT_EQ(SUDrawingElementGetLayer(SUFaceToDrawingElement(face), &now), SU_ERROR_NONE);
  EXPECT_EQ(now.ptr, handles.at("layer"));
  SUGeometryInputRelease(&input);
  EXPECT_EQ(SUComponentInstanceRelease(&instance), SU_ERROR_NONE);
}

TEST_F(ContractTest, CreatorsNeverOverwriteALiveHandle) {
  const SUFaceRef face{handles.at("face")};
  const Points points = square(0, 0);
  const auto taken = [&]<class Ref>(const char* what, auto make, Ref ref) {
    const void* before = ref.ptr;
    EXPECT_EQ(make(&ref), SU_ERROR_OVERWRITE_VALID) << what;
    EXPECT_EQ(ref.ptr, before) << what;
  };
  taken("model", &SUModelCreate, model);
  taken("material", &SUMaterialCreate, SUMaterialRef{handles.at("material")});
  taken("layer", &SULayerCreate, SULayerRef{handles.at("layer")});
  taken("folder", &SULayerFolderCreate, SULayerFolderRef{handles.at("folder")});
  taken("group", &SUGroupCreate, SUGroupRef{handles.at("group")});
  taken("writer", &SUTextureWriterCreate, SUTextureWriterRef{handles.at("writer")});
  taken("string", &SUStringCreate, SUStringRef{handles.at("string")});
  taken("value", &SUTypedValueCreate, SUTypedValueRef{handles.at("value")});
  taken(
      "face", [&](SUFaceRef* f) { return SUFaceCreateSimple(f, points.data(), 4); }, face);
  taken(
      "helper", [&](SUMeshHelperRef* h) { return SUMeshHelperCreate(h, face); },
      SUMeshHelperRef{handles.at("helper")});
  taken(
      "instance",
      [&](SUComponentInstanceRef* i) {
        return SUComponentDefinitionCreateInstance({handles.at("definition")}, i);
      },
      SUComponentInstanceRef{handles.at("instance")});
}

}  // namespace
