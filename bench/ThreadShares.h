#pragma once

#include <atomic>
#include <map>
#include <string>
#include <thread>

namespace bench {

// Watches the threads of this process while it lives, by their names: how long each ran and how
// long it was ready but had no core. Several threads of one name are numbered.
class ThreadShares {
 public:
  struct Share {
    double ran = 0.0;    // of the wall time, 0 to 1
    double ready = 0.0;  // ready to run, without a core
  };

  ThreadShares();
  ~ThreadShares();
  ThreadShares(const ThreadShares&) = delete;
  ThreadShares& operator=(const ThreadShares&) = delete;

  // Ends the watch.
  std::map<std::string, Share> Finish();

 private:
  struct Times {
    std::string name;
    double ranMs = 0.0;
    double readyMs = 0.0;
    double ranBefore = 0.0;
    double readyBefore = 0.0;
  };

  void Sample(bool first);

  std::map<int, Times> threads;
  std::atomic<bool> ending{false};
  double startMs = 0.0;
  std::thread watcher;
};

}  // namespace bench
