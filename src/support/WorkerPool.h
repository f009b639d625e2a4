#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quellix {

// The worker count for a machine of that many hardware threads: two are left to the rest of the
// process, and there is at least one worker; 0 means that the machine does not tell.
unsigned WorkerCount(unsigned hardwareThreads);

// A fixed set of threads that take tasks from one first-in-first-out queue. Tasks start in queue
// order and finish in any. Enqueue and WaitIdle are for the pool's owner.
class WorkerPool {
 public:
  using Task = std::function<void()>;

  // Starts the workers. Throws std::system_error when a thread cannot be started; the ones already
  // running are stopped and joined first.
  explicit WorkerPool(unsigned threadCount = WorkerCount(std::thread::hardware_concurrency()));

  // Runs every task still queued, then joins the workers in order.
  ~WorkerPool();

  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  void Enqueue(Task task);

  // Returns when the queue is empty and no task runs. Throws what the first failed task since the
  // last WaitIdle threw: a task's error ends that task alone and is kept for the owner.
  void WaitIdle();

 private:
  void Work();
  void StopAndJoin();

  std::vector<std::thread> threads;
  std::deque<Task> tasks;
  std::mutex mutex;
  std::condition_variable taskAvailable;
  std::condition_variable allIdle;
  std::uint32_t active = 0;
  bool stopping = false;
  std::exception_ptr firstError;
};

}  // namespace quellix
