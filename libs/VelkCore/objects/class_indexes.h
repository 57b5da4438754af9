#pragma once

#include <memory>

#include "member_index.h"

/// The member index of each class record, built when it is first asked for.
namespace velk::core {

struct IndexReleaser {
    void operator()(MemberIndex* index) const noexcept { index->release(); }
};
/// Holds one reference to an index.
using IndexHolder = std::unique_ptr<MemberIndex, IndexReleaser>;

/// The index of the record's class. Any thread.
IndexHolder indexOf(proxyMemberDescListS const& record);

/// Forgets the indexes that read the record, its own and those of classes
/// derived from it: the record may go away. Objects that hold one keep it.
void forgetIndexesOf(proxyMemberDescListS const* record);

}  // namespace velk::core
