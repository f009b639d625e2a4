#include "app/Watchdog.h"

#include <cstdio>
#include <utility>

namespace kvapp {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kInterval{50};
constexpr std::chrono::seconds kGrace{2};
constexpr std::chrono::seconds kFinishingGrace{300};

}  // namespace

Watchdog::Watchdog(std::int64_t hostProcess) : host_(hostProcess), grace_(kGrace) {
  Look();
  thread_ = std::thread([this] { Watch(); });
}

Watchdog::~Watchdog() {
  {
    const std::lock_guard lock(mutex_);
    stop_ = true;
  }
  stopped_.notify_all();
  thread_.join();
}

void Watchdog::WatchChannel(std::function<bool()> stillOurs, std::function<void()> emergency) {
  const std::lock_guard lock(mutex_);
  stillOurs_ = std::move(stillOurs);
  emergency_ = std::move(emergency);
}

void Watchdog::Finishing() {
  const std::lock_guard lock(mutex_);
  grace_ = kFinishingGrace;
}

std::optional<Loss> Watchdog::Lost() const {
  const int loss = loss_.load();
  if (loss < 0) return std::nullopt;
  return static_cast<Loss>(loss);
}

void Watchdog::Watch() {
  std::unique_lock lock(mutex_);
  while (!stopped_.wait_for(lock, kInterval, [this] { return stop_; })) {
    Look();
    if (lostAt_ && Clock::now() - *lostAt_ > grace_) {
      std::fprintf(stderr, "KvApp: the host is gone and left a lock held; ending without output\n");
      if (emergency_) emergency_();
      ExitNow(kStuckStatus);
    }
  }
}

void Watchdog::Look() {
  if (lostAt_) return;
  if (!host_.Alive()) {
    loss_ = static_cast<int>(Loss::HostGone);
  } else if (stillOurs_ && !stillOurs_()) {
    loss_ = static_cast<int>(Loss::LinkReplaced);
  }
  if (loss_ >= 0) lostAt_ = Clock::now();
}

}  // namespace kvapp
