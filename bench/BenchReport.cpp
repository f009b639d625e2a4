// Measures everything, each case in a process of its own, since a process reads its switches once;
// prints tables and writes the figures.
//
//   bench_report <file of the figures> [full]
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "Figures.h"

namespace {

using bench::Figures;
using nlohmann::json;
using Better = Figures::Better;

// The output of a program that prints one JSON object.
json Run(const std::string& command) {
  std::FILE* pipe = popen(command.c_str(), "r");
  std::string text;
  char piece[4096];
  while (pipe != nullptr && std::fgets(piece, sizeof piece, pipe) != nullptr) text += piece;
  if (pipe == nullptr || pclose(pipe) != 0) throw std::runtime_error("failed: " + command);
  return json::parse(text);
}

struct Path {
  const char* name;
  const char* environment;
};
constexpr Path kPaths[] = {
    {"serial", "QUELLIX_GEO_PARALLEL=0 QUELLIX_GEO_PIPELINE=0"},
    {"parallel", "QUELLIX_GEO_PIPELINE=0"},
    {"pipeline", ""},
};

struct Scene {
  std::size_t faces;
  bool textured;

  std::string Name() const {
    const std::string size = faces >= 1000000 ? std::to_string(faces / 1000000) + " M"
                                              : std::to_string(faces / 1000) + " k";
    return size + (textured ? " textured" : " plain");
  }
  // A thousand faces a definition, three placements of each.
  std::string Arguments() const {
    const std::size_t definitions = std::max<std::size_t>(1, faces / 1000);
    return std::to_string(faces) + " " + std::to_string(definitions) + " " +
           std::to_string(3 * definitions) + " " + (textured ? "1" : "0");
  }
  // Fewer where each takes long. Not just one of the largest: on a virtual machine the first few
  // gigabytes that anybody asks for come slowly from the machine below.
  int Rounds(long cost) const {
    if (cost > 0) return 2;
    return faces >= 1000000 ? 3 : faces >= 100000 ? 5 : 20;
  }
  // How many processes compare an export with its floor. Where a process's memory happens to lie
  // decides how well a small model fits the caches.
  int Processes(long cost) const {
    if (cost > 0) return 1;
    return faces >= 1000000 ? 1 : faces >= 100000 ? 3 : 5;
  }
};

// Of so many runs the one whose value is in the middle.
template <class Run, class Value>
json Middle(int runs, const Run& run, const Value& value) {
  std::vector<json> results;
  for (int i = 0; i < runs; ++i) results.push_back(run());
  const auto middle = results.begin() + runs / 2;
  std::nth_element(results.begin(), middle, results.end(),
                   [&](const json& a, const json& b) { return value(a) < value(b); });
  return *middle;
}

// How faces are collected: by one thread at a time, or by several where the user says so.
struct Collection {
  const char* suffix;  // of the figures' names
  const char* environment;
};
constexpr Collection kCollections[] = {
    {"", ""},
    {"_shared", "QUELLIX_SU_GATES=facedata:parallel"},
};

json RunExport(const Scene& scene, const std::string& environment, long cost,
               const std::string& what) {
  return Run("env KVAPP_DISCARD=1 " + environment + " " EXPORT_CASE " " KVAPP_DIR " " +
             scene.Arguments() + " " + std::to_string(cost) + " " +
             std::to_string(scene.Rounds(cost)) + " " + what);
}

// Of an export by its read floor.
double Ratio(const json& result) {
  return result.at("ms").get<double>() / result.at("floorMs").get<double>();
}

double Nanoseconds(const json& result) {
  return result.at("ms").get<double>() * 1e6 / result.at("faces").get<double>();
}

class Report {
 public:
  Report(const char* file, bool fullSize) : figures(file), full(fullSize) {
    scenes = {{10000, false}, {100000, false}, {100000, true}, {1000000, false}};
    if (full) scenes.push_back({4000000, false});
  }

  void All() {
    Paths();
    Scale();
    Floors();
    Shares();
    Channel();
    Reload();
    figures.Save();
  }

 private:
  void Paths() {
    std::printf("%-18s %10s %10s %10s   %s\n", "ns a face", "serial", "parallel", "pipeline",
                "pipeline's memory, bytes a face");
    json table;
    for (const Scene& scene : scenes) {
      std::printf("%-18s", scene.Name().c_str());
      double memory = 0.0;
      for (const Path& path : kPaths) {
        const json result = RunExport(scene, path.environment, 0, "time");
        const double time = Nanoseconds(result);
        memory = result.at("bytesPerFace");
        table[scene.Name()][path.name] = time;
        std::printf(" %10.0f", time);
        std::fflush(stdout);
      }
      std::printf("   %.0f\n", memory);
      table[scene.Name()]["bytesPerFace"] = memory;
      if (scene.faces == 4000000) {
        figures.Set("bytes_per_face_4m", memory, "bytes", Better::Lower, 700);
      }
    }
    figures.SetTable("paths_ns_per_face", table);
  }

  void Scale() {
    if (!full) return;
    const json result = RunExport({4000000, false}, "", 0, "scale");
    const double large = result.at("nsPerFace");
    const double small = result.at("smallNsPerFace");
    std::printf("\nin turns: %.0f ns a face of 4 M, %.0f of 100 k\n", large, small);
    figures.Set("face_time_4m_vs_100k", large / small, "x", Better::Lower, 1.2);
  }

  void Floors() {
    std::printf("\n%-18s %9s %9s | %9s %9s | %9s %9s | %9s   %s\n", "ms, default path", "ns a call",
                "floor", "export", "ratio", "parallel", "ratio", "calls", "of them in the floor");
    json table;
    struct Goal {
      long cost;
      double ratio;
    };
    for (const Goal& goal : {Goal{0, 2.4}, Goal{300, 0.95}}) {
      double worst[std::size(kCollections)] = {};
      for (const Scene& scene : scenes) {
        if (scene.faces > 1000000 || (scene.faces == 1000000 && goal.cost > 0 && !full)) continue;
        std::printf("%-18s %9ld", scene.Name().c_str(), goal.cost);
        json result;
        for (std::size_t i = 0; i < std::size(kCollections); ++i) {
          const Collection& collection = kCollections[i];
          result = Middle(
              scene.Processes(goal.cost),
              [&] { return RunExport(scene, collection.environment, goal.cost, "floor"); }, Ratio);
          if (i == 0) std::printf(" %9.1f", result.at("floorMs").get<double>());
          std::printf(" | %9.1f %9.2f", result.at("ms").get<double>(), Ratio(result));
          std::fflush(stdout);
          table[scene.Name()][std::to_string(goal.cost) + "ns" + collection.suffix] = Ratio(result);
          worst[i] = std::max(worst[i], Ratio(result));
        }
        const double calls = result.at("calls");
        std::printf(" | %9.0f   %.1f %%\n", calls,
                    100.0 * result.at("floorCalls").get<double>() / calls);
      }
      for (std::size_t i = 0; i < std::size(kCollections); ++i) {
        figures.Set(
            "export_vs_read_floor_" + std::to_string(goal.cost) + "ns" + kCollections[i].suffix,
            worst[i], "x", Better::Lower, goal.ratio);
      }
    }
    figures.SetTable("export_vs_read_floor", table);
  }

  void Shares() {
    const std::filesystem::path log =
        std::filesystem::temp_directory_path() / ("bench-" + std::to_string(getpid()) + ".log");
    const json result =
        RunExport({100000, false}, "QUELLIX_PERF_LOG_FILE=" + log.string(), 0, "shares");
    std::filesystem::remove(log);
    std::printf("\n%-28s %8s %22s\n", "100 k plain, of the wall time", "ran", "ready, no core");
    for (const auto& [name, share] : result.at("threads").items()) {
      std::printf("%-28s %7.1f%% %21.1f%%\n", name.c_str(), 100 * share.at("ran").get<double>(),
                  100 * share.at("ready").get<double>());
    }
    std::printf("waited for\n");
    for (const auto& [name, share] : result.at("waits").items()) {
      std::printf("  %-26s %7.1f%%\n", name.c_str(), 100 * share.get<double>());
    }
    figures.SetTable("shares", result);
  }

  void Channel() {
    const auto run = [](const std::string& environment, const char* what) {
      return Run("env KVAPP_DISCARD=1 " + environment + " " CHANNEL_CASE " " KVAPP_DIR " " + what);
    };
    const json copy = run("", "copy");
    const double append = copy.at("append");
    const double memcpyRate = copy.at("memcpy");
    // Two processes meet in one of a few rhythms and mostly keep it.
    const json trips = Middle(
        5, [&] { return run("QUELLIX_IPC_PIPELINE=0", "awaited"); },
        [](const json& meeting) { return meeting.at("ratio").get<double>(); });
    const json trip = run("", "sleeping");
    const double sleeping = trip.at("us");
    const json small = run("KVAPP_WORK_US=1", "small");
    const double pipelinedRate = run("KVAPP_WORK_US=20", "rate").at("perSecond");
    const double awaitedRate =
        run("KVAPP_WORK_US=20 QUELLIX_IPC_PIPELINE=0", "rate").at("perSecond");
    std::printf(
        "\nAppendMesh of 64 MiB %.0f MiB/s, memcpy %.0f; an awaited small command %.2f us, a "
        "placement %.2f, a bare round trip %.2f,\none that sleeps %.1f; with 20 us of work on each "
        "side %.0f commands/s pipelined, %.0f awaited;\na placement that takes the renderer 1 us: "
        "%.1f us, %.1f of processor time, beside %.1f of a trip that sleeps\n",
        append, memcpyRate, trips.at("us").get<double>(), trips.at("placementUs").get<double>(),
        trips.at("tripUs").get<double>(), sleeping, pipelinedRate, awaitedRate,
        small.at("us").get<double>(), small.at("processorUs").get<double>(),
        trip.at("processorUs").get<double>());
    figures.Set("append_mesh_vs_memcpy", append / memcpyRate, "x speed", Better::Higher, 0.85);
    figures.Set("awaited_vs_ping_pong", trips.at("ratio"), "x", Better::Lower, 1.3);
    figures.Set("awaited_placement_vs_ping_pong", trips.at("placementRatio"), "x", Better::Lower);
    figures.Set("small_commands_vs_ping_pong", small.at("us").get<double>() / sleeping, "x",
                Better::Lower, 0.3);
    figures.Set("small_commands_processor_vs_ping_pong",
                small.at("processorUs").get<double>() / trip.at("processorUs").get<double>(), "x",
                Better::Lower, 2.0);
    figures.Set("idle_wait_cpu_share", run("", "idle").at("share"), "of a core", Better::Lower,
                0.01);
    figures.Set("pipelined_vs_awaited_rate", pipelinedRate / awaitedRate, "x", Better::Higher, 1.3);
  }

  void Reload() {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("bench-" + std::to_string(getpid()));
    const json result = Run("env " RELOAD_CASE " " KVAPP_DIR " " + folder.string());
    std::filesystem::remove_all(folder);
    const double reload = result.at("reloadMs");
    const double scan = result.at("scanMs");
    const double first = result.at("firstBytes");
    const double again = result.at("reloadBytes");
    std::printf(
        "\nreload of 200 k faces in 500 definitions, 2,000 placements, 100 textured materials, "
        "unchanged:\n%.0f ms, of them its scan %.0f; %.0f bytes sent, %.1f MiB at first\n",
        reload, scan, again, first / 1048576.0);
    figures.Set("reload_vs_scan", reload / scan, "x", Better::Lower, 1.25);
    figures.Set("reload_bytes_vs_first", again / first, "x", Better::Lower, 0.01);
    figures.Set("material_records_alive", result.at("recordsAlive"), "records", Better::Lower,
                result.at("recordsAllowed"));
  }

  Figures figures;
  const bool full;
  std::vector<Scene> scenes;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  const bool full = argc > 2 && std::string(argv[2]) == "full";
  try {
    Report(argv[1], full).All();
    const std::string parts = std::string(BENCH_PARTS " ") + argv[1] +
                              " --benchmark_min_time=0.1 --benchmark_repetitions=3";
    if (std::system(parts.c_str()) != 0) throw std::runtime_error("failed: " + parts);
    Figures(argv[1]).Print();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
