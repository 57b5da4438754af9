#include "VelkQXTProxy/record_creation.h"

#include "VelkQXTProxy/call_failure.h"
#include "VelkQXTProxy/script_values.h"
#include "VelkQXTProxy/wrapper_interfaces.h"
#include "com/error.h"

namespace velk::adapter {
namespace {

using com::ComPtr;

constexpr char const* castFailed = "Failed to cast argument at position 1 to a dispatch";

/// What did not work; empty when all did.
using Failure = mzComStringC;

Failure failure(char const* step, HRESULT code) {
    return step + hexText(code);
}

Failure nativeObject(mzComVariantC const& argument, ComPtr<IDispatch>& native) {
    auto const object = objectIn(argument);
    if (!object.isValid()) return castFailed;
    mzComPtrT<mzIComDispatchWrapper> const wrapper{mzComPtrC(object.iface())};
    if (!wrapper.isValid()) {
        return castFailed + mzComStringC(" wrapper => not a native COM object");
    }
    if (wrapper->getDispatch(native.put()) != mzSuccess || !native) {
        return "Failed to retrieve the original dispatch from the dispatch wrapper";
    }
    return {};
}

Failure libraryOf(ComPtr<IDispatch> const& native, ComPtr<ITypeLib>& library) {
    ComPtr<ITypeInfo> type;
    if (HRESULT const code = native->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.put());
        FAILED(code) || !type) {
        return failure("Failed to get the type info object from the dispatch: 0x", code);
    }
    UINT index = 0;
    if (HRESULT const code = type->GetContainingTypeLib(library.put(), &index);
        FAILED(code) || !library) {
        return failure("Failed to get the type lib object from the type info object: 0x", code);
    }
    return {};
}

Failure findType(ComPtr<ITypeLib> const& library, com::Bstr const& name, ComPtr<ITypeInfo>& type) {
    mzComStringC const what = "a struct named " + mzComStringC::fromBSTR(name.get());
    // The search writes its own spelling into the name.
    com::Bstr const buffer = com::makeBstr(com::viewBstr(name));
    MEMBERID member = MEMBERID_NIL;
    USHORT found = 1;
    if (HRESULT const code = library->FindName(buffer.get(), 0, type.put(), &member, &found);
        FAILED(code)) {
        return "Failed to search for " + what + " inside the type lib: 0x" + hexText(code);
    }
    if (found > 1) return "Failed to find " + what + " inside the type lib: Ambiguous name";
    if (found == 0 || !type) {
        return "Failed to find " + what + " inside the type lib: Invalid name";
    }
    return {};
}

/// The same for a type that has no identifier, where its library lets it have one.
Failure recordWithNewId(ComPtr<ITypeInfo> const& type, ComPtr<IRecordInfo>& record) {
    HRESULT code = S_OK;
    auto const mutableType = type.query<ICreateTypeInfo>(IID_ICreateTypeInfo, &code);
    if (!mutableType) {
        return failure("Failed to cast type info object to a mutable type info object: 0x", code);
    }
    GUID id{};
    if (code = CoCreateGuid(&id); FAILED(code)) {
        return failure("Failed to a create a new guid: 0x", code);
    }
    if (code = mutableType->SetGuid(id); FAILED(code)) {
        return failure("Failed to a add a guid to the mutable type info object: 0x", code);
    }
    auto const identified = mutableType.query<ITypeInfo>(IID_ITypeInfo, &code);
    if (!identified) {
        return failure(
            "Failed to cast the mutable type info object into an immutable type info object: 0x",
            code);
    }
    if (code = GetRecordInfoFromTypeInfo(identified.get(), record.put()); FAILED(code)) {
        return failure("Permanently failed to retrieve the record info for the struct: 0x", code);
    }
    return {};
}

Failure recordOf(ComPtr<ITypeInfo> const& type, ComPtr<IRecordInfo>& record) {
    HRESULT const code = GetRecordInfoFromTypeInfo(type.get(), record.put());
    // The answer for a record without an identifier.
    if (code == E_INVALIDARG) return recordWithNewId(type, record);
    if (FAILED(code)) {
        return failure("Failed to retrieve the record info for the struct: 0x", code);
    }
    return {};
}

Failure findRecord(MemberCall const& call, ComPtr<IRecordInfo>& record) {
    ComPtr<IDispatch> native;
    if (Failure failed = nativeObject(call.args.at(1), native); !failed.isEmpty()) return failed;
    ComPtr<ITypeLib> library;
    if (Failure failed = libraryOf(native, library); !failed.isEmpty()) return failed;
    auto const name = textIn(call.args.at(2));
    if (!name) return invalidParameter(2);
    ComPtr<ITypeInfo> type;
    if (Failure failed = findType(library, *name, type); !failed.isEmpty()) return failed;
    return recordOf(type, record);
}

}  // namespace

unsigned createRecord(MemberCall const& call, HeldValue& held) {
    if (call.count() != 3) return mzMemberNotFound;
    ComPtr<IRecordInfo> record;
    if (Failure const failed = findRecord(call, record); !failed.isEmpty()) {
        return raise(failed, call.exception);
    }
    VARIANT value{};
    value.vt = VT_RECORD;
    value.pvRecord = record->RecordCreate();
    if (!value.pvRecord) throw com::Error(E_OUTOFMEMORY);
    value.pRecInfo = record.detach();
    held.replace(com::Variant(value));
    return mzSuccess;
}

}  // namespace velk::adapter
