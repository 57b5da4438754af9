// The published ways to record information.

#include "platform/typelib/record_info.h"

namespace velk::typelib {
namespace {

Reference<RecordInfo> identifiedRecord(ITypeInfo& type) {
    RecordBudget budget;
    auto info = makeRecordInfo(type, budget);
    // A record without an identifier could not be told to another process.
    require(info->description().id != GUID_NULL, E_INVALIDARG);
    return info;
}

}  // namespace
}  // namespace velk::typelib

using namespace velk::typelib;

HRESULT GetRecordInfoFromTypeInfo(ITypeInfo* type, IRecordInfo** record) {
    if (!record) return E_INVALIDARG;
    *record = nullptr;
    if (!type) return E_INVALIDARG;
    return guarded([&] { *record = identifiedRecord(*type).release(); });
}

HRESULT GetRecordInfoFromGuids(REFGUID libraryId, ULONG major, ULONG minor, LCID lcid,
                               REFGUID recordId, IRecordInfo** record) {
    if (!record) return E_INVALIDARG;
    *record = nullptr;
    if (major > 0xffff || minor > 0xffff) return TYPE_E_LIBNOTREGISTERED;
    return guarded([&] {
        Reference<ITypeLib> library;
        check(LoadRegTypeLib(libraryId, static_cast<WORD>(major), static_cast<WORD>(minor), lcid,
                             library.out()));
        Reference<ITypeInfo> type;
        check(library->GetTypeInfoOfGuid(recordId, type.out()));
        *record = identifiedRecord(*type).release();
    });
}
