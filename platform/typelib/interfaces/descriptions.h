/// Descriptions that are handed out: one block each, counted until it is given back.
#pragma once

#include <deque>
#include <memory>
#include <vector>

#include "platform/system/live_counts.h"
#include "platform/typelib/model/model.h"

namespace velk::typelib {

/// Counts itself among the descriptions that are out.
class CountedDescription {
  public:
    CountedDescription() { platform::countLive(VELK_LIVE_DESCRIPTION, 1); }
    CountedDescription(CountedDescription const&) = delete;
    CountedDescription& operator=(CountedDescription const&) = delete;
    ~CountedDescription() { platform::countLive(VELK_LIVE_DESCRIPTION, -1); }
};

/// A published structure and what it points at, which the library does not
/// already keep. Released through a pointer to the structure.
template <typename Published>
struct Description : Published {
    Description() : Published{} {}

    CountedDescription counted;
    std::vector<ELEMDESC> elements;
    std::deque<TYPEDESC> types;
    std::vector<std::unique_ptr<std::byte[]>> blocks;
};

/// Gives back what a Description handed out; null does nothing.
template <typename Published>
void giveBack(Published* published) {
    delete static_cast<Description<Published>*>(published);
}

/// Copies of all items of custom data in task memory.
HRESULT copyCustomData(CustomData items, CUSTDATA* data);

}  // namespace velk::typelib
