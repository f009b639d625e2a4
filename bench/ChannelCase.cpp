// Measures the channel to the renderer and prints one JSON object.
//
//   channel_case <folder of the renderer> <copy|awaited|rate|sleeping|small|idle>
//
// copy: MiB a second of AppendMesh with 64 MiB messages, and of memcpy into the same segment.
// awaited: microseconds of the small command that is awaited in any case, of a placement that is
// awaited because the switch says so, and of a round trip of two events between this process and a
// child of it: in turns, since the way from one processor to the other changes from minute to
// minute on a virtual machine.
// rate: small commands a second when this side works 20 microseconds for each; the other side is
// told to by its environment.
// sleeping: microseconds of wall and of both sides' processor time for a round trip of two events
// whose two sides sleep on the conditions instead of watching.
// small: microseconds of wall and of both processes' processor time for each of 100,000 placements;
// the renderer is told by its environment to work 1 microsecond for each.
// idle: the share of a processor that waits of 10 ms take when nothing comes.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <boost/interprocess/anonymous_shared_memory.hpp>
#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>
#include <boost/interprocess/sync/interprocess_condition.hpp>
#include <boost/interprocess/sync/interprocess_mutex.hpp>
#include <boost/interprocess/sync/scoped_lock.hpp>
#include <glm/glm.hpp>
#include <glm/gtc/type_ptr.hpp>
#include <nlohmann/json.hpp>

#include "RendererLink.h"
#include "app/EventPeer.h"
#include "geometry/MeshBuffer.h"
#include "link/ManualEvent.h"
#include "link/WireRecords.h"
#include "support/TimingLog.h"

namespace {

using namespace quellix;
namespace bi = boost::interprocess;

constexpr std::size_t kMessageBytes = 64u << 20;
constexpr int kRounds = 12;
constexpr int kCommands = 20000;
constexpr double kWorkMs = 0.02;
constexpr std::chrono::milliseconds kSlice{100};

double Best(const std::function<void()>& work, int rounds) {
  double best = std::numeric_limits<double>::max();
  for (int i = 0; i < rounds; ++i) {
    const double start = NowMs();
    work();
    best = std::min(best, NowMs() - start);
  }
  return best;
}

nlohmann::json Copy(IpcInterface& link) {
  const std::size_t vertices = kMessageBytes / 2 / sizeof(MeshVertex);
  const std::size_t triangles = kMessageBytes / 2 / (kTriangleWords * sizeof(std::uint32_t));
  MeshBuffer mesh;
  mesh.vertices.assign(vertices, MeshVertex{{1, 2, 3}, {0, 0, 1}, {0, 0}, {0, 0}});
  mesh.triangles.assign(triangles * kTriangleWords, 1);
  const glm::mat4 identity(1.0f);
  const auto send = [&] {
    link.AppendMesh(1, glm::value_ptr(identity), static_cast<std::uint32_t>(vertices),
                    glm::value_ptr(mesh.vertices.front().position),
                    static_cast<std::uint32_t>(triangles), mesh.triangles.data(), 0, false, 1);
  };
  send();
  const bi::shared_memory_object memory(bi::open_only, wire::kToAppSegment, bi::read_write);
  const bi::mapped_region region(memory, bi::read_write);
  auto* target = static_cast<std::byte*>(region.get_address());
  const std::size_t vertexBytes = vertices * sizeof(MeshVertex);
  const std::size_t triangleBytes = mesh.triangles.size() * sizeof(std::uint32_t);
  const auto copy = [&] {
    std::memcpy(target + 4096, mesh.vertices.data(), vertexBytes);
    std::memcpy(target + 4096 + vertexBytes, mesh.triangles.data(), triangleBytes);
  };
  copy();
  // In turns, so that what disturbs one disturbs the other. GetLinkCamera waits for what is
  // pending.
  double sendMs = std::numeric_limits<double>::max();
  double copyMs = sendMs;
  for (int i = 0; i < kRounds; ++i) {
    sendMs = std::min(sendMs, Best(send, 1));
    link.GetLinkCamera();
    copyMs = std::min(copyMs, Best(copy, 1));
  }
  const double mebibytes = static_cast<double>(vertexBytes + triangleBytes) / (1 << 20);
  return {{"append", mebibytes / sendMs * 1000}, {"memcpy", mebibytes / copyMs * 1000}};
}

void Place(IpcInterface& link) {
  static const glm::mat4 identity(1.0f);
  link.InstanciateMesh(1, glm::value_ptr(identity), 1);
}

nlohmann::json Rate(IpcInterface& link) {
  constexpr int kCount = 5000;
  const double ms = Best(
      [&] {
        for (int i = 0; i < kCount; ++i) {
          const double until = NowMs() + kWorkMs;
          while (NowMs() < until) {
          }
          Place(link);
        }
      },
      3);
  return {{"perSecond", kCount / ms * 1000}};
}

// Microseconds of processor time that a process and its threads have had.
double ProcessorUs(int who) {
  rusage usage{};
  getrusage(who, &usage);
  const auto us = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_usec);
  };
  return us(usage.ru_utime) + us(usage.ru_stime);
}

// Two events under names of this program's own. The child waits as the renderer does, and does
// nothing but answer, until it is told to end.
class WatchingPingPong {
 public:
  WatchingPingPong() : child(fork()) {
    if (child != 0) return;
    auto request = kvapp::EventPeer::Open(kPing);
    auto answer = kvapp::EventPeer::Open(kPong);
    do {
      while (request->Wait(kSlice) == kvapp::EventPeer::Outcome::Signaled) {
        request->Reset();
        answer->Set();
      }
    } while (getppid() == parent);
    _exit(0);
  }
  WatchingPingPong(const WatchingPingPong&) = delete;
  WatchingPingPong& operator=(const WatchingPingPong&) = delete;
  ~WatchingPingPong() {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    ManualEvent::Remove(kPing);
    ManualEvent::Remove(kPong);
  }

  void Trip() {
    pong->Reset();
    ping->Set();
    pong->Wait(ManualEvent::kInfinite);
  }

 private:
  static constexpr const char* kPing = "Qlx_Bench_Ping";
  static constexpr const char* kPong = "Qlx_Bench_Pong";
  const pid_t parent = getpid();
  const std::unique_ptr<ManualEvent> ping = ManualEvent::Create(kPing, [] { return true; });
  const std::unique_ptr<ManualEvent> pong = ManualEvent::Create(kPong, [] { return true; });
  const pid_t child;
};

// The median of the rounds' own ratios: both halves of a round meet the two processors as they lie
// then.
nlohmann::json Awaited(const std::string& directory) {
  constexpr int kTurns = 41;
  constexpr int kCount = 5000;
  WatchingPingPong pingPong;  // before there are threads
  bench::RendererLink renderer(directory);
  const auto timeOf = [](const auto& work) {
    const double start = NowMs();
    for (int i = 0; i < kCount; ++i) work();
    return (NowMs() - start) * 1000 / kCount;
  };
  struct Round {
    double linkCamera;
    double placement;
    double trip;
  };
  std::vector<Round> rounds;
  for (int i = 0; i < kTurns; ++i) {
    rounds.push_back({timeOf([&] { renderer.link.GetLinkCamera(); }),
                      timeOf([&] { Place(renderer.link); }), timeOf([&] { pingPong.Trip(); })});
  }
  const auto median = [&](const auto& of) {
    std::vector<double> values;
    for (const Round& round : rounds) values.push_back(of(round));
    std::nth_element(values.begin(), values.begin() + kTurns / 2, values.end());
    return values[kTurns / 2];
  };
  return {
      {"us", median([](const Round& round) { return round.linkCamera; })},
      {"placementUs", median([](const Round& round) { return round.placement; })},
      {"tripUs", median([](const Round& round) { return round.trip; })},
      {"ratio", median([](const Round& round) { return round.linkCamera / round.trip; })},
      {"placementRatio", median([](const Round& round) { return round.placement / round.trip; })}};
}

// An event as it is described, without anything that shortens a wait.
struct SleepingEvent {
  bi::interprocess_mutex mutex;
  bi::interprocess_condition condition;
  bool signaled = false;

  void Set() {
    const bi::scoped_lock<bi::interprocess_mutex> lock(mutex);
    signaled = true;
    condition.notify_all();
  }
  void Take() {
    bi::scoped_lock<bi::interprocess_mutex> lock(mutex);
    while (!signaled) condition.wait(lock);
    signaled = false;
  }
};

nlohmann::json SleepingPingPong() {
  struct Pair {
    SleepingEvent ping;
    SleepingEvent pong;
  };
  const bi::mapped_region memory(bi::anonymous_shared_memory(sizeof(Pair)));
  Pair& pair = *new (memory.get_address()) Pair;
  const double ownBefore = ProcessorUs(RUSAGE_SELF);
  const double childrenBefore = ProcessorUs(RUSAGE_CHILDREN);
  const double start = NowMs();
  const pid_t child = fork();
  for (int i = 0; i < kCommands; ++i) {
    if (child == 0) {
      pair.ping.Take();
      pair.pong.Set();
    } else {
      pair.ping.Set();
      pair.pong.Take();
    }
  }
  if (child == 0) _exit(0);
  const double ms = NowMs() - start;
  waitpid(child, nullptr, 0);
  const double processor =
      ProcessorUs(RUSAGE_SELF) - ownBefore + ProcessorUs(RUSAGE_CHILDREN) - childrenBefore;
  return {{"us", ms * 1000 / kCommands}, {"processorUs", processor / kCommands}};
}

// The renderer's processor time is known once it has ended and was reaped, so all of its run
// counts.
nlohmann::json Small(const std::string& directory) {
  constexpr int kCount = 100000;
  const double ownBefore = ProcessorUs(RUSAGE_SELF);
  const double childrenBefore = ProcessorUs(RUSAGE_CHILDREN);
  double ms = 0.0;
  pid_t renderer = 0;
  {
    bench::RendererLink link(directory);
    renderer = link.link.ProcessId();
    const double start = NowMs();
    for (int i = 0; i < kCount; ++i) Place(link.link);
    link.link.GetLinkCamera();
    ms = NowMs() - start;
  }
  while (waitpid(renderer, nullptr, 0) == 0) {
  }
  const double processor =
      ProcessorUs(RUSAGE_SELF) - ownBefore + ProcessorUs(RUSAGE_CHILDREN) - childrenBefore;
  return {{"us", ms * 1000 / kCount}, {"processorUs", processor / kCount}};
}

nlohmann::json Idle() {
  constexpr int kWaits = 200;
  const std::string name = "Qlx_Bench_Idle";
  const auto event = ManualEvent::Create(name, [] { return true; });
  const double processorBefore = ProcessorUs(RUSAGE_SELF);
  const double start = NowMs();
  for (int i = 0; i < kWaits; ++i) event->Wait(10);
  const double wallUs = (NowMs() - start) * 1000;
  const double share = (ProcessorUs(RUSAGE_SELF) - processorBefore) / wallUs;
  ManualEvent::Remove(name);
  return {{"share", share}};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string what = argv[2];
  nlohmann::json result;
  if (what == "sleeping") {
    result = SleepingPingPong();
  } else if (what == "awaited") {
    result = Awaited(argv[1]);
  } else if (what == "small") {
    result = Small(argv[1]);
  } else if (what == "idle") {
    result = Idle();
  } else {
    bench::RendererLink renderer(argv[1]);
    if (what == "copy") result = Copy(renderer.link);
    if (what == "rate") result = Rate(renderer.link);
  }
  std::printf("%s\n", result.dump().c_str());
  return 0;
}
