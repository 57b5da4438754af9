/// Names of the single measurements, from which the table makes its ratios.
#pragma once

#include <filesystem>

namespace measure {

inline constexpr char layerLoad[] = "set of 1,000 properties, all read";
inline constexpr char scriptLoad[] = "set of 1,000 properties as a script's dictionary";
inline constexpr char rivalLoad[] = "set of 1,000 properties, all read by libgsf";
inline constexpr char smallChange[] = "one property written into a file of 200 kB";
inline constexpr char largeChange[] = "one property written into a file of 200 MB";
inline constexpr char listing[] = "velkcom props list over 1,000 documents";
inline constexpr char jsonListing[] = "velkcom props list --json over 1,000 documents";
inline constexpr char rivalListing[] = "olefile over 1,000 documents";

}  // namespace measure

/// Each makes its documents in `folder`, which is drive C too, and adds its
/// benchmarks to those that the library runs. Throws std::runtime_error.
void registerLoadBenchmarks(std::filesystem::path const& folder);
void registerChangeBenchmarks(std::filesystem::path const& folder);
void registerListingBenchmarks(std::filesystem::path const& folder);
