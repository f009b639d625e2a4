#pragma once

#include <atomic>
#include <thread>

namespace quellix {

// A lock for moments shorter than a thread takes to fall asleep and wake. Who waits offers its
// processor, so that a holder that was interrupted can go on. For std::unique_lock and kin.
class SpinLock {
 public:
  bool try_lock() noexcept {
    return !held.load(std::memory_order_relaxed) && !held.exchange(true, std::memory_order_acquire);
  }
  void lock() noexcept {
    for (int tries = 0; !try_lock(); ++tries) {
      if (tries >= kTries) std::this_thread::yield();
    }
  }
  void unlock() noexcept { held.store(false, std::memory_order_release); }

 private:
  static constexpr int kTries = 64;

  std::atomic<bool> held{false};
};

}  // namespace quellix
