/// Measures the bridge; prints medians, ratios and sizes, all of one run.
#include <cstdio>
#include <iostream>

#include <benchmark/benchmark.h>

#include "bridge_ratios.h"
#include "common/benchmark_program.h"
#include "common/ratio_table.h"
#include "common/scratch_folder.h"
#include "host/host.h"
#include "measures.h"
#include "memory.h"

namespace {

/// The benchmarks registered so far, which are then forgotten.
void runRegistered(MedianCollector& medians) {
    benchmark::RunSpecifiedBenchmarks(&medians);
    benchmark::ClearRegisteredBenchmarks();
}

void run() {
    ScratchFolder const folder;
    MedianCollector medians;
    registerRuntimeBenchmarks();
    registerFacadeBenchmarks();
    registerWrapperBenchmarks();
    registerThreadBenchmarks();
    registerProgramBenchmarks(folder.path());
    runRegistered(medians);
    registerFewNamesBenchmark();
    runRegistered(medians);
    registerManyNamesBenchmarks();
    runRegistered(medians);
    printMedians(std::cout, medians);
    printBridgeRatios(std::cout, medians);
    std::printf("\nSizes\n%9.0f bytes per name of 13 characters\n%9.0f bytes per facade\n",
                bytesPerName(), bytesPerFacade());
}

}  // namespace

int main(int argc, char** argv) {
    return runBenchmarkProgram(argc, argv, 21, run);
}
