#include "ThreadShares.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "support/TimingLog.h"

namespace bench {

namespace {

constexpr std::chrono::milliseconds kInterval{1};
constexpr double kNanoseconds = 1e-6;

}  // namespace

ThreadShares::ThreadShares() {
  Sample(true);
  startMs = quellix::NowMs();
  watcher = std::thread([this] {
    while (!ending) {
      Sample(false);
      std::this_thread::sleep_for(kInterval);
    }
  });
}

ThreadShares::~ThreadShares() {
  ending = true;
  if (watcher.joinable()) watcher.join();
}

// The system keeps, for each thread, the nanoseconds that it ran and that it waited for a core.
void ThreadShares::Sample(bool first) {
  const auto self = static_cast<int>(::syscall(SYS_gettid));
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task", ignored)) {
    const int id = std::stoi(entry.path().filename().string());
    if (id == self && !first) continue;
    double ran = 0.0;
    double ready = 0.0;
    std::ifstream times(entry.path() / "schedstat");
    std::string name;
    std::ifstream nameFile(entry.path() / "comm");
    if (!(times >> ran >> ready) || !std::getline(nameFile, name)) continue;
    Times& thread = threads[id];
    if (first) {
      thread.ranBefore = ran;
      thread.readyBefore = ready;
      thread.name = "host";
    } else if (thread.name != "host") {
      thread.name = name;
    }
    thread.ranMs = (ran - thread.ranBefore) * kNanoseconds;
    thread.readyMs = (ready - thread.readyBefore) * kNanoseconds;
  }
}

std::map<std::string, ThreadShares::Share> ThreadShares::Finish() {
  const double wall = quellix::NowMs() - startMs;
  ending = true;
  watcher.join();
  std::map<std::string, Share> shares;
  for (const auto& [id, thread] : threads) {
    std::string name = thread.name;
    for (int number = 2; shares.contains(name); ++number) {
      name = thread.name + " " + std::to_string(number);
    }
    shares[name] = {thread.ranMs / wall, thread.readyMs / wall};
  }
  return shares;
}

}  // namespace bench
