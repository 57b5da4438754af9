/// Measures what is done with documents, beside other programs that do the
/// same; prints medians and ratios, all of one run.
#include <iostream>

#include <benchmark/benchmark.h>

#include "common/benchmark_program.h"
#include "common/ratio_table.h"
#include "common/scratch_folder.h"
#include "drive_c.h"
#include "measures.h"
#include "sample_document.h"

namespace {

std::vector<Ratio> ratios(MedianCollector const& m) {
    using namespace measure;
    return {
        {"custom set of 1,000 properties read, against libgsf", m.ratio(layerLoad, rivalLoad),
         Bound::atMost, 1, "times"},
        {"the same as a script's dictionary", m.ratio(scriptLoad, rivalLoad), Bound::atMost, 1,
         "times"},
        {"one property written into 200 MB, against into 200 kB", m.ratio(largeChange, smallChange),
         Bound::atMost, 3, "times"},
        {"velkcom props list over 1,000 documents, against olefile", m.ratio(listing, rivalListing),
         Bound::atMost, 0.1, "times"},
        {"the same with --json", m.ratio(jsonListing, rivalListing), Bound::atMost, 0.1, "times"},
    };
}

void run() {
    ScratchFolder const folder;
    mapAsDriveC(folder.path());
    MedianCollector medians;
    registerLoadBenchmarks(folder.path());
    registerChangeBenchmarks(folder.path());
    registerListingBenchmarks(folder.path());
    benchmark::RunSpecifiedBenchmarks(&medians);
    printMedians(std::cout, medians);
    std::cout << "\nRatios\n";
    printRatios(std::cout, ratios(medians));
}

}  // namespace

int main(int argc, char** argv) {
    return runBenchmarkProgram(argc, argv, 9, run);
}
