#pragma once

#include "host/com_string.h"
#include "host/exception.h"
#include "host/variant_array.h"

namespace velk::adapter {

/// One call of a script member, as `mzIDispatch::invokeByName` receives it.
/// What serves it returns a host result code.
struct MemberCall {
    mzComStringC const& name;
    unsigned kind;
    mzComVariantArrayC const& args;
    mzComVariantC& result;
    mzComPtrT<mzIException>& exception;

    bool isMethod() const { return (kind & mzCallMethod) != 0; }
    bool isGet() const { return (kind & mzCallPropertyGet) != 0; }
    bool isPut() const { return (kind & mzCallPropertyPut) != 0; }
    /// Names compare without regard to ASCII case.
    bool names(char const* member) const {
        return name.compare(member, caseCompareAsciiInsensitive) == 0;
    }
    bool hasDefaultName() const { return name.isEmpty(); }
    int count() const { return args.size(); }
};

}  // namespace velk::adapter
