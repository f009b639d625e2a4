// Measures the channel to the renderer and prints one JSON object.
//
//   channel_case <folder of the renderer> <copy|awaited|rate|pingpong>
//
// copy: MiB a second of AppendMesh with 64 MiB messages, and of memcpy into the same segment.
// awaited: microseconds of a small command; for the switch that awaits each one.
// rate: small commands a second when this side works 20 microseconds for each; the other side is
// told to by its environment.
// pingpong: microseconds of a round trip of two events between this process and a child of it.
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

#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>
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

// Two events under names of this program's own. The child waits as the renderer does, and does
// nothing but answer.
nlohmann::json PingPong() {
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

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string what = argv[2];
  nlohmann::json result;
  if (what == "pingpong") {
    result = PingPong();
  } else {
    bench::RendererLink renderer(argv[1]);
    if (what == "copy") result = Copy(renderer.link);
    if (what == "awaited") result = Awaited(renderer.link);
    if (what == "rate") result = Rate(renderer.link);
  }
  std::printf("%s\n", result.dump().c_str());
  return 0;
}
