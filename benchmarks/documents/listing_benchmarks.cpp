#include <cstdlib>
#include <stdexcept>
#include <string>

#include <benchmark/benchmark.h>

#include "measures.h"
#include "sample_document.h"

namespace {

namespace fs = std::filesystem;

constexpr int documents = 1000;

/// A program from its start to its end, its output thrown away.
void measureProgram(benchmark::State& state, std::string const& command) {
    std::string const quiet = command + " > /dev/null";
    for (auto _ : state) {
        if (std::system(quiet.c_str()) != 0) throw std::runtime_error(command + " failed");
    }
}

void registerProgram(char const* name, std::string const& command) {
    benchmark::RegisterBenchmark(name, measureProgram, command)->Iterations(1)->UseRealTime();
}

}  // namespace

void registerListingBenchmarks(fs::path const& folder) {
    fs::path const all = folder / "documents";
    fs::create_directory(all);
    fs::path const first = all / "0";
    makeUsual(first);
    for (int i = 1; i < documents; ++i) fs::copy_file(first, all / std::to_string(i));
    registerProgram(measure::listing, VELK_VELKCOM " props list " + all.string());
    registerProgram(measure::jsonListing, VELK_VELKCOM " props list --json " + all.string());
    registerProgram(measure::rivalListing, VELK_PYTHON " " VELK_OLEFILE_READER " " + all.string());
}
