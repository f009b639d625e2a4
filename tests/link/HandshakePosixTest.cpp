// What a link's objects and its start are like where objects are files of the system's own.

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <new>
#include <thread>

#include <gtest/gtest.h>

#include "IdleProgram.h"
#include "LinkFixture.h"
#include "TestSystem.h"

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

// A link whose renderer's end of the request segment is made here.
class HandshakeRequests : public HandshakePosix {
 protected:
  void Open(RequestReceiver& answering) {
    MakeIdleProgram(folder);
    ASSERT_TRUE(link.OpenChannel(&answering));
    ASSERT_TRUE(link.LaunchApp(folder.string()));
    MakeSegment(65536);
    const auto alive = [] { return true; };
    ready = ManualEvent::Create(wire::kRequestReady, alive);
    done = ManualEvent::Create(wire::kRequestDone, alive);
  }
  void TearDown() override {
    KillProcess(link.ProcessId());
    LinkTest::TearDown();
    boost::interprocess::shared_memory_object::remove(wire::kToPluginSegment);
    ManualEvent::Remove(wire::kRequestReady);
    ManualEvent::Remove(wire::kRequestDone);
  }
  static void MakeSegment(std::int64_t bytes) {
    namespace bi = boost::interprocess;
    bi::shared_memory_object::remove(wire::kToPluginSegment);
    bi::shared_memory_object(bi::create_only, wire::kToPluginSegment, bi::read_write)
        .truncate(bytes);
  }
  static wire::RequestHeader* Header() {
    namespace bi = boost::interprocess;
    static bi::mapped_region region;
    region = bi::mapped_region(
        bi::shared_memory_object(bi::open_only, wire::kToPluginSegment, bi::read_write),
        bi::read_write);
    return static_cast<wire::RequestHeader*>(region.get_address());
  }
  // Asks, and gives what the plug-in left.
  wire::RequestHeader Ask(std::uint32_t code, std::uint64_t capacity) {
    wire::RequestHeader* const header = Header();
    *header = {};
    header->code = code;
    header->capacity = capacity;
    ready->Set();
    link.PollToPlugin();
    EXPECT_TRUE(done->Wait(0)) << "request " << code << " was not acknowledged";
    done->Reset();
    return *header;
  }

  std::unique_ptr<ManualEvent> ready;
  std::unique_ptr<ManualEvent> done;
};

// The renderer's segment is an object like any other: it may be made smaller at any time, and what
// is behind its end then ends the process that touches it.
TEST_F(HandshakeRequests, ASegmentThatShrinksIsNotReadAnyMore) {
  Open(receiver);
  Ask(100, 65536);
  ASSERT_EQ(::truncate("/dev/shm/Qlx_Mem_ToPlugin", 0), 0);
  ready->Set();
  link.PollToPlugin();
  EXPECT_FALSE(done->Wait(0));
}

class ManyScenes : public SilentReceiver {
 public:
  std::vector<SceneInfo> OnGetScenes(const Room& forScenes) override {
    if (!forScenes(1000)) return {};
    return std::vector<SceneInfo>(1000);
  }
};

// A renderer that was told that its segment is too small makes room in it, or makes another one.
TEST_F(HandshakeRequests, ASegmentThatGrowsOrIsReplacedIsUsedWhole) {
  ManyScenes scenes;
  Open(scenes);
  constexpr std::uint64_t kNeeded = 40 + 112 * 1000;
  const wire::RequestHeader refused = Ask(106, 65536);
  EXPECT_EQ(refused.code, 101u);
  EXPECT_EQ(refused.required, kNeeded);
  ASSERT_EQ(::truncate("/dev/shm/Qlx_Mem_ToPlugin", 131072), 0);
  const wire::RequestHeader grown = Ask(106, 131072);
  EXPECT_EQ(grown.code, 106u);
  EXPECT_EQ(grown.required, kNeeded);
  MakeSegment(262144);
  EXPECT_EQ(Ask(106, 262144).code, 106u);
  EXPECT_EQ(*reinterpret_cast<std::uint32_t*>(reinterpret_cast<std::byte*>(Header()) + 32), 1000u);
}

class NoMemory : public SilentReceiver {
 public:
  void SaveParameters(const std::string&, const std::vector<std::int64_t>&) override {
    throw std::bad_alloc();
  }
  std::optional<bool> GetUsePbr() override { throw std::bad_alloc(); }
};

TEST_F(HandshakeRequests, ARequestThatRunsOutOfMemoryIsAcknowledged) {
  NoMemory answers;
  Open(answers);
  testing::internal::CaptureStderr();
  EXPECT_EQ(Ask(114, 65536).required, 0u);
  EXPECT_EQ(Ask(110, 65536).code, 110u);
  const std::string told = testing::internal::GetCapturedStderr();
  EXPECT_NE(told.find("request 114 is not answered"), std::string::npos) << told;
  EXPECT_EQ(Ask(100, 65536).code, 100u);
}

// The model is in there.
TEST_F(HandshakePosix, TheSegmentBelongsToTheUserAlone) {
  Start();
  struct stat info {};
  ASSERT_EQ(stat("/dev/shm/Qlx_Mem_ToApp", &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
}

class CountingReceiver : public SilentReceiver {
 public:
  void OnReload() override { ++calls; }
  int calls = 0;
};

// Two hosts have the same names; each answers its own renderer and no other, whether it has one or
// not.
TEST_F(HandshakePosix, AnotherHostsRendererIsNotAnswered) {
  MakeIdleProgram(folder / "idle");
  for (const bool hasRenderer : {false, true}) {
    SCOPED_TRACE(hasRenderer);
    CountingReceiver first;
    IpcInterface waiting;
    ASSERT_TRUE(waiting.OpenChannel(&first));
    ASSERT_TRUE(!hasRenderer || waiting.LaunchApp((folder / "idle").string()));
    CountingReceiver second;
    IpcInterface answering;
    std::ofstream(folder / "script.json") << R"([{"idle_ms": 1, "request": 102, "repeat": 20}])";
    SetVariable("KVAPP_SCRIPT", (folder / "script.json").string());
    ASSERT_TRUE(answering.OpenChannel(&second));
    ASSERT_TRUE(answering.LaunchApp(KVAPP_DIR));
    while (first.calls + second.calls < 20) {
      waiting.PollToPlugin();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      answering.PollToPlugin();
    }
    EXPECT_EQ(first.calls, 0);
    answering.CloseApp();
    if (hasRenderer) KillProcess(waiting.ProcessId());
    waiting.ReleaseChannel();
    AwaitEnd(answering.ProcessId());
    answering.ReleaseChannel();
  }
}

// A host's child shares its memory and its descriptors, but not its channel.
TEST_F(HandshakePosix, AForkedChildLeavesTheChannelAlone) {
  Start();
  link.SetMessage("before");
  EXPECT_FALSE(link.GetLinkCamera());
  const pid_t child = ::fork();
  if (child == 0) {
    const bool alive = link.IsAlive();
    link.SetMessage("from the child");
    link.CloseApp();
    link.ReleaseChannel();
    ::_exit(alive ? 1 : 0);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0) << "the child took its parent's renderer for its own";
  EXPECT_EQ(LinkObjects().size(), 7u);
  link.SetMessage("after");
  std::vector<std::string> texts;
  for (const nlohmann::json& line : Received()) {
    if (line.at("id") == 16) texts.push_back(line.at("fields").at("text"));
  }
  EXPECT_EQ(texts, (std::vector<std::string>{"before", "after"}));
}

// A renderer that stands still has not taken what it was sent: nothing may be written over it.
TEST_F(HandshakePosix, AReloadReachesARendererThatStoodStill) {
  Start();
  link.GetLinkCamera();
  for (int i = 0; i < 3; ++i) {
    ::kill(link.ProcessId(), SIGSTOP);
    std::thread resume([this] {
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
      ::kill(link.ProcessId(), SIGCONT);
    });
    link.ReloadFromPlugin();
    link.SetMessage("behind it");
    EXPECT_FALSE(link.GetLinkCamera());
    resume.join();
  }
  std::vector<int> ids;
  for (const nlohmann::json& line : Received()) ids.push_back(line.at("id"));
  EXPECT_EQ(ids, (std::vector<int>{18, 19, 16, 18, 19, 16, 18, 19, 16, 18, 2}));
  EXPECT_EQ(Report()["faultCount"], 0);
}

}  // namespace
}  // namespace quellix
