#pragma once

#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quellix {

// The named threads of one export, started together and waited for together. What a thread throws
// is kept until all have ended.
class WorkerThreads {
 public:
  WorkerThreads() = default;
  // Waits for the threads that are still running.
  ~WorkerThreads() { Join(); }
  WorkerThreads(const WorkerThreads&) = delete;
  WorkerThreads& operator=(const WorkerThreads&) = delete;

  // Starts a thread. False when it cannot be started; Wait then throws the system's error.
  bool Start(std::function<void()> body);

  // Waits until every thread has ended, calling `meanwhile` at least once a slice; then joins them
  // in the order of their start and throws what the first of them, or of the calls, threw. Threads
  // may need what `meanwhile` does, so it goes on being called after it has thrown.
  void Wait(std::chrono::milliseconds slice, const std::function<void()>& meanwhile);

 private:
  void Keep(std::exception_ptr error);
  void Join();

  std::vector<std::thread> threads;
  std::mutex mutex;
  std::condition_variable ended;
  std::size_t running = 0;
  std::exception_ptr firstError;
};

}  // namespace quellix
