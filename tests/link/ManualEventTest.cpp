#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include <boost/interprocess/exceptions.hpp>
#include <boost/interprocess/managed_shared_memory.hpp>
#include <boost/interprocess/sync/scoped_lock.hpp>
#include <gtest/gtest.h>

#include "link/ManualEvent.h"

namespace quellix {
namespace {

namespace bi = boost::interprocess;

bool AlwaysAlive() {
  return true;
}

// A process of its own that does one thing and then waits to be killed.
class Child {
 public:
  explicit Child(const std::function<void()>& body) {
    int ready[2];
    if (pipe(ready) != 0) std::abort();
    pid_ = fork();
    if (pid_ == 0) {
      body();
      const char byte = 1;
      if (write(ready[1], &byte, 1) != 1) _exit(1);
      pause();
      _exit(0);
    }
    char byte = 0;
    if (read(ready[0], &byte, 1) != 1) std::abort();
    close(ready[0]);
    close(ready[1]);
  }
  ~Child() { Kill(); }
  void Kill() {
    if (pid_ <= 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = 0;
  }
  bool Alive() const { return pid_ > 0; }

 private:
  std::atomic<pid_t> pid_{0};
};

class ManualEventTest : public testing::Test {
 protected:
  void TearDown() override { ManualEvent::Remove(name); }
  const std::string name = "Qlx_Test_" + std::to_string(getpid());
};

TEST_F(ManualEventTest, StaysSetUntilReset) {
  const auto event = ManualEvent::Create(name, AlwaysAlive);
  EXPECT_FALSE(event->Wait(0));
  EXPECT_TRUE(event->Set());
  EXPECT_TRUE(event->Set());
  EXPECT_TRUE(event->Wait(0));
  EXPECT_TRUE(event->Wait(ManualEvent::kInfinite));
  EXPECT_TRUE(event->Reset());
  EXPECT_FALSE(event->Wait(0));
}

// At once, while it watches, and when it sleeps.
TEST_F(ManualEventTest, IsResetByWhoeverTakesIt) {
  const auto event = ManualEvent::Create(name, AlwaysAlive);
  EXPECT_FALSE(event->Take(0));
  for (const int delayMs : {0, 1, 20}) {
    std::thread setter([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
      event->Set();
    });
    EXPECT_TRUE(event->Take(ManualEvent::kInfinite)) << delayMs;
    setter.join();
    EXPECT_FALSE(event->Wait(0)) << delayMs;
  }
  EXPECT_FALSE(event->Take(5));
}

TEST_F(ManualEventTest, OpensOnlyWhatIsFinished) {
  EXPECT_THROW(ManualEvent::Open(name, AlwaysAlive), bi::interprocess_exception);
  {
    bi::managed_shared_memory unfinished(bi::create_only, (name + "_seg").c_str(), 65536);
    try {
      ManualEvent::Open(name, AlwaysAlive);
      FAIL() << "an event without its state was opened";
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "ManualEvent: state not found (creator not ready)");
    }
  }
  // The leftover is replaced.
  const auto creator = ManualEvent::Create(name, AlwaysAlive);
  const auto opener = ManualEvent::Open(name, AlwaysAlive);
  opener->Set();
  EXPECT_TRUE(creator->Wait(0));
}

// The other side sleeps on the condition of the shared state, as any program that follows the
// layout may; both directions must meet it.
TEST_F(ManualEventTest, MeetsAPeerThatUsesTheCondition) {
  const auto event = ManualEvent::Create(name, AlwaysAlive);
  bi::managed_shared_memory segment(bi::open_only, (name + "_seg").c_str());
  auto* state = segment.find<wire::EventState>("state").first;
  ASSERT_NE(state, nullptr);
  EXPECT_EQ(segment.get_size(), 65536u);

  std::thread waiter([&] {
    bi::scoped_lock<bi::interprocess_mutex> lock(state->mutex);
    while (state->signaled == 0) state->condition.wait(lock);
    state->signaled = 0;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  event->Set();
  waiter.join();
  EXPECT_FALSE(event->Wait(0));

  std::thread setter([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    bi::scoped_lock<bi::interprocess_mutex> lock(state->mutex);
    state->signaled = 1;
    state->condition.notify_all();
  });
  EXPECT_TRUE(event->Wait(ManualEvent::kInfinite));
  setter.join();
}

TEST_F(ManualEventTest, APeerKilledWithTheLockBlocksNobody) {
  std::unique_ptr<Child> child;
  const auto event = ManualEvent::Create(name, [&] { return child && child->Alive(); });
  child = std::make_unique<Child>([this] {
    // Never unlocked, and never unmapped: the process ends by a signal.
    auto* segment = new bi::managed_shared_memory(bi::open_only, (name + "_seg").c_str());
    segment->find<wire::EventState>("state").first->mutex.lock();
  });
  EXPECT_FALSE(event->Wait(10));
  std::thread killer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    child->Kill();
  });
  EXPECT_FALSE(event->Set()) << "the lock is held, yet the event was set";
  killer.join();
  EXPECT_FALSE(event->Reset());
  EXPECT_FALSE(event->Wait(10));
}

}  // namespace
}  // namespace quellix
