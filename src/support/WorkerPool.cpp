#include "support/WorkerPool.h"

#include <system_error>
#include <utility>

namespace quellix {

unsigned WorkerCount(unsigned hardwareThreads) {
  return hardwareThreads < 4 ? 1 : hardwareThreads - 2;
}

WorkerPool::WorkerPool(unsigned threadCount) {
  threads.reserve(threadCount);
  try {
    for (unsigned i = 0; i < threadCount; ++i) threads.emplace_back([this] { Work(); });
  } catch (const std::system_error& error) {
    StopAndJoin();
    throw std::system_error(error.code(), "a worker thread could not be started");
  } catch (...) {
    StopAndJoin();
    throw;
  }
}

WorkerPool::~WorkerPool() {
  StopAndJoin();
}

void WorkerPool::StopAndJoin() {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    stopping = true;
  }
  taskAvailable.notify_all();
  for (std::thread& thread : threads) thread.join();
  threads.clear();
}

void WorkerPool::Enqueue(Task task) {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    tasks.push_back(std::move(task));
  }
  taskAvailable.notify_one();
}

void WorkerPool::WaitIdle() {
  std::unique_lock<std::mutex> lock(mutex);
  allIdle.wait(lock, [this] { return tasks.empty() && active == 0; });
  if (firstError) std::rethrow_exception(std::exchange(firstError, nullptr));
}

// The lock is let go while a task runs.
void WorkerPool::Work() {
  std::unique_lock<std::mutex> lock(mutex);
  for (;;) {
    taskAvailable.wait(lock, [this] { return stopping || !tasks.empty(); });
    if (tasks.empty()) return;
    Task task = std::move(tasks.front());
    tasks.pop_front();
    ++active;
    lock.unlock();

    std::exception_ptr error;
    try {
      task();
    } catch (...) {
      error = std::current_exception();
    }
    // What the task captured must be gone before the owner is told that all is idle.
    task = nullptr;

    lock.lock();
    if (error && !firstError) firstError = error;
    --active;
    if (tasks.empty() && active == 0) allIdle.notify_all();
  }
}

}  // namespace quellix
