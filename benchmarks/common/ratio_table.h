/// The tables that a benchmark program ends with.
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
    /// How many times the first took of the second's time.
    double ratio(char const* name, char const* base) const;
    std::map<std::string, double> const& all() const { return medians_; }

  private:
    std::map<std::string, double> medians_;
};

enum class Bound { atMost, atLeast };

/// One ratio and the limit that it has to keep.
struct Ratio {
    char const* title;
    double value;
    Bound bound;
    double limit;
    char const* unit;
};

void printMedians(std::ostream& out, MedianCollector const& medians);
/// Each ratio with its limit and whether it holds.
void printRatios(std::ostream& out, std::vector<Ratio> const& ratios);
