#include "VelkQXTProxy/member_lookup.h"

#include "VelkQXTProxy/failures.h"
#include "VelkQXTProxy/member_name.h"

namespace velk::adapter {
namespace {

using com::ComPtr;

struct Lookup {
    HRESULT code = S_OK;
    char const* what = nullptr;
};

/// Asks the type information of the forced interface, which stands in the same
/// library as that of the object.
Lookup findForced(NativeCall const& call, LPOLESTR* name, Member& member) {
    ComPtr<ITypeInfo> type;
    if (HRESULT const code = call.object->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.put());
        code != S_OK || !type) {
        return {code, "no type info found"};
    }
    ComPtr<ITypeLib> library;
    UINT index = 0;
    if (HRESULT const code = type->GetContainingTypeLib(library.put(), &index);
        code != S_OK || !library) {
        return {code, "no type lib found"};
    }
    ComPtr<ITypeInfo> forced;
    if (HRESULT const code = library->GetTypeInfoOfGuid(call.forcedIid, forced.put());
        code != S_OK || !forced) {
        return {code, "no type info for GUID found"};
    }
    if (HRESULT const code = forced->GetIDsOfNames(name, 1, &member.id); code != S_OK) {
        return {code, "on forced interface"};
    }
    member.forcedType = forced;
    return {};
}

}  // namespace

bool findMember(NativeCall const& call, Member& member, mzComStringC& failure) {
    if (call.name.isEmpty()) return true;
    MemberName const text(call.name);
    LPOLESTR name = text.get();
    if (call.object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &member.id) == S_OK) {
        return true;
    }
    failure = "Member '" + call.name + "' not found";
    if (IsEqualGUID(call.forcedIid, GUID_NULL)) return false;
    Lookup const lookup = findForced(call, &name, member);
    if (!lookup.what) return true;
    failure = failure + " (" + lookup.what + "): 0x" + hexText(lookup.code);
    return false;
}

}  // namespace velk::adapter
