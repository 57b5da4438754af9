#include "whole_program.h"

#include <cstdlib>
#include <stdexcept>

#include <benchmark/benchmark.h>

void runProgram(std::string const& command) {
    if (std::system((command + " > /dev/null").c_str()) != 0) {
        throw std::runtime_error(command + " failed");
    }
}

void registerProgram(char const* name, std::string const& command) {
    auto const measure = [command](benchmark::State& state) {
        for (auto _ : state) runProgram(command);
    };
    benchmark::RegisterBenchmark(name, measure)->Iterations(1)->UseRealTime();
}
