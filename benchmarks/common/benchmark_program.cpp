#include "benchmark_program.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

int runBenchmarkProgram(int argc, char** argv, int repetitions, void (*measure)()) {
    // The options on the command line come last and have the last word.
    std::vector<char*> arguments(argv, argv + argc);
    std::string repeated = "--benchmark_repetitions=" + std::to_string(repetitions);
    char shortRuns[] = "--benchmark_min_time=0.03";
    char mixedOrder[] = "--benchmark_enable_random_interleaving=true";
    arguments.insert(arguments.begin() + 1, {repeated.data(), shortRuns, mixedOrder});
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
    try {
        measure();
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
}
