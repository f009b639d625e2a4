#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "TestSystem.h"
#include "support/Gates.h"
#include "support/ModelName.h"
#include "support/PerThread.h"
#include "support/Switches.h"
#include "support/TimingLog.h"
#include "support/WorkerPool.h"

namespace quellix {
namespace {

TEST(Switches, OnlyTheSingleCharacterZeroTurnsOff) {
  struct Case {
    const char* value;
    bool defaultOn;
    bool defaultOff;
  };
  for (const Case& c : {Case{nullptr, true, false}, Case{"", true, false}, Case{"0", false, false},
                        Case{"00", true, true}, Case{" 0", true, true}, Case{"false", true, true},
                        Case{"1", true, true}, Case{"yes", true, true}}) {
    const std::string shown = c.value == nullptr ? "(unset)" : c.value;
    EXPECT_EQ(IsDefaultOnFlagSet(c.value), c.defaultOn) << shown;
    EXPECT_EQ(IsDefaultOffFlagSet(c.value), c.defaultOff) << shown;
  }
}

// One digit a category in their order: traverse, facedata, meshhelper, uvhelper, texturewriter,
// imagerep, attrdict.
std::string Modes(std::string_view text) {
  std::string modes;
  for (const GateMode mode : ParseGateModes(text)) modes += mode == GateMode::Mutex ? '1' : '0';
  return modes;
}

TEST(Gates, ConfigurationOverridesItemByItem) {
  EXPECT_EQ(Modes(""), "0011110");
  EXPECT_EQ(Modes("all:mutex"), "1111111");
  EXPECT_EQ(Modes("all:mutex,attrdict:parallel"), "1111110");
  EXPECT_EQ(Modes("all:parallel,texturewriter:mutex"), "0000100");
  EXPECT_EQ(Modes("attrdict:mutex,all:parallel"), "0000000");
  // Nothing that is not exactly a known name and a known mode has an effect.
  for (const char* text : {"attrdict:Mutex", "meshhelper", "foo:mutex", ":mutex", "attrdict:", ",,",
                           "attrdict:mutex:x", " attrdict:mutex", "attrdic:mutex"}) {
    EXPECT_EQ(Modes(text), "0011110") << text;
  }
  EXPECT_EQ(Modes("meshhelper,facedata:mutex,"), "0111110");
}

// The default mode does not stand for the user's word.
TEST(Gates, FaceDataIsSharedOnlyWhereTheLastWordAboutItIsParallel) {
  for (const char* text : {"facedata:parallel", "all:parallel", "all:mutex,facedata:parallel",
                           "facedata:mutex,all:parallel,uvhelper:mutex"}) {
    EXPECT_TRUE(ParseFaceDataIsShared(text)) << text;
  }
  for (const char* text : {"", "facedata:mutex", "facedata:parallel,all:mutex", "uvhelper:parallel",
                           "facedata:Parallel", "all:parallel,facedata:mutex"}) {
    EXPECT_FALSE(ParseFaceDataIsShared(text)) << text;
  }
}

TEST(Gates, MutexModeKeepsThreadsApart) {
  std::atomic<int> inside{0};
  std::atomic<int> most{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 200; ++i) {
        const GateGuard gate = GateAcquire(Gate::UvHelper);
        most = std::max(most.load(), ++inside);
        std::this_thread::yield();
        --inside;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(most, 1);
}

TEST(WorkerPool, LeavesTwoThreadsToTheProcess) {
  const std::pair<unsigned, unsigned> cases[] = {{0, 1}, {1, 1}, {3, 1}, {4, 2}, {8, 6}, {16, 14}};
  for (const auto& [hardware, workers] : cases) EXPECT_EQ(WorkerCount(hardware), workers);
}

TEST(WorkerPool, OneWorkerRunsTasksInOrderAndAPoolRunsWhatIsQueuedBeforeItEnds) {
  std::vector<int> order;
  {
    WorkerPool pool(1);
    pool.WaitIdle();
    for (int i = 0; i < 50; ++i) pool.Enqueue([&order, i] { order.push_back(i); });
    pool.WaitIdle();
    EXPECT_EQ(order.size(), 50u);
    for (int i = 50; i < 100; ++i) {
      pool.Enqueue([&order, i] {
        std::this_thread::sleep_for(std::chrono::microseconds(100));
        order.push_back(i);
      });
    }
  }
  ASSERT_EQ(order.size(), 100u);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(WorkerPool, AFailingTaskEndsAloneAndIsToldToTheOwner) {
  WorkerPool pool(3);
  std::atomic<int> done{0};
  for (int i = 0; i < 30; ++i) {
    pool.Enqueue([&done, i] {
      if (i == 7) throw std::runtime_error("task 7");
      ++done;
    });
  }
  pool.Enqueue(WorkerPool::Task());  // an empty task fails too
  EXPECT_THROW(pool.WaitIdle(), std::exception);
  EXPECT_EQ(done, 29);
  pool.Enqueue([&done] { ++done; });
  EXPECT_NO_THROW(pool.WaitIdle());
  EXPECT_EQ(done, 30);
}

// What a thread keeps is whole until its end, and gone after it, however short its life.
TEST(PerThread, IsEachThreadsOwnAndDestroyedWholeAtItsEnd) {
  static std::atomic<int> whole{0};
  struct Kept {
    std::vector<std::string> texts;
    ~Kept() {
      bool same = texts.size() == 100;
      for (const std::string& text : texts) same = same && text == texts.front();
      if (same) ++whole;
    }
  };
  static PerThread<Kept> kept;
  for (int round = 0; round < 25; ++round) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([t] {
        for (int i = 0; i < 100; ++i) {
          kept.Get().texts.push_back(std::string(50, static_cast<char>('a' + t)));
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(whole, 100);
}

TEST(ModelName, IsTheBaseNameOfTheFile) {
  const std::pair<const char*, const char*> cases[] = {
      {"C:/m/House.skp", "House"}, {"/home/u/two.dots.skp", "two.dots"},
      {"House.skp", "House"},      {"", "Untitled"},
      {"/home/u/", "Untitled"},    {"/m/家🏠.skp", "家🏠"},
      {"/m/بيت", "بيت"},           {"\xff\xfe.skp", "Untitled"}};
  for (const auto& [path, name] : cases) EXPECT_EQ(ModelNameOf(path), name) << path;
}

// The log's path is fixed at its first use, so what it does with one is seen in a process of its
// own: this test's program, run again with the variable set.
TEST(TimingLog, WritesWholeLinesWithTheirTime) {
  if (std::getenv("SUPPORT_TESTS_LOG_CHILD") != nullptr) {
    LogLine("x\n");
    LogLine("y %d", 7);
    LogLine("%s", std::string(5000, 'z').c_str());
    SetVariable("QUELLIX_PERF_LOG_FILE", "/nowhere/else");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([] {
        for (int i = 0; i < 25; ++i) LogLine("from a thread");
      });
    }
    for (std::thread& thread : threads) thread.join();
    return;
  }
  EXPECT_FALSE(PerfLogEnabled());
  const std::filesystem::path file = std::filesystem::temp_directory_path() /
                                     ("timing-" + std::to_string(OwnProcessId()) + ".log");
  SetVariable("SUPPORT_TESTS_LOG_CHILD", "1");
  SetVariable("QUELLIX_PERF_LOG_FILE", file.string());
  const std::string command = OwnProgram().string() +
                              " --gtest_brief=1"
                              " --gtest_filter=TimingLog.WritesWholeLinesWithTheirTime";
  const int status = std::system(command.c_str());
  UnsetVariable("SUPPORT_TESTS_LOG_CHILD");
  UnsetVariable("QUELLIX_PERF_LOG_FILE");
  ASSERT_EQ(status, 0);

  std::ifstream log(file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(log, line);) lines.push_back(line);
  log.close();
  std::filesystem::remove(file);
  ASSERT_EQ(lines.size(), 103u);
  const std::regex form(R"(\[\d\d:\d\d:\d\d\.\d\d\d\]\[DLL\] (.*))");
  std::smatch match;
  for (const std::string& line : lines) EXPECT_TRUE(std::regex_match(line, match, form)) << line;
  const std::size_t head = std::string("[09:05:07.042][DLL] ").size();
  EXPECT_EQ(lines[0].substr(head), "x");
  EXPECT_EQ(lines[1].substr(head), "y 7");
  EXPECT_EQ(lines[2].substr(head), std::string(1023, 'z'));
}

}  // namespace
}  // namespace quellix
