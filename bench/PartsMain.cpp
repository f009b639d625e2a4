// Runs the benchmarks of the parts and writes the figures that follow from them.
//
//   bench_parts <file of the figures> [options of Google Benchmark]
#include <malloc.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <SketchUpAPI/sketchup.h>

#include "PartsRegistry.h"

namespace bench {

namespace {

constexpr int kFreshBytes = 128 * 1024;

struct Rule {
  std::string name;
  std::string unit;
  Figures::Better better;
  std::optional<double> goal;
  std::function<double(const Times&)> value;
};

std::vector<Rule>& Rules() {
  static std::vector<Rule> rules;
  return rules;
}

// Keeps the shortest of the repetitions, which other programs on the machine disturb least, and
// prints only what they have in common. All
// benchmarks run on one thread, so what counts is that thread's processor time.
class Reporter : public benchmark::ConsoleReporter {
 public:
  Reporter() : ConsoleReporter(OO_Tabular) {}
  void ReportRuns(const std::vector<Run>& runs) override {
    std::vector<Run> printed;
    for (const Run& run : runs) {
      if (run.error_occurred) continue;
      if (run.run_type != Run::RT_Iteration) {
        if (run.aggregate_name == "median") printed.push_back(run);
        continue;
      }
      const double time = run.GetAdjustedCPUTime();
      const auto [it, isNew] = times.try_emplace(run.run_name.function_name, time);
      if (!isNew && time < it->second) it->second = time;
    }
    if (!printed.empty()) ConsoleReporter::ReportRuns(printed);
  }
  Times times;
};

}  // namespace

Figure::Figure(std::string name, std::string unit, Figures::Better better,
               std::optional<double> goal, std::function<double(const Times&)> value) {
  Rules().push_back({std::move(name), std::move(unit), better, goal, std::move(value)});
}

}  // namespace bench

int main(int argc, char** argv) {
  if (argc < 2 || argv[1][0] == '-') {
    std::fputs("bench_parts <file of the figures> [options of Google Benchmark]\n", stderr);
    return 2;
  }
  bench::Figures figures(argv[1]);
  --argc;
  std::swap(argv[0], argv[1]);
  ++argv;
  // Large blocks come fresh from the system and go back to it, as in an export, which has no use
  // for the memory of the one before.
  mallopt(M_MMAP_THRESHOLD, bench::kFreshBytes);
  SUInitialize();
  benchmark::Initialize(&argc, argv);
  bench::Reporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  for (const bench::Rule& rule : bench::Rules()) {
    try {
      figures.Set(rule.name, rule.value(reporter.times), rule.unit, rule.better, rule.goal);
    } catch (const std::out_of_range&) {
      std::printf("%s: not measured in this run\n", rule.name.c_str());
    }
  }
  figures.Save();
  return 0;
}
