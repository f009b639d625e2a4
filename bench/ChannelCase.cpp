// Measures the channel to the renderer and prints one JSON object.
//
//   channel_case <folder of the renderer> <copy|awaited|rate|pingpong|small|idle>
//
// copy: MiB a second of AppendMesh with 64 MiB messages, and of memcpy into the same segment.
// awaited: microseconds of a small command; for the switch that awaits each one.
// rate: small commands a second when this side works 20 microseconds for each; the other side is
// told to by its environment.
// pingpong: microseconds of a round trip of two events between this process and a child of it, and
// of one whose two sides sleep on the conditions instead of watching; and the processor time of
// both sides for that one.
// small: microseconds of wall and of both processes' processor time for each of 100,000 placements;
// the renderer is told by its environment to work 1 microsecond for each.
// idle: the share of a processor that waits of 10 ms take when nothing comes.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

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

nlohmann::json Awaited(IpcInterface& link) {
  const double ms = Best(
      [&] {
        for (int i = 0; i < kCommands; ++i) Place(link);
      },
      3);
  return {{"us", ms * 1000 / kCommands}};
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
// nothing but answer.
nlohmann::json WatchingPingPong() {
  const std::string names[] = {"Qlx_Bench_Ping", "Qlx_Bench_Pong"};
  const auto alive = [] { return true; };
  const auto ping = ManualEvent::Create(names[0], alive);
  const auto pong = ManualEvent::Create(names[1], alive);
  const pid_t child = fork();
  if (child == 0) {
    auto request = kvapp::EventPeer::Open(names[0]);
    auto answer = kvapp::EventPeer::Open(names[1]);
    for (int i = 0; i < 3 * kCommands;) {
      if (request->Wait(kSlice) != kvapp::EventPeer::Outcome::Signaled) continue;
      request->Reset();
      answer->Set();
      ++i;
    }
    _exit(0);
  }
  const double ms = Best(
      [&] {
        for (int i = 0; i < kCommands; ++i) {
          pong->Reset();
          ping->Set();
          pong->Wait(ManualEvent::kInfinite);
        }
      },
      3);
  waitpid(child, nullptr, 0);
  for (const std::string& name : names) ManualEvent::Remove(name);
  return {{"us", ms * 1000 / kCommands}};
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

nlohmann::json PingPong() {
  const nlohmann::json watching = WatchingPingPong();
  const nlohmann::json sleeping = SleepingPingPong();
  return {{"us", watching.at("us")},
          {"sleepingUs", sleeping.at("us")},
          {"sleepingProcessorUs", sleeping.at("processorUs")}};
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
  if (what == "pingpong") {
    result = PingPong();
  } else if (what == "small") {
    result = Small(argv[1]);
  } else if (what == "idle") {
    result = Idle();
  } else {
    bench::RendererLink renderer(argv[1]);
    if (what == "copy") result = Copy(renderer.link);
    if (what == "awaited") result = Awaited(renderer.link);
    if (what == "rate") result = Rate(renderer.link);
  }
  std::printf("%s\n", result.dump().c_str());
  return 0;
}
