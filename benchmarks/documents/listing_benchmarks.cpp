#include <string>

#include "common/whole_program.h"
#include "measures.h"
#include "sample_document.h"

namespace {

namespace fs = std::filesystem;

constexpr int documents = 1000;

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
