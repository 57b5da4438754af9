/// Measures the bridge; prints medians, ratios and sizes, all of one run.
#include <cstdio>
#include <exception>
#include <iostream>

#include <benchmark/benchmark.h>

#include "host/host.h"
#include "measures.h"
#include "memory.h"
#include "ratio_table.h"

namespace {

/// The benchmarks registered so far, which are then forgotten.
void runRegistered(MedianCollector& medians) {
    benchmark::RunSpecifiedBenchmarks(&medians);
    benchmark::ClearRegisteredBenchmarks();
}

void run() {
    MedianCollector medians;
    registerRuntimeBenchmarks();
    registerFacadeBenchmarks();
    registerWrapperBenchmarks();
    registerThreadBenchmarks();
    runRegistered(medians);
    registerFewNamesBenchmark();
    runRegistered(medians);
    registerManyNamesBenchmarks();
    runRegistered(medians);
    printTable(std::cout, medians);
    std::printf("\nSizes\n%9.0f bytes per name of 13 characters\n%9.0f bytes per facade\n",
                bytesPerName(), bytesPerFacade());
}

}  // namespace

int main(int argc, char** argv) {
    // Many short runs in mixed order, and their median: a slow moment of the
    // machine then falls on all benchmarks alike. The options on the command
    // line have the last word.
    std::vector<char*> arguments(argv, argv + argc);
    char repetitions[] = "--benchmark_repetitions=21";
    char shortRuns[] = "--benchmark_min_time=0.03";
    char mixedOrder[] = "--benchmark_enable_random_interleaving=true";
    arguments.insert(arguments.begin() + 1, {repetitions, shortRuns, mixedOrder});
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
    try {
        run();
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "bridge_benchmark: %s\n", error.what());
        return 1;
    }
}
