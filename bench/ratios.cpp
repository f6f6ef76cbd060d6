#include "ratios.hpp"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace lexon::bench {

namespace {

// Prints like the usual reporter, and remembers the shortest time for one iteration of each benchmark.
class TimeKeeper : public benchmark::ConsoleReporter {
 public:
  TimeKeeper() : ConsoleReporter(isatty(STDOUT_FILENO) != 0 ? OO_Defaults : OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.error_occurred || run.run_type != Run::RT_Iteration || run.iterations == 0) continue;
      const double time = run.real_accumulated_time / static_cast<double>(run.iterations);
      const auto [place, is_new] = best_.try_emplace(run.run_name.function_name + arguments(run), time);
      if (!is_new) place->second = std::min(place->second, time);
    }
  }

  void print(const Ratio& ratio) const {
    const auto slower = best_.find(ratio.slower);
    const auto faster = best_.find(ratio.faster);
    if (slower == best_.end() || faster == best_.end()) return;
    const double times = slower->second / faster->second;
    const bool has_upper_bound = ratio.at_most > 0.0;
    std::printf("%s: %.2f times", ratio.what, times);
    if (ratio.at_least > 0.0) std::printf(", wanted >= %g", ratio.at_least);
    if (has_upper_bound) std::printf(", wanted <= %g", ratio.at_most);
    const bool is_met = times >= ratio.at_least && (!has_upper_bound || times <= ratio.at_most);
    std::puts(ratio.at_least > 0.0 || has_upper_bound ? is_met ? ": met" : ": NOT MET" : " (for comparison)");
  }

 private:
  static std::string arguments(const Run& run) {
    return run.run_name.args.empty() ? std::string() : "/" + run.run_name.args;
  }

  std::map<std::string, double> best_;
};

}  // namespace

int run(int argc, char** argv, std::initializer_list<Ratio> ratios) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  TimeKeeper reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  for (const Ratio& ratio : ratios) reporter.print(ratio);
  benchmark::Shutdown();
  return 0;
}

}  // namespace lexon::bench
