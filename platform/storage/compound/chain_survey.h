/// What changes of a compound file must leave alone.
#pragma once

#include <cstdint>
#include <unordered_set>

#include "platform/storage/compound/format.h"

namespace velk::platform::storage {

class SectorStore;

/// Sectors of one table that are not as the table has them. Both sets are empty
/// for a file that fits together.
struct LedTo {
    /// Led to, but marked free or not there yet: never to be given out.
    std::unordered_set<SectorId> kept;
    /// Led to from two places: a change for the one would harm the other.
    std::unordered_set<SectorId> shared;
};

struct Survey {
    LedTo sectors;
    /// The same for the sectors of small streams.
    LedTo small;
    /// Where the last of those that small streams lead to ends.
    std::uint64_t smallEnd = 0;
};

/// Follows all that the header and the directory lead to, each chain as far as
/// its size reaches. For a store without changes. Fails with a Failure
/// when the file cannot be read; a damaged chain is followed as far as it goes.
Survey surveyChains(SectorStore& store);

}  // namespace velk::platform::storage
