#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "Bytes.h"
#include "FakePlugin.h"
#include "app/Platform.h"

// The renderer as a process of its own, over real shared memory.

namespace kvapp::test {

using nlohmann::json;
using std::chrono::milliseconds;

namespace {

std::uint32_t U32At(std::span<const std::byte> bytes, std::size_t at) {
  std::uint32_t value = 0;
  std::memcpy(&value, bytes.data() + at, sizeof value);
  return value;
}

std::uint64_t U64At(std::span<const std::byte> bytes, std::size_t at) {
  std::uint64_t value = 0;
  std::memcpy(&value, bytes.data() + at, sizeof value);
  return value;
}

bool ExistsAny(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (IdentityOfSharedObject(name)) return true;
  }
  return false;
}

const std::vector<std::string> kRendererObjects = {"Qlx_Mem_ToPlugin", "Qlx_Lock_ToPlugin1_seg",
                                                   "Qlx_Lock_ToPlugin2_seg"};

FakePlugin::Environment WithScript(const FakePlugin& plugin, const json& steps) {
  const auto file = plugin.Folder() / "script.json";
  std::ofstream(file) << steps.dump();
  return {{"KVAPP_SCRIPT", file.string()}};
}

void SendSmallExport(FakePlugin& plugin) {
  plugin.Send(TextCommand(14, "House"));
  plugin.Send(TextCommand(16, "Exporting materials and surfaces..."));
  plugin.Send(ProgressCommand(0));
  plugin.Send(PlainMaterial(0, 0xffffffff, "DefaultFaceFrontColor", {1, 1, 1}));
  plugin.Send(PlainMaterial(1, 0xfffffffe, "DefaultFaceBackColor", {0.6f, 0.6f, 0.7f}));
  plugin.Send(TriangleMesh(50, 7, 0, 1));
  plugin.Send(Instance(50, 8, 3));
  plugin.Send(TextCommand(16, "Exporting lights..."));
  plugin.Send(OmniLight(1, 10));
  plugin.Send(TextCommand(16, ""));
  plugin.Send(ProgressCommand(0));
}

}  // namespace

TEST(Channel, TakesAnExportAndHasWrittenEverythingWhenCloseIsAcknowledged) {
  FakePlugin plugin;
  plugin.Start({{"KVAPP_SCENE_JSON", "1"}, {"KVAPP_BYTES", "16"}});
  SendSmallExport(plugin);
  plugin.Send(Camera(5));
  plugin.Send(BareCommand(2));
  EXPECT_FALSE(ExistsAny(kRendererObjects)) << "the renderer's objects outlive its acknowledgement";
  const json report = plugin.Report();
  EXPECT_EQ(plugin.AwaitExit(), 0);
  EXPECT_EQ(report["exitReason"], "closed");
  EXPECT_EQ(report["meshes"], 1);
  EXPECT_EQ(report["placements"], 2);
  EXPECT_EQ(report["materials"], 2);
  EXPECT_EQ(report["lights"], 1);
  EXPECT_EQ(report["commandCount"], 13);
  EXPECT_EQ(report["commands"]["AppendMesh"]["bytes"], 252);
  EXPECT_EQ(report["exports"][0]["complete"], true);
  const auto lines = plugin.Lines("commands.jsonl");
  ASSERT_EQ(lines.size(), 13u);
  EXPECT_EQ(lines[5]["name"], "AppendMesh");
  EXPECT_EQ(lines[5]["fields"]["cacheKey"], 7);
  EXPECT_EQ(lines[5]["bytes"], "0a000000000000003200000000000000");
  EXPECT_EQ(plugin.Json("scene-1.json")["placements"].size(), 2u);
  EXPECT_TRUE(std::filesystem::exists(plugin.Folder() / "scene.glb"));
}

TEST(Channel, FollowsTheSegmentWhenItGrows) {
  FakePlugin plugin;
  plugin.Start();
  plugin.Send(TextCommand(14, "Before"));
  for (std::size_t bytes = 1 << 17; bytes <= 1 << 21; bytes *= 4) {
    plugin.Grow(bytes);
    // The text ends with the segment, so a renderer that kept its old view cannot read it.
    plugin.Send(TextCommand(16, std::string(bytes - 9, 'x')));
  }
  plugin.Send(BareCommand(2));
  EXPECT_EQ(plugin.AwaitExit(), 0);
  const json report = plugin.Report();
  EXPECT_EQ(report["commands"]["MemoryDestroyed"]["count"], 3);
  EXPECT_EQ(report["lastMessage"].get<std::string>().size(), (std::size_t{1} << 21) - 9);
}

// A renderer with a program beside it that draws when it is told to, or fails.
TEST(Channel, LetsThePluginGoBeforeItDrawsThePicture) {
  for (const bool fails : {false, true}) {
    FakePlugin plugin;
    const auto folder = plugin.Folder() / "KvApp";
    std::filesystem::create_directory(folder);
    plugin.program = folder / "KvApp.exe";
    std::filesystem::copy_file(KVAPP_PROGRAM, plugin.program);
    const auto go = plugin.Folder() / "go";
    std::ofstream(folder / "kvpicture")
        << "#!/bin/sh\nwhile [ ! -e " << go.string() << " ]; do sleep 0.01; done\necho drawn > \"$2\"\n"
        << (fails ? "exit 1\n" : "");
    std::filesystem::permissions(folder / "kvpicture", std::filesystem::perms::owner_all);
    plugin.Start({{"KVAPP_PICTURE", "1"}});
    SendSmallExport(plugin);
    plugin.Send(BareCommand(2));
    EXPECT_EQ(plugin.Report()["outputTroubles"], json::array());
    EXPECT_FALSE(ExistsAny(kRendererObjects));
    EXPECT_FALSE(std::filesystem::exists(plugin.Folder() / "picture.png"));
    std::ofstream(go) << "x";
    EXPECT_EQ(plugin.AwaitExit(), 0);
    EXPECT_EQ(std::filesystem::exists(plugin.Folder() / "picture.png"), !fails);
    EXPECT_EQ(plugin.Report()["outputTroubles"].size(), fails ? 1u : 0u);
  }
}

TEST(Channel, WrongBytesAreFaultsAndMakeTheStatusNonZero) {
  FakePlugin plugin;
  plugin.Start();
  plugin.Send(TextCommand(14, "House"));
  plugin.Send(BareCommand(11));
  plugin.Send(ProgressCommand(1.5f));
  plugin.Send(CachedMaterials({{2, 0, 99}}));
  plugin.Send(BareCommand(2));
  EXPECT_EQ(plugin.AwaitExit(), 3);
  const json faults = plugin.Report()["faults"];
  ASSERT_EQ(faults.size(), 3u) << faults;
  EXPECT_EQ(faults[0]["command"], 2);
  EXPECT_EQ(faults[0]["name"], "IsCached");
  EXPECT_EQ(faults[1]["text"], "progress is 1.500000, wanted 0 to 1");
  EXPECT_EQ(faults[2]["name"], "AppendCachedMaterials");
}

TEST(Channel, AnswersWhetherTheCameraIsLinkedAndAcknowledgesWhatIsNotAwaited) {
  FakePlugin plugin;
  plugin.Start(WithScript(plugin, {{{"at", 2}, {"link_camera", true}}}));
  plugin.Send(BareCommand(18));
  EXPECT_EQ(plugin.Segment()[0], std::byte{0});
  plugin.Send(BareCommand(18));
  EXPECT_EQ(plugin.Segment()[0], std::byte{1});
  plugin.Send(BareCommand(19));
  plugin.Send(BareCommand(2));
  EXPECT_EQ(plugin.AwaitExit(), 0);
}

TEST(Channel, AsksBeforeItFinishesACommandAndLogsTheAnswer) {
  FakePlugin plugin;
  plugin.Start(WithScript(
      plugin, {{{"command", "SetMessage"},
                {"nth", 2},
                {"request", {{"code", 110}, {"name", "key"}, {"bytes", "010000000203"}}}},
               {{"export_end", 1}, {"request", {{"code", 109}, {"capacity", 24}}}}}));
  plugin.Send(TextCommand(16, "one"));
  plugin.Post(TextCommand(16, "two"));
  auto segment = plugin.AwaitRequest();
  EXPECT_FALSE(plugin.Done(milliseconds(60))) << "finished without the answer";
  EXPECT_EQ(U32At(segment, 0), 110u);
  EXPECT_EQ(U64At(segment, 8), 1u << 20);
  EXPECT_EQ(U64At(segment, 24), 48u);
  EXPECT_EQ(U64At(segment, 32), 52u);
  EXPECT_EQ(U32At(segment, 40), 6u);
  EXPECT_STREQ(reinterpret_cast<const char*>(segment.data() + 48), "key");
  EXPECT_EQ(U32At(segment, 54), 0x03020000u);
  plugin.AcknowledgeRequest();
  plugin.AwaitDone();

  plugin.Send(TextCommand(14, "House"));
  plugin.Send(TriangleMesh(50, 7, 0, 1));
  plugin.Send(PlainMaterial(0, 0xffffffff, "Front", {1, 1, 1}));
  plugin.Send(PlainMaterial(1, 0xfffffffe, "Back", {1, 1, 1}));
  plugin.Send(TextCommand(16, "Exporting lights..."));
  plugin.Send(TextCommand(16, ""));
  plugin.Post(ProgressCommand(0));
  segment = plugin.AwaitRequest();
  EXPECT_EQ(U32At(segment, 0), 109u);
  EXPECT_EQ(U64At(segment, 8), 24u);
  // Too small for the answer: the code says so, and how much it takes.
  const std::uint32_t tooLarge = 101;
  const std::uint64_t required = 32;
  std::memcpy(segment.data(), &tooLarge, 4);
  std::memcpy(segment.data() + 16, &required, 8);
  plugin.AcknowledgeRequest();
  plugin.AwaitDone();
  plugin.Send(BareCommand(2));
  EXPECT_EQ(plugin.AwaitExit(), 0);
  const auto lines = plugin.Lines("requests.jsonl");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0]["acknowledged"], true);
  EXPECT_GE(lines[0]["ms"], 60);
  EXPECT_EQ(lines[0]["command"], 2);
  EXPECT_EQ(lines[1]["result"], 101);
  EXPECT_EQ(lines[1]["required"], 32);
}

TEST(Channel, AnAnswerOutsideOfItsPlaceIsAFault) {
  FakePlugin plugin;
  plugin.Start(WithScript(plugin, {{{"idle_ms", 5}, {"request", 107}}}));
  auto segment = plugin.AwaitRequest();
  const std::uint64_t required = 80;
  std::memcpy(segment.data() + 16, &required, 8);
  segment[79] = std::byte{1};
  segment[80] = std::byte{1};
  plugin.AcknowledgeRequest();
  plugin.Send(BareCommand(2));
  EXPECT_EQ(plugin.AwaitExit(), 3);
  EXPECT_EQ(plugin.Lines("requests.jsonl")[0]["answer"].get<std::string>().size(), 2u * 56);
}

TEST(Channel, QuitsCrashesExitsAndHangsAsToldByItsScript) {
  struct Case {
    const char* name;
    json step;
    int status;
    bool acknowledges;
  };
  const Case cases[] = {
      {"quit at rest", {{"idle_ms", 20}, {"quit", true}}, 0, true},
      {"exit", {{"at", 1}, {"exit", 7}}, 7, false},
      {"crash", {{"at", 1}, {"phase", "after"}, {"crash", true}}, 137, false},
      {"crash with a mutex", {{"at", 1}, {"hold_mutex", {{"event", "requestReady"}}}}, 137, false},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    FakePlugin plugin;
    plugin.Start(WithScript(plugin, json::array({test.step})));
    if (test.acknowledges) {
      EXPECT_EQ(U32At(plugin.AwaitRequest(), 0), 104u);
      plugin.AcknowledgeRequest();
    } else {
      plugin.Post(TextCommand(16, "x"));
    }
    EXPECT_EQ(plugin.AwaitExit(), test.status);
  }
}

TEST(Channel, EndsWithItsHostAndWhenAnotherHostTakesTheChannel) {
  FakePlugin plugin;
  plugin.Start();
  plugin.Send(TextCommand(14, "House"));
  plugin.RemoveNames();
  EXPECT_EQ(plugin.AwaitExit(), 0);
  EXPECT_EQ(plugin.Report()["exitReason"], "linkReplaced");
  EXPECT_FALSE(ExistsAny(kRendererObjects));
}

TEST(Channel, EndsWithItsHostEvenIfThatDiedWithALockHeld) {
  struct Case {
    const char* name;
    bool hostLocks;
    bool othersLock;
  };
  // Where the system notices the owner's death the mutex is lost with it; else it stays locked.
  for (const Case& test : {Case{"no lock", false, false}, Case{"lost with its owner", true, false},
                           Case{"locked for ever", false, true}}) {
    SCOPED_TRACE(test.name);
    FakePlugin plugin;
    const auto lock = [] {
      auto event = EventPeer::Open("Qlx_Lock_ToApp1");
      // The renderer waits on the condition by now, and will want the mutex back.
      while (!event->TakeMutex()) {
      }
      // The mapping stays.
      new EventPeer(std::move(*event));
    };
    OtherProcess host(test.hostLocks ? lock : std::function<void()>());
    // The thread sanitizer does not know that a mutex may pass to a waiter when its owner dies.
    plugin.Start({{"TSAN_OPTIONS", "report_mutex_bugs=0"}}, host.Id());
    if (!test.hostLocks) plugin.Send(TextCommand(14, "House"));
    std::this_thread::sleep_for(milliseconds(20));
    OtherProcess other(test.othersLock ? lock : std::function<void()>());
    std::this_thread::sleep_for(milliseconds(30));
    host.Kill();
    EXPECT_EQ(plugin.AwaitExit(), test.othersLock ? 4 : 0);
    EXPECT_FALSE(ExistsAny(kRendererObjects));
    if (!test.othersLock) {
      EXPECT_EQ(plugin.Report()["exitReason"], "hostGone");
    }
  }
}

TEST(Channel, HoldsAMutexForAWhileAndGoesOn) {
  FakePlugin plugin;
  plugin.Start(
      WithScript(plugin, {{{"at", 1}, {"hold_mutex", {{"event", "commandDone"}, {"then", 300}}}}}));
  plugin.Post(TextCommand(14, "House"));
  const auto start = std::chrono::steady_clock::now();
  plugin.AwaitDone();
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(250));
  plugin.Send(BareCommand(2));
  EXPECT_EQ(plugin.AwaitExit(), 0);
}

TEST(CommandLine, SaysWhatIsWrongAndEnds) {
  EXPECT_EQ(FakePlugin::RunWith({}), 2);
  EXPECT_EQ(FakePlugin::RunWith({"--host-pid"}), 2);
  EXPECT_EQ(FakePlugin::RunWith({"--host-pid", "12x"}), 2);
  EXPECT_EQ(FakePlugin::RunWith({"--host-pid", "0"}), 2);
  EXPECT_EQ(FakePlugin::RunWith({"--host-pid", "2147483000"}), 2);
}

}  // namespace kvapp::test
