#include "VelkQXTProxy/record_access.h"

#include "VelkQXTProxy/call_failure.h"
#include "VelkQXTProxy/script_values.h"
#include "com/com_ptr.h"
#include "conversion/conversions.h"
#include "host/single_thread_use.h"

namespace velk::adapter {
namespace {

struct Field {
    com::ComPtr<IRecordInfo> info;
    void* record;
    com::Bstr name;
};

mzComStringC shownName(Field const& field) {
    return mzComStringC::fromBSTR(field.name.get());
}

unsigned getField(MemberCall const& call, Field const& field) {
    com::Variant value;
    if (FAILED(field.info->GetField(field.record, field.name.get(), value.put()))) {
        return raise("Failed to get field: " + shownName(field), call.exception);
    }
    if (!convertMSCOMVariant2MZCOMVariant(value.get(), call.result, true, false)) {
        return raise("Invalid result", call.exception);
    }
    return mzSuccess;
}

/// An object is meant itself: put by value, its default property would be.
ULONG putFlags(VARIANT const& value) {
    bool const isObject = value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN;
    return isObject ? INVOKE_PROPERTYPUTREF : INVOKE_PROPERTYPUT;
}

unsigned putField(MemberCall const& call, Field const& field) {
    Converted value(call.args.at(1));
    if (value.isInUse()) return raise(mzInUseText, call.exception);
    if (!value.succeeded()) return raise(invalidParameter(1), call.exception);
    if (FAILED(field.info->PutField(putFlags(value.get()), field.record, field.name.get(),
                                    value.address()))) {
        return raise("Failed to put field: " + shownName(field), call.exception);
    }
    call.result.clear();
    return mzSuccess;
}

}  // namespace

unsigned accessRecord(MemberCall const& call, VARIANT const& record) {
    if (!record.pRecInfo || !record.pvRecord) {
        return raise("The underlying variant is not valid", call.exception);
    }
    std::optional<com::Bstr> name;
    if (call.count() > 0) name = textIn(call.args.at(0));
    if (!name) return raise(invalidParameter(0), call.exception);
    Field const field{com::ComPtr<IRecordInfo>(record.pRecInfo), record.pvRecord, std::move(*name)};
    if (call.hasDefaultName() && call.isMethod() && call.count() == 1) {
        return getField(call, field);
    }
    if (call.hasDefaultName() && call.isPut() && call.count() == 2) return putField(call, field);
    return raise("Invalid parameter count", call.exception);
}

}  // namespace velk::adapter
