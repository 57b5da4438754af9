#include "ratio_table.h"

#include <iomanip>
#include <stdexcept>

namespace {

/// The library has renamed what tells of a failed run.
template <typename Run>
void throwIfFailed(Run const& run) {
    if constexpr (requires { run.error_occurred; }) {
        if (run.error_occurred) throw std::runtime_error(run.error_message);
    } else {
        if (run.skipped != 0) throw std::runtime_error(run.skip_message);
    }
}

}  // namespace

bool MedianCollector::ReportContext(Context const&) {
    return true;
}

void MedianCollector::ReportRuns(std::vector<Run> const& runs) {
    for (auto const& run : runs) {
        throwIfFailed(run);
        if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
            medians_[run.run_name.function_name] = run.GetAdjustedRealTime();
        }
    }
}

double MedianCollector::nanoseconds(char const* name) const {
    auto const found = medians_.find(name);
    if (found == medians_.end()) throw std::runtime_error(std::string("did not run: ") + name);
    return found->second;
}

double MedianCollector::ratio(char const* name, char const* base) const {
    return nanoseconds(name) / nanoseconds(base);
}

void printMedians(std::ostream& out, MedianCollector const& medians) {
    out << std::fixed << "\nMedian of each measurement\n";
    for (auto const& [name, time] : medians.all()) {
        out << std::setw(14) << std::setprecision(1) << time << " ns  " << name << '\n';
    }
}

void printRatios(std::ostream& out, std::vector<Ratio> const& ratios) {
    out << std::fixed;
    for (auto const& ratio : ratios) {
        bool const atMost = ratio.bound == Bound::atMost;
        bool const holds = atMost ? ratio.value <= ratio.limit : ratio.value >= ratio.limit;
        out << std::setw(9) << std::setprecision(2) << ratio.value << ' ' << std::left
            << std::setw(6) << ratio.unit << std::right << (atMost ? "at most  " : "at least ")
            << std::setw(5) << ratio.limit << "  " << (holds ? "holds  " : "MISSED ") << ratio.title
            << '\n';
    }
}
