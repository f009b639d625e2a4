#include <chrono>
#include <thread>

#include "HostFixture.h"

namespace {

class ModesTest : public HostTest {
 protected:
  // Runs mesh helpers on two threads at once, each call slowed down so that they must meet.
  void runHelpersTogether() {
    const SUFaceRef face = addFace(root, square(0, 0));
    modelhost_cost("SUMeshHelperCreate", 20'000'000);
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
      threads.emplace_back([&] {
        SUMeshHelperRef helper = SU_INVALID;
        SUMeshHelperCreate(&helper, face);
        SUMeshHelperRelease(&helper);
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
};

TEST_F(ModesTest, WatchCountsAndSeesOverlaps) {
  ASSERT_EQ(modelhost_watch("meshhelper,uvhelper"), SU_ERROR_NONE);
  runHelpersTogether();
  EXPECT_EQ(modelhost_calls("SUMeshHelperCreate"), 2u);
  EXPECT_EQ(modelhost_calls("SUFaceGetPlane"), 0u);
  EXPECT_GE(modelhost_overlaps(nullptr), 1u);
  const std::string report = readText([](SUStringRef* s) {
    modelhost_overlaps(s);
    return SU_ERROR_NONE;
  });
  EXPECT_NE(report.find("meshhelper: SUMeshHelperCreate"), std::string::npos) << report;
  EXPECT_EQ(modelhost_watch("meshhelper,nonsense"), SU_ERROR_INVALID_ARGUMENT);
}

TEST_F(ModesTest, WatchIsSilentWhereNothingIsSerialised) {
  ASSERT_EQ(modelhost_watch("attrdict"), SU_ERROR_NONE);
  runHelpersTogether();
  EXPECT_EQ(modelhost_overlaps(nullptr), 0u);
}

TEST_F(ModesTest, TheNthCallFails) {
  const SUFaceRef face = addFace(root, square(0, 0));
  SUPlane3D plane{};
  modelhost_fail("SUFaceGetPlane", 2, SU_ERROR_GENERIC, false);
  EXPECT_EQ(SUFaceGetPlane(face, &plane), SU_ERROR_NONE);
  EXPECT_EQ(SUFaceGetPlane(face, &plane), SU_ERROR_GENERIC);
  EXPECT_EQ(SUFaceGetPlane(face, &plane), SU_ERROR_NONE);
  modelhost_fail("SUFaceGetPlane", 2, SU_ERROR_NO_DATA, true);
  EXPECT_EQ(SUFaceGetPlane(face, &plane), SU_ERROR_NONE);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(SUFaceGetPlane(face, &plane), SU_ERROR_NO_DATA);
  modelhost_reset_modes();
  EXPECT_EQ(SUFaceGetPlane(face, &plane), SU_ERROR_NONE);
  // Named before it has ever been called in a mode, and creating nothing.
  modelhost_fail("SUUVHelperRelease", 1, SU_ERROR_GENERIC, false);
  modelhost_fail("SUFaceGetUVHelper", 1, SU_ERROR_GENERIC, false);
  SUUVHelperRef helper = SU_INVALID;
  EXPECT_EQ(SUFaceGetUVHelper(face, true, true, SU_INVALID, &helper), SU_ERROR_GENERIC);
  EXPECT_TRUE(SUIsInvalid(helper));
}

TEST_F(ModesTest, CallsCostTime) {
  const SUFaceRef face = addFace(root, square(0, 0));
  modelhost_cost("*", 1'000'000);
  const auto start = std::chrono::steady_clock::now();
  SUPlane3D plane{};
  for (int i = 0; i < 10; ++i) SUFaceGetPlane(face, &plane);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(10));
}

}  // namespace
