#include "export/WorkerThreads.h"

#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace quellix {

bool WorkerThreads::Start(std::function<void()> body) {
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
      if (error) Keep(error);
      --running;
      ended.notify_all();
    });
    return true;
  } catch (const std::system_error& error) {
    const std::lock_guard<std::mutex> lock(mutex);
    --running;
    Keep(std::make_exception_ptr(std::runtime_error(
        std::string("a thread of the export could not be started: ") + error.what())));
    return false;
  }
}

// Under the mutex, or with no thread left.
void WorkerThreads::Keep(std::exception_ptr error) {
  if (!firstError) firstError = std::move(error);
}

void WorkerThreads::Wait(std::chrono::milliseconds slice, const std::function<void()>& meanwhile) {
  std::unique_lock<std::mutex> lock(mutex);
  while (!ended.wait_for(lock, slice, [this] { return running == 0; })) {
    lock.unlock();
    std::exception_ptr error;
    try {
      meanwhile();
    } catch (...) {
      error = std::current_exception();
    }
    lock.lock();
    if (error) Keep(error);
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
