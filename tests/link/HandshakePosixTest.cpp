// What a link's objects and its start are like where objects are files of the system's own.

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include <gtest/gtest.h>

#include "LinkFixture.h"

namespace quellix {
namespace {

class HandshakePosix : public LinkTest {};

TEST_F(HandshakePosix, AProgramThatIsMissingOrNoProgramDoesNotStart) {
  ASSERT_TRUE(link.OpenChannel(&receiver));
  std::filesystem::create_directories(folder / "plain/KvApp");
  std::ofstream(folder / "plain/KvApp/KvApp.exe") << "not executable";
  for (const std::string& directory :
       {(folder / "nothing").string(), (folder / "plain").string()}) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(link.LaunchApp(directory)) << directory;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error: Failed to start the app\n");
    EXPECT_FALSE(link.IsAlive());
    link.SetMessage("dropped");
  }
}

// The renderer's segment is an object like any other: it may be made smaller at any time, and what
// is behind its end then ends the process that touches it.
TEST_F(HandshakePosix, ASegmentThatShrinksIsNotReadAnyMore) {
  namespace bi = boost::interprocess;
  ASSERT_TRUE(link.OpenChannel(&receiver));
  const auto alive = [] { return true; };
  {
    bi::shared_memory_object memory(bi::create_only, wire::kToPluginSegment, bi::read_write);
    memory.truncate(65536);
    const auto ready = ManualEvent::Create(wire::kRequestReady, alive);
    const auto done = ManualEvent::Create(wire::kRequestDone, alive);
    ready->Set();
    link.PollToPlugin();
    EXPECT_TRUE(done->Wait(0));
    done->Reset();
    ASSERT_EQ(::truncate("/dev/shm/Qlx_Mem_ToPlugin", 0), 0);
    ready->Set();
    link.PollToPlugin();
    EXPECT_FALSE(done->Wait(0));
  }
  link.ReleaseChannel();
  bi::shared_memory_object::remove(wire::kToPluginSegment);
  ManualEvent::Remove(wire::kRequestReady);
  ManualEvent::Remove(wire::kRequestDone);
}

// The model is in there.
TEST_F(HandshakePosix, TheSegmentBelongsToTheUserAlone) {
  Start();
  struct stat info {};
  ASSERT_EQ(stat("/dev/shm/Qlx_Mem_ToApp", &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
}

}  // namespace
}  // namespace quellix
