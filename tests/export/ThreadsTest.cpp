// What the export's threads and its walks promise when something goes wrong inside them.

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "export/Descent.h"
#include "export/WorkerThreads.h"

namespace quellix {
namespace {

using std::chrono::milliseconds;

// What Wait throws, or nothing.
std::string Thrown(WorkerThreads& workers, const std::function<void()>& meanwhile) {
  try {
    workers.Wait(milliseconds(1), meanwhile);
  } catch (const std::exception& error) {
    return error.what();
  }
  return {};
}

// One thread throws while the other still needs the host thread, which must go on serving it; so it
// must when serving throws.
TEST(WorkerThreads, AnErrorIsToldOnceEverythingHasEnded) {
  struct Case {
    const char* worker;
    const char* host;
    const char* told;
  };
  for (const Case& wanted : {Case{"", "", ""}, Case{"worker", "", "worker"},
                             Case{"", "host", "host"}, Case{"worker", "host", "worker"}}) {
    WorkerThreads workers;
    std::atomic<int> served{0};
    std::atomic<bool> thrown{*wanted.worker == '\0'};
    std::atomic<bool> ended{false};
    ASSERT_TRUE(workers.Start([&] {
      thrown = true;
      if (*wanted.worker != '\0') throw std::runtime_error(wanted.worker);
    }));
    ASSERT_TRUE(workers.Start([&] {
      while (served < 5) std::this_thread::sleep_for(milliseconds(1));
      ended = true;
    }));
    while (!thrown) std::this_thread::yield();
    // The thread's error is kept a moment after it was thrown.
    std::this_thread::sleep_for(milliseconds(20));
    const std::string told = Thrown(workers, [&] {
      ++served;
      if (*wanted.host != '\0') throw std::runtime_error(wanted.host);
    });
    EXPECT_EQ(told, wanted.told);
    EXPECT_TRUE(ended) << "the other thread was not waited for";
    EXPECT_EQ(Thrown(workers, [] {}), "") << "an error is told once";
  }
}

SUComponentDefinitionRef Definition(std::uintptr_t number) {
  SUComponentDefinitionRef su_definition = SU_INVALID;
  su_definition.ptr = reinterpret_cast<void*>(number);
  return su_definition;
}

TEST(Descent, RunsNeitherInACircleNorWithoutEnd) {
  const Descent first(Definition(8));
  const Descent second(Definition(16));
  EXPECT_TRUE(first && second);
  {
    const Descent circle(Definition(8));
    EXPECT_FALSE(circle) << "a definition inside itself";
  }
  {
    const Descent third(Definition(24));
    EXPECT_TRUE(third);
  }
  const Descent again(Definition(24));
  EXPECT_TRUE(again) << "side by side is no circle";
  std::thread([] { EXPECT_TRUE(Descent(Definition(8))) << "another walk's path"; }).join();

  std::vector<std::unique_ptr<Descent>> steps;
  const std::uintptr_t levels = Descent::kDeepest;
  for (std::uintptr_t i = 0; i < levels; ++i) {
    steps.push_back(std::make_unique<Descent>(Definition(1000 + 8 * i)));
  }
  EXPECT_TRUE(*steps[Descent::kDeepest - 4]);
  EXPECT_FALSE(*steps[Descent::kDeepest - 3]) << "three levels are above these";
  while (!steps.empty()) steps.pop_back();
}

}  // namespace
}  // namespace quellix
