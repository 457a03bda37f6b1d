#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

/// Prints, besides the usual lines, our time as a share of the fastest peer's for every group of
/// benchmarks. A benchmark is named "group/library"; ours is the library "kel".
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  std::vector<std::string> groups_;  // in the order they ran
  std::map<std::string, std::map<std::string, double>> times_;
};
