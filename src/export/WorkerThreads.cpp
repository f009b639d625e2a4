#include "export/WorkerThreads.h"

#include <utility>

namespace quellix {

void WorkerThreads::Start(std::function<void()> body) {
  {
    const std::lock_guard<std::mutex> lock(mutex);
    ++running;
  }
  try {
    threads.emplace_back([this, body = std::move(body)] {
      std::exception_ptr error;
      try {
        body();
      } catch (...) {
        error = std::current_exception();
      }
      const std::lock_guard<std::mutex> lock(mutex);
      if (error && !firstError) firstError = error;
      --running;
      ended.notify_all();
    });
  } catch (...) {
    const std::lock_guard<std::mutex> lock(mutex);
    --running;
    throw;
  }
}

void WorkerThreads::Wait(std::chrono::milliseconds slice, const std::function<void()>& meanwhile) {
  std::unique_lock<std::mutex> lock(mutex);
  while (!ended.wait_for(lock, slice, [this] { return running == 0; })) {
    lock.unlock();
    meanwhile();
    lock.lock();
  }
  lock.unlock();
  Join();
  if (firstError) std::rethrow_exception(std::exchange(firstError, nullptr));
}

void WorkerThreads::Join() {
  for (std::thread& thread : threads) {
    if (thread.joinable()) thread.join();
  }
  threads.clear();
}

}  // namespace quellix
