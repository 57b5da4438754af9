#include <benchmark/benchmark.h>

#include "measures.h"
#include "sample_document.h"

namespace {

namespace fs = std::filesystem;

/// From the closed file to the closed file, which then has the new title.
void measureChange(benchmark::State& state, fs::path const& file) {
    char title[] = "title 0";
    for (auto _ : state) {
        title[6] = title[6] == '0' ? '1' : '0';
        auto const open = openSet(file, FMTID_SummaryInformation, STGM_READWRITE);
        writeTitle(*open.set.get(), title);
        requireSuccess(open.storage->Commit(STGC_DEFAULT), "Commit");
    }
}

void registerChange(char const* name, fs::path const& file, std::size_t size) {
    makeOfSize(file, size);
    benchmark::RegisterBenchmark(name, measureChange, file)->UseRealTime();
}

}  // namespace

void registerChangeBenchmarks(fs::path const& folder) {
    registerChange(measure::smallChange, folder / "small", 200000);
    registerChange(measure::largeChange, folder / "large", 200000000);
}
