#include "bench/geometry/ratio_reporter.h"

#include <cstdio>

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  ConsoleReporter::ReportRuns(runs);
  for (const Run& run : runs) {
    const bool single = run.repetitions == 1;
    if (!single && run.aggregate_name != "median") continue;
    const std::string& name = run.run_name.function_name;
    const std::size_t slash = name.find('/');
    const std::string group = name.substr(0, slash);
    if (times_.count(group) == 0) groups_.push_back(group);
    times_[group][name.substr(slash + 1)] = run.GetAdjustedCPUTime();
  }
}

void RatioReporter::Finalize() {
  ConsoleReporter::Finalize();
  std::printf("\n%-28s %10s %10s  %-8s %6s\n", "", "ours, ns", "peer, ns", "fastest", "ratio");
  for (const std::string& group : groups_) {
    std::string fastest;
    for (const auto& [library, time] : times_[group]) {
      if (library != "kel" && (fastest.empty() || time < times_[group][fastest])) fastest = library;
    }
    const double ours = times_[group]["kel"];
    const double peer = times_[group][fastest];
    std::printf("%-28s %10.2f %10.2f  %-8s %6.2f\n", group.c_str(), ours, peer, fastest.c_str(),
                ours / peer);
  }
}
