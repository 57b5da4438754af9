#pragma once

#include "VelkQXTProxy/call_by_name.h"

namespace velk::adapter {

/// A member that was found by its name.
struct Member {
    DISPID id = DISPID_VALUE;
    /// Describes the forced interface when the member is one of it, else empty.
    com::ComPtr<ITypeInfo> forcedType;
};

/// Resolves the call's name, which is looked up anew with every call; an empty
/// one is the default member. False, and the text for the script in `failure`,
/// when there is no such member.
bool findMember(NativeCall const& call, Member& member, mzComStringC& failure);

}  // namespace velk::adapter
