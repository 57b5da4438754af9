// Records as arguments and results of late-bound calls.

#include "platform/typelib/invoke/invoke_argument.h"
#include "platform/typelib/record_info.h"

namespace velk::typelib {
namespace {

// Unions are known to callers by no description of their own.
Reference<RecordInfo> describe(InvokeType const& type) {
    require(type.record->model().kind == TKIND_RECORD, DISP_E_BADVARTYPE);
    RecordBudget budget;
    return makeRecordInfo(*type.record, budget);
}

bool holdsRecord(VARIANT const& source) {
    return (source.vt & ~VT_BYREF) == VT_RECORD && source.pvRecord && source.pRecInfo;
}

}  // namespace

NativeValue InvokeArgument::bindRecord(VARIANT& argument, VARIANT& source, InvokeType const& type,
                                       USHORT flags) {
    bool const out = flags & PARAMFLAG_FOUT;
    bool const in = !out || (flags & PARAMFLAG_FIN);
    // An empty VARIANT by reference has room for the record that comes out.
    bool const room = &source != &argument && (!in || source.vt == VT_EMPTY);
    if (!holdsRecord(source) && out && room) {
        target_ = &argument;
        return bindEmptyRecord(type);
    }
    auto const info = describe(type);
    require(holdsRecord(source) && info->IsMatchingType(source.pRecInfo), DISP_E_TYPEMISMATCH);
    // What the member only writes to does not keep its old content.
    if (!in) check(source.pRecInfo->RecordClear(source.pvRecord));
    return recordAt(source.pvRecord, info->description(), type);
}

NativeValue InvokeArgument::bindEmptyRecord(InvokeType const& type) {
    auto info = describe(type);
    copy_->pvRecord = info->RecordCreate();
    require(copy_->pvRecord, E_OUTOFMEMORY);
    copy_->pRecInfo = Reference<IRecordInfo>(info.get()).release();
    copy_->vt = VT_RECORD;
    copyType_ = VT_RECORD;
    return recordAt(copy_->pvRecord, info->description(), type);
}

// The description is read here only; what is passed is the bytes.
NativeValue InvokeArgument::recordAt(void* bytes, RecordDescription const& record,
                                     InvokeType const& type) {
    require(type.pointers <= 1, DISP_E_BADVARTYPE);
    if (type.pointers == 1) return NativeValue::ofPointer(bytes);
    structure_.emplace(record.size, record.shape);
    return nativeStructure(*structure_, bytes);
}

}  // namespace velk::typelib
