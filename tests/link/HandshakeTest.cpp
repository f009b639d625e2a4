// Who waits for whom: pipelining, throttling, held commands, and a renderer that goes away.

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "LinkFixture.h"
#include "TestSystem.h"
#include "support/Switches.h"

namespace quellix {
namespace {

using nlohmann::json;
using std::chrono::milliseconds;

double MillisecondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

std::vector<int> Ids(const std::vector<json>& commands) {
  std::vector<int> ids;
  for (const json& line : commands) ids.push_back(line.at("id"));
  return ids;
}

class Handshake : public LinkTest {};

// The renderer takes its time for each of these. A completion stands until somebody waits for it,
// and that the next command waits for the last is seen in what is received.
TEST_F(Handshake, OnlyPipelinedCommandsLeaveTheirWaitToTheNext) {
  Start(R"([{"command": "UpdateInstanceTransform", "delay_ms": 200},
            {"command": "SetMessage", "delay_ms": 200},
            {"command": "GetLinkCamera", "delay_ms": 200},
            {"command": "ReloadFromPlugin", "delay_ms": 60}])");
  const float matrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  const bool pipelined = IpcPipelineEnabled();
  const auto done = ManualEvent::Open(wire::kCommandDone, [] { return true; });
  const double all = MillisecondsOf([&] {
    const double first = MillisecondsOf([&] { link.UpdateInstanceTransform(1, matrix); });
    EXPECT_TRUE(pipelined || first > 190.0) << "the sender returned after " << first << " ms";
    EXPECT_EQ(done->Wait(pipelined ? ManualEvent::kInfinite : 0), pipelined);
    link.SetMessage("second");
    link.GetLinkCamera();
  });
  EXPECT_GT(all, 590.0) << "three commands' waits must be in here";
  // A reload's end is not taken for the end of the next one, whose own wait is that of the next.
  const double reload = MillisecondsOf([&] {
    link.ReloadFromPlugin();
    link.SetLinkCamera(true);
  });
  EXPECT_GT(reload, 50.0);
  link.ReloadFromPlugin();
  EXPECT_TRUE(done->Wait(ManualEvent::kInfinite));
  EXPECT_EQ(Ids(Received()), (std::vector<int>{24, 16, 18, 19, 26, 19, 2}));
  EXPECT_EQ(Report()["faultCount"], 0);
}

TEST_F(Handshake, TheAnswerOfTheCameraLinkIsTheRenderers) {
  Start(R"([{"command": "GetLinkCamera", "nth": 2, "link_camera": true},
            {"command": "GetLinkCamera", "nth": 3, "link_camera": false}])");
  EXPECT_FALSE(link.GetLinkCamera());
  EXPECT_TRUE(link.GetLinkCamera());
  EXPECT_FALSE(link.GetLinkCamera());
}

TEST_F(Handshake, ProgressIsSentWhenItMoves) {
  Start();
  for (const float fraction : {0.5f, 0.505f, 0.52f, 1.0f, 1.0f, 0.0f, 0.0f, 0.005f, 0.011f}) {
    link.SetProgress(fraction);
  }
  std::vector<float> sent;
  for (const json& line : Received()) {
    if (line.at("id") == 17) sent.push_back(line.at("fields").at("progress"));
  }
  EXPECT_EQ(sent, (std::vector<float>{0.5f, 0.52f, 1.0f, 1.0f, 0.0f, 0.0f, 0.011f}));
}

// Sends from inside a request, while the command that made the renderer ask is in flight.
class SendingReceiver : public SilentReceiver {
 public:
  explicit SendingReceiver(IpcInterface& linkToUse) : link(linkToUse) {}
  void OnReload() override {
    linkedInCallback.push_back(link.GetLinkCamera());
    link.SetMessage("held 1");
    link.SetProgress(0.25f);
    link.SetProgress(0.255f);
    link.SetMessage("held 2");
    ++calls;
  }
  IpcInterface& link;
  int calls = 0;
  std::vector<bool> linkedInCallback;
};

TEST_F(Handshake, WhatACallbackSendsGoesOutRightAfterTheCommandInFlight) {
  SendingReceiver sender(link);
  Start(R"([{"command": "SetModelName", "request": 102},
            {"command": "GetLinkCamera", "request": 102, "link_camera": true}])",
        &sender);
  link.SetModelName("model");
  EXPECT_TRUE(link.GetLinkCamera());
  EXPECT_EQ(sender.calls, 2);
  EXPECT_EQ(sender.linkedInCallback, (std::vector<bool>{false, false}));
  const std::vector<json> commands = Received();
  EXPECT_EQ(Ids(commands), (std::vector<int>{14, 16, 17, 16, 18, 16, 16, 2}));
  EXPECT_EQ(Report()["faultCount"], 0);
}

// Nobody waits for a pipelined command until the next one: what a callback holds back behind it
// must still go out by itself.
TEST_F(Handshake, WhatAnIdlePollHoldsIsSentByThatPoll) {
  SendingReceiver sender(link);
  Start(R"([{"command": "SetModelName", "request": 102}])", &sender);
  link.SetModelName("model");
  while (sender.calls == 0) {
    link.PollToPlugin();
    std::this_thread::sleep_for(milliseconds(10));
  }
  const auto logged = [&] {
    std::ifstream log(folder / "commands.jsonl");
    return std::count(std::istreambuf_iterator<char>(log), {}, '\n');
  };
  while (logged() < 4) std::this_thread::sleep_for(milliseconds(10));
  EXPECT_EQ(Ids(Received()), (std::vector<int>{14, 16, 17, 16, 2}));
}

// Commands from a callback at rest are commands like any others: awaited, answered, in order.
class CallingReceiver : public SilentReceiver {
 public:
  explicit CallingReceiver(IpcInterface& linkToUse) : link(linkToUse) {}
  void OnReload() override {
    held = link.WouldHold();
    link.SetMessage("first");
    linked = link.GetLinkCamera();
    link.SetMessage("second");
    heldAtTheEnd = link.WouldHold();
    ++calls;
  }
  IpcInterface& link;
  int calls = 0;
  bool held = true;
  bool heldAtTheEnd = true;
  bool linked = false;
};

TEST_F(Handshake, ACallbackAtRestSendsAsAnyOther) {
  CallingReceiver caller(link);
  // Nobody has waited for the command before it yet.
  Start(R"([{"command": "SetModelName", "link_camera": true}, {"idle_ms": 5, "request": 102}])",
        &caller);
  link.SetModelName("model");
  while (caller.calls == 0) {
    std::this_thread::sleep_for(milliseconds(1));
    link.PollToPlugin();
  }
  EXPECT_FALSE(caller.held || caller.heldAtTheEnd);
  EXPECT_TRUE(caller.linked);
  EXPECT_EQ(Ids(Received()), (std::vector<int>{14, 16, 18, 16, 2}));
  EXPECT_EQ(Report()["faultCount"], 0);
}

// However long the renderer takes for a reload that it was only told of, the end of it is not taken
// for that of a later command: no answer is made up, and the closing is waited for.
TEST_F(Handshake, ALateEndOfAReloadIsNotThatOfALaterCommand) {
  for (const int delay : {150, 1400}) {
    SCOPED_TRACE(delay);
    Start(R"([{"command": "ReloadFromPlugin", "repeat": 2, "delay_ms": )" + std::to_string(delay) +
          R"(}, {"command": "GetLinkCamera", "repeat": 2, "delay_ms": 30},
              {"command": "SetMessage", "delay_ms": 100}, {"command": "CloseApp", "delay_ms": 150}])");
    link.ReloadFromPlugin();
    EXPECT_FALSE(link.GetLinkCamera());
    link.ReloadFromPlugin();
    link.SetMessage("behind it");
    EXPECT_FALSE(link.GetLinkCamera());
    link.CloseApp();
    // The outputs are written before the closing is acknowledged.
    EXPECT_EQ(Report()["exitReason"], "closed");
    EXPECT_EQ(Ids(Received()), (std::vector<int>{19, 18, 19, 16, 18, 2}));
    EXPECT_EQ(Report()["faultCount"], 0);
    link.ReleaseChannel();
  }
}

// The usual first size is also that of a segment made later, whatever it is made for.
TEST_F(Handshake, TheFirstSegmentIsNeverSmallerThanUsual) {
  link.ExpandSharedMemory(1000);
  EXPECT_EQ(link.SegmentSize(), 80'530'640u);
  link.ReleaseChannel();
}

TEST_F(Handshake, CommandsOfManyThreadsStayWholeAndAllArrive) {
  Start();
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([this, t] {
      for (int i = 0; i < 100; ++i) {
        link.SetMessage(std::to_string(t) + ":" + std::to_string(i) + std::string(200, 'x'));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<std::string> texts;
  std::vector<int> next(4, 0);
  for (const json& line : Received()) {
    if (line.at("id") != 16) continue;
    const std::string text = line.at("fields").at("text");
    texts.insert(text);
    const std::size_t colon = text.find(':');
    const auto thread = static_cast<std::size_t>(std::stoi(text.substr(0, colon)));
    EXPECT_EQ(std::stoi(text.substr(colon + 1)), next.at(thread)++) << text;
  }
  EXPECT_EQ(texts.size(), 400u);
  EXPECT_EQ(Report()["faultCount"], 0);
}

// Each of these makes the renderer vanish; the call in which it happens returns, nothing is sent
// any more, and after the release no object of either side is left.
TEST_F(Handshake, ARendererThatVanishesEndsTheWaitAndLeavesNothing) {
  const std::pair<const char*, bool> cases[] = {
      {R"([{"command": "GetLinkCamera", "crash": true}])", false},
      {R"([{"command": "GetLinkCamera", "exit": 3}])", false},
      {R"([{"command": "GetLinkCamera", "hold_mutex": {"event": "commandDone"}}])", false},
      {R"([{"command": "GetLinkCamera", "hold_mutex": {"event": "commandReady"}}])", false},
      {R"([{"command": "GetLinkCamera", "hold_mutex": {"event": "requestReady"}}])", false},
      {R"([{"command": "GetLinkCamera", "quit": true}])", true}};
  for (const auto& [script, ended] : cases) {
    SCOPED_TRACE(script);
    Start(script);
    link.SetModelName("before");
    EXPECT_FALSE(link.GetLinkCamera());
    EXPECT_FALSE(link.IsAlive());
    EXPECT_EQ(link.Ended(), ended);
    link.SetMessage("dropped");
    // A renderer that quits is still ending itself.
    AwaitEnd(link.ProcessId());
    link.ReleaseChannel();
    EXPECT_EQ(LinkObjects(), std::vector<std::string>{});
  }
}

TEST_F(Handshake, ARendererKilledAtRestIsNotAliveAndAnotherStartsAtOnce) {
  Start();
  EXPECT_FALSE(link.GetLinkCamera());
  KillProcess(link.ProcessId());
  while (link.IsAlive()) std::this_thread::sleep_for(milliseconds(1));
  link.SetMessage("dropped");
  link.ReleaseChannel();
  EXPECT_EQ(LinkObjects(), std::vector<std::string>{});
  Start();
  link.SetMessage("arrives");
  EXPECT_EQ(Ids(Received()), (std::vector<int>{16, 2}));
}

}  // namespace
}  // namespace quellix
