// The console output of a benchmark program, followed by the ratios of its measured pairs:
// each figure is this against that within one run, so a noisy machine moves both alike.
#pragma once

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace qm::bench {

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  RatioReporter() : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_ColorTabular : OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.error_occurred || run.iterations == 0) continue;
      // With repetitions, the median of them.
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median") continue;
      seconds_[run.run_name.function_name] =
          run.real_accumulated_time / static_cast<double>(run.iterations);
      for (const auto& [name, counter] : run.counters) seconds_[name] = counter.value / 1000;
    }
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    GetOutputStream() << "\nRatios of one run (lower is better):\n";
    WriteRatios();
  }

 protected:
  // The program's own lines, by Ratio and Line.
  virtual void WriteRatios() = 0;

  // One pair: `measured` against `against`, by benchmark or counter name. A target of 0
  // shows the pair for scale only.
  void Ratio(const char* label, const std::string& measured, const std::string& against,
             const std::string& unit, double target) {
    const auto a = seconds_.find(measured);
    const auto b = seconds_.find(against);
    if (a == seconds_.end() || b == seconds_.end() || b->second <= 0) return;
    const double ratio = a->second / b->second;
    char line[256];
    int n = std::snprintf(line, sizeof line, "  %-38s %6.2f  (%.3f against %.3f %s)", label, ratio,
                          a->second * 1000, b->second * 1000, unit.c_str());
    if (target > 0 && n > 0 && static_cast<std::size_t>(n) < sizeof line) {
      std::snprintf(line + n, sizeof line - static_cast<std::size_t>(n),
                    "  target at most %.1f: %s", target, ratio <= target ? "met" : "MISSED");
    }
    GetOutputStream() << line << "\n";
  }

  // Seconds per iteration of a benchmark or counter; 0 when it did not run.
  double Seconds(const std::string& name) const {
    const auto it = seconds_.find(name);
    return it != seconds_.end() ? it->second : 0;
  }

 private:
  // Seconds per iteration of each benchmark, and each counter (milliseconds) in seconds.
  std::map<std::string, double> seconds_;
};

// The main of a benchmark program: its benchmarks registered, run, and reported.
inline int RunBenchmarks(int argc, char** argv, void (*registerAll)(), RatioReporter& reporter) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  registerAll();
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}

}  // namespace qm::bench
