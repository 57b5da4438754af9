/// The table of ratios that a run ends with.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

/// Collects the median time of each benchmark while the run goes on.
class MedianCollector : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(Context const& context) override;
    void ReportRuns(std::vector<Run> const& runs) override;

    /// Nanoseconds per call. Throws std::runtime_error for a benchmark that
    /// did not run.
    double nanoseconds(char const* name) const;
    std::map<std::string, double> const& all() const { return medians_; }

  private:
    std::map<std::string, double> medians_;
};

/// Prints every measurement, then each ratio with its limit and whether it holds.
void printTable(std::ostream& out, MedianCollector const& medians);
