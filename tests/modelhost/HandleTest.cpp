#include <atomic>
#include <thread>

#include "HostFixture.h"

namespace {

using HandleTest = HostTest;

// Whatever a caller hands over, the answer is a result code.
TEST_F(HandleTest, NullGarbageAndForeignHandlesAreRefused) {
  const SUFaceRef face = addFace(root, square(0, 0));
  int onStack = 0;
  const struct {
    const char* what;
    void* pointer;
  } cases[] = {
      {"null", nullptr},
      {"an address on the stack", &onStack},
      {"an address on the heap", model.ptr != nullptr ? this : nullptr},
      {"one", reinterpret_cast<void*>(1)},
      {"all bits", reinterpret_cast<void*>(~uintptr_t{0})},
      {"a model's handle", model.ptr},
      {"a handle with another index", reinterpret_cast<void*>(uintptr_t(face.ptr) + 100000)},
      {"a handle of another generation",
       reinterpret_cast<void*>(uintptr_t(face.ptr) + (uintptr_t{1} << 28))},
  };
  for (const auto& [what, pointer] : cases) {
    SUPlane3D plane{};
    SULoopRef loop = SU_INVALID;
    SUFaceRef copy{pointer};
    EXPECT_EQ(SUFaceGetPlane({pointer}, &plane), SU_ERROR_INVALID_INPUT) << what;
    EXPECT_EQ(SUFaceGetOuterLoop({pointer}, &loop), SU_ERROR_INVALID_INPUT) << what;
    EXPECT_EQ(SUFaceRelease(&copy), SU_ERROR_INVALID_INPUT) << what;
    EXPECT_TRUE(SUIsInvalid(SUFaceToEntity({pointer}))) << what;
    int64_t id = 7;
    if (pointer != model.ptr) {
      EXPECT_EQ(SUModelGetNumLayers({pointer}, nullptr), SU_ERROR_INVALID_INPUT) << what;
    }
    EXPECT_EQ(SUEntityGetPersistentID({pointer}, &id), SU_ERROR_INVALID_INPUT) << what;
    EXPECT_EQ(id, 7) << what;
  }
  EXPECT_EQ(SUFaceGetPlane(face, nullptr), SU_ERROR_NULL_POINTER_OUTPUT);
}

TEST_F(HandleTest, ReleasedHandlesStayDeadWhenTheirPlaceIsUsedAgain) {
  SUStringRef first = SU_INVALID;
  ASSERT_EQ(SUStringCreateFromUTF8(&first, "one"), SU_ERROR_NONE);
  const SUStringRef kept = first;
  EXPECT_EQ(SUStringRelease(&first), SU_ERROR_NONE);
  EXPECT_TRUE(SUIsInvalid(first));
  SUStringRef second = SU_INVALID;
  ASSERT_EQ(SUStringCreateFromUTF8(&second, "two"), SU_ERROR_NONE);
  size_t length = 0;
  EXPECT_EQ(SUStringGetUTF8Length(kept, &length), SU_ERROR_INVALID_INPUT);
  EXPECT_FALSE(SUAreEqual(kept, second));
  EXPECT_EQ(SUStringCreate(&second), SU_ERROR_OVERWRITE_VALID);
  EXPECT_EQ(SUStringRelease(&second), SU_ERROR_NONE);
}

TEST_F(HandleTest, EverythingInAModelDiesWithIt) {
  SUModelRef other = SU_INVALID;
  SUModelCreate(&other);
  const SUFaceRef face = addFace(rootOf(other), square(0, 0));
  SULoopRef loop = SU_INVALID;
  SUFaceGetOuterLoop(face, &loop);
  EXPECT_EQ(SUModelRelease(&other), SU_ERROR_NONE);
  size_t count = 0;
  SUPlane3D plane{};
  EXPECT_EQ(SUFaceGetPlane(face, &plane), SU_ERROR_INVALID_INPUT);
  EXPECT_EQ(SULoopGetNumVertices(loop, &count), SU_ERROR_INVALID_INPUT);
}

TEST_F(HandleTest, WhatTheModelOwnsCannotBeReleased) {
  SUFaceRef face = addFace(root, square(0, 0));
  SUMaterialRef material = addMaterial("M");
  SUComponentDefinitionRef definition = addDefinition("D");
  SUComponentInstanceRef instance = place(definition, root);
  EXPECT_EQ(SUFaceRelease(&face), SU_ERROR_INVALID_OPERATION);
  EXPECT_EQ(SUMaterialRelease(&material), SU_ERROR_INVALID_OPERATION);
  EXPECT_EQ(SUComponentDefinitionRelease(&definition), SU_ERROR_INVALID_OPERATION);
  EXPECT_EQ(SUComponentInstanceRelease(&instance), SU_ERROR_INVALID_OPERATION);
  // And what is there already cannot be added once more.
  EXPECT_EQ(SUEntitiesAddFaces(root, 1, &face), SU_ERROR_INVALID_INPUT);
  EXPECT_EQ(SUEntitiesAddInstance(root, instance, nullptr), SU_ERROR_INVALID_INPUT);
}

TEST_F(HandleTest, ConversionsKeepTheHandleAndRefuseOtherKinds) {
  SUGroupRef group = SU_INVALID;
  SUGroupCreate(&group);
  SUEntitiesAddGroup(root, group);
  const SUEntityRef entity = SUGroupToEntity(group);
  EXPECT_EQ(SUEntityGetType(entity), SURefType_Group);
  EXPECT_TRUE(SUAreEqual(SUGroupFromEntity(entity), group));
  EXPECT_TRUE(SUIsInvalid(SUFaceFromEntity(entity)));
  EXPECT_TRUE(SUIsInvalid(SUImageFromEntity(entity)));
  const SUComponentInstanceRef instance = SUGroupToComponentInstance(group);
  EXPECT_TRUE(SUAreEqual(SUGroupFromComponentInstance(instance), group));
  const SUTransformation moved = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 5, 6, 7, 1}};
  EXPECT_EQ(SUComponentInstanceSetTransform(instance, &moved), SU_ERROR_NONE);
  SUTransformation back{};
  EXPECT_EQ(SUGroupGetTransform(group, &back), SU_ERROR_NONE);
  EXPECT_EQ(back.values[13], 6);
  EXPECT_EQ(SUEntityGetType({this}), SURefType_Unknown);
}

TEST_F(HandleTest, ListsAreCutToTheLengthThatIsAskedFor) {
  for (int i = 0; i < 3; ++i) addFace(root, square(5.0 * i, 0));
  SUFaceRef two[2] = {SU_INVALID, SU_INVALID};
  size_t count = 9;
  EXPECT_EQ(SUEntitiesGetFaces(root, 2, two, &count), SU_ERROR_NONE);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(SUEntitiesGetFaces(root, 2, nullptr, &count), SU_ERROR_NULL_POINTER_OUTPUT);
  char text[4] = {'x', 'x', 'x', 'x'};
  SUStringRef string = SU_INVALID;
  SUStringCreateFromUTF8(&string, "abcdef");
  EXPECT_EQ(SUStringGetUTF8(string, 4, text, &count), SU_ERROR_NONE);
  EXPECT_STREQ(text, "abc");
  SUStringRelease(&string);
}

// Reads run beside each other, and beside helpers that come and go; the thread sanitizer watches.
TEST_F(HandleTest, ParallelReads) {
  for (int i = 0; i < 50; ++i) addFace(root, square(3.0 * i, 0));
  const auto faces = facesOf(root);
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int round = 0; round < 20; ++round) {
        for (const SUFaceRef face : faces) {
          SUPlane3D plane{};
          SUMeshHelperRef helper = SU_INVALID;
          size_t triangles = 0;
          if (SUFaceGetPlane(face, &plane) != SU_ERROR_NONE || plane.c != 1) ++wrong;
          if (SUMeshHelperCreate(&helper, face) != SU_ERROR_NONE) ++wrong;
          SUMeshHelperGetNumTriangles(helper, &triangles);
          if (triangles != 2) ++wrong;
          if (SUMeshHelperRelease(&helper) != SU_ERROR_NONE) ++wrong;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
