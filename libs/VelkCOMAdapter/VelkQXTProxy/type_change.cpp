#include "VelkQXTProxy/type_change.h"

#include "VelkQXTProxy/call_failure.h"
#include "VelkQXTProxy/script_values.h"
#include "VelkQXTProxy/typed_dispatch.h"
#include "host/single_thread_use.h"

namespace velk::adapter {
namespace {

/// A value that cannot be converted leaves the held one as it is.
void takeAs(VARTYPE type, VARIANT const& source, HeldValue& held) {
    com::Variant changed;
    if (SUCCEEDED(com::changeType(source, type, changed))) held.replace(std::move(changed));
}

unsigned takeObject(MemberCall const& call, VARTYPE type, HeldValue& held) {
    auto const object = objectIn(call.args.at(1));
    if (!object.isValid()) return raise(invalidParameter(1), call.exception);
    mzComVariantC reference;
    reference.set(object);
    Converted const value(reference);
    if (value.isInUse()) return raise(mzInUseText, call.exception);
    takeAs(type, value.get(), held);
    return mzSuccess;
}

com::ComPtr<IUnknown> interfaceIn(VARIANT const& value) {
    if (value.vt == VT_UNKNOWN) return com::ComPtr<IUnknown>(value.punkVal);
    if (value.vt == VT_DISPATCH) return com::ComPtr<IUnknown>(value.pdispVal);
    return {};
}

unsigned failStep(MemberCall const& call, char const* step, HRESULT code) {
    return raise(step + hexText(code), call.exception);
}

/// A dispatch object that calls the held object through the interface `id`. The
/// object is asked for it: the pointer at hand may be that of another one, and
/// calls go through the interface's own table.
HRESULT callableAs(REFIID id, com::ComPtr<ITypeInfo> const& type, VARIANT const& held,
                   com::ComPtr<IDispatch>& dispatch) {
    com::ComPtr<IUnknown> const object = interfaceIn(held);
    if (!object) return E_INVALIDARG;
    HRESULT code = S_OK;
    auto const instance = object.query<IUnknown>(id, &code);
    return instance ? makeTypedDispatch(instance, type, dispatch) : code;
}

unsigned callByType(MemberCall const& call, HeldValue const& held) {
    auto const interfaceName = textIn(call.args.at(1));
    if (!interfaceName) return raise(invalidParameter(1), call.exception);
    auto const libraryPath = textIn(call.args.at(2));
    if (!libraryPath) return raise(invalidParameter(2), call.exception);
    IID id{};
    HRESULT code = IIDFromString(interfaceName->get(), &id);
    if (code != S_OK) return failStep(call, "IID at pos 1 is invalid: 0x", code);
    com::ComPtr<ITypeLib> library;
    code = LoadTypeLib(libraryPath->get(), library.put());
    if (code != S_OK) return failStep(call, "Type library at pos 2 is invalid: 0x", code);
    com::ComPtr<ITypeInfo> type;
    code = library->GetTypeInfoOfGuid(id, type.put());
    if (code != S_OK) {
        return failStep(
            call, "Failed to find type info for the given guid in the given type lib: 0x", code);
    }
    com::ComPtr<IDispatch> dispatch;
    code = callableAs(id, type, held.get(), dispatch);
    if (code != S_OK) {
        return failStep(call, "Failed create a dispatch with the given data: 0x", code);
    }
    call.result.set(wrapNative(dispatch));
    return mzSuccess;
}

}  // namespace

unsigned changeType(MemberCall const& call, HeldValue& held) {
    auto const type = typeCode(call.args.at(0));
    if (!type) return raise(invalidParameter(0), call.exception);
    if (call.count() == 1) {
        takeAs(*type, held.get(), held);
        return mzSuccess;
    }
    if (call.count() == 2) return takeObject(call, *type, held);
    if (call.count() == 3 && *type == VT_DISPATCH) return callByType(call, held);
    return raise(
        "Invalid parameters count, expected 2 got " + mzComStringC::fromInt(call.count(), 10),
        call.exception);
}

}  // namespace velk::adapter
