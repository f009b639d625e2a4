#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "app/Platform.h"

namespace kvapp {

enum class Loss { HostGone, LinkReplaced };

// Looks several times a second whether the host still lives and the channel is still ours. The main
// thread asks for the result in every wait. A main thread that does not end by itself soon after a
// loss is stuck in a lock that the dead host held; then the watchdog ends the process.
class Watchdog {
 public:
  static constexpr int kStuckStatus = 4;

  explicit Watchdog(std::int64_t hostProcess);
  ~Watchdog();

  // Watches the channel too; `emergency` removes what this process made, from the watchdog's
  // thread.
  void WatchChannel(std::function<bool()> stillOurs, std::function<void()> emergency);
  // The main thread is ending in order and gets more time for it.
  void Finishing();

  std::optional<Loss> Lost() const;

 private:
  void Watch();
  void Look();

  HostWatch host_;
  std::mutex mutex_;
  std::condition_variable stopped_;
  bool stop_ = false;
  std::function<bool()> stillOurs_;
  std::function<void()> emergency_;
  std::chrono::steady_clock::duration grace_;
  std::optional<std::chrono::steady_clock::time_point> lostAt_;
  std::atomic<int> loss_{-1};
  std::thread thread_;
};

}  // namespace kvapp
