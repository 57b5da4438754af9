#include "VelkQXTProxy/com_adapter.h"

#include "VelkQXTProxy/typed_dispatch.h"
#include "VelkQXTProxy/wrapper_interfaces.h"
#include "com/com_ptr.h"
#include "com/enum_constants.h"
#include "host/coinit.h"
#include "host/proxy_member.h"

using velk::adapter::makeTypedDispatch;
using velk::adapter::wrapNative;
using velk::com::ComPtr;

namespace {

// Unit and lines as member descriptors publish them: constants of the class, no
// places in this file.
constexpr char const* sourceUnit = "VelkQXTProxy";

[[noreturn]] void fail(char const* member, mzComStringC const& message) {
    proxyObjectC::throwExecuteException(message, member, 1);
}

mzComStringC quoted(char const* before, mzComStringC const& text, char const* after) {
    return before + text + after;
}

CLSID classOf(mzComStringC const& progId, char const* member, mzComStringC const& message) {
    CLSID id{};
    if (CLSIDFromProgID(progId.toBSTR().get(), &id) != S_OK) fail(member, message);
    return id;
}

/// The native object behind a wrapper; empty for every other object.
ComPtr<IDispatch> nativeObject(mzComPtrT<mzIDispatch> const& object) {
    ComPtr<IDispatch> native;
    mzComPtrT<mzIComDispatchWrapper> const wrapper{mzComPtrC(object.iface())};
    if (!wrapper.isValid() || wrapper->getDispatch(native.put()) != mzSuccess) return {};
    return native;
}

/// A negative constant counts as not found.
mzComVariantC enumConstant(ComPtr<ITypeLib> const& library, mzComStringC const& enumName,
                           mzComStringC const& constName) {
    auto const view = [](mzComStringC const& text) {
        return velk::com::TextView(text.oleText(), static_cast<std::size_t>(text.length()));
    };
    auto const value = velk::com::findEnumConstant(library, view(enumName), view(constName));
    return value && *value >= 0 ? mzComVariantC(static_cast<int>(*value)) : mzComVariantC();
}

}  // namespace

qxtProxyC::qxtProxyC() {
    setNonStickyThread();
    // Calls share no state.
    setThreadSafe();
    PCoInitializer::attach(0);
    velk::adapter::resetLastException();
}

qxtProxyC::~qxtProxyC() {
    velk::adapter::setLastException({});
}

// Reflection shows scripts this signature. NOLINTNEXTLINE(performance-unnecessary-value-param)
mzComPtrT<mzIDispatch> qxtProxyC::CreateObject(mzComStringC progId) {
    PCoInitializer::attach(0);
    mzComStringC const message = quoted("Could not create object '", progId, "'");
    CLSID const id = classOf(progId, "CreateObject", message);
    ComPtr<IDispatch> object;
    if (CoCreateInstance(id, nullptr, CLSCTX_SERVER, IID_IDispatch, object.putVoid()) != S_OK) {
        fail("CreateObject", message);
    }
    return wrapNative(object);
}

mzComPtrT<mzIDispatch> qxtProxyC::CreateObject(mzComStringC const& progId, mzComStringC const& iid,
                                               mzComStringC const& typeLibPath) {
    PCoInitializer::attach(0);
    CLSID const classId =
        classOf(progId, "CreateObject", quoted("Could not create object '", progId, "'"));
    constexpr char const* member = "QueryInterface";
    IID id{};
    if (IIDFromString(iid.toBSTR().get(), &id) != S_OK) fail(member, "IID at pos 1 is invalid");
    ComPtr<IUnknown> object;
    if (CoCreateInstance(classId, nullptr, CLSCTX_SERVER, id, object.putVoid()) != S_OK) {
        fail(member, "Failed to create instance with given IID");
    }
    ComPtr<ITypeLib> library;
    if (LoadTypeLib(typeLibPath.toBSTR().get(), library.put()) != S_OK) {
        fail(member, "Failed to load type library from path at pos 2");
    }
    ComPtr<ITypeInfo> type;
    if (library->GetTypeInfoOfGuid(id, type.put()) != S_OK) {
        fail(member, "Failed to find type info for the given guid in the given type lib");
    }
    ComPtr<IDispatch> dispatch;
    if (makeTypedDispatch(object, type, dispatch) != S_OK) {
        fail(member, "Failed create a dispatch with the given data");
    }
    return wrapNative(dispatch);
}

// Reflection shows scripts this signature. NOLINTNEXTLINE(performance-unnecessary-value-param)
mzComPtrT<mzIDispatch> qxtProxyC::GetObject(mzComStringC progId) {
    PCoInitializer::attach(0);
    mzComStringC const message = quoted("Could not get object '", progId, "'");
    CLSID const id = classOf(progId, "GetObject", message);
    ComPtr<IUnknown> active;
    if (GetActiveObject(id, nullptr, active.put()) != S_OK) fail("GetObject", message);
    ComPtr<IDispatch> const dispatch = active.query<IDispatch>(IID_IDispatch);
    if (!dispatch) fail("GetObject", message);
    return wrapNative(dispatch);
}

mzComPtrT<mzIDispatch> qxtProxyC::QueryInterface(
    mzComStringC const& iid,
    // Reflection shows scripts this signature. NOLINTNEXTLINE(performance-unnecessary-value-param)
    mzComPtrT<mzIDispatch> object) {
    PCoInitializer::attach(0);
    constexpr char const* member = "QueryInterface";
    IID id{};
    if (IIDFromString(iid.toBSTR().get(), &id) != S_OK) {
        fail(member, quoted("invalid Object ident '", iid, "' for MS-COM-VB object"));
    }
    ComPtr<IDispatch> const native = nativeObject(object);
    if (!native) fail(member, "invalid MS-COM-VB object");
    HRESULT code = S_OK;
    auto const typed = native.query<IUnknown>(id, &code);
    if (code != S_OK) fail(member, "invalid query interface on MS-COM-VB object");
    auto const cast = typed.query<IDispatch>(IID_IDispatch, &code);
    if (code != S_OK) {
        fail(member, "cast object does not support IDispatch interface on MS-COM-VB object");
    }
    return wrapNative(cast);
}

mzComPtrT<prx_EXCEPINFO> qxtProxyC::getLastExceptionInfo() {
    // Nothing but exception objects is ever stored.
    mzComPtrT<mzIDispatch> const last{velk::adapter::takeLastException()};
    auto* const information = static_cast<prx_EXCEPINFO*>(last.iface());
    if (information) information->keepModuleLoaded();
    return mzComPtrT<prx_EXCEPINFO>(information);
}

mzComVariantC qxtProxyC::GetEnumConstant(mzComStringC const& typeLibPath,
                                         mzComStringC const& enumName,
                                         mzComStringC const& constName) {
    ComPtr<ITypeLib> library;
    if (FAILED(LoadTypeLibEx(typeLibPath.toBSTR().get(), REGKIND_NONE, library.put()))) return {};
    return enumConstant(library, enumName, constName);
}

mzComVariantC qxtProxyC::GetEnumConstant(mzComPtrT<mzIDispatch> const& object,
                                         mzComStringC const& enumName,
                                         mzComStringC const& constName) {
    ComPtr<IDispatch> const native = nativeObject(object);
    UINT count = 0;
    ComPtr<ITypeInfo> type;
    ComPtr<ITypeLib> library;
    UINT index = 0;
    if (!native || FAILED(native->GetTypeInfoCount(&count)) ||
        FAILED(native->GetTypeInfo(0, LOCALE_SYSTEM_DEFAULT, type.put())) || !type ||
        FAILED(type->GetContainingTypeLib(library.put(), &index)) || !library) {
        return {};
    }
    return enumConstant(library, enumName, constName);
}

proxyMemberDescListS const* qxtProxyC::getStaticProxyTypeInfo() {
    using Object = mzComPtrT<mzIDispatch>;
    using Text = mzComStringC const&;
    static proxyMemberDescS const members[] = {
        proxyMethod<static_cast<Object (qxtProxyC::*)(mzComStringC)>(&qxtProxyC::CreateObject)>(
            "CreateObject", sourceUnit, 264),
        proxyMethod<static_cast<Object (qxtProxyC::*)(Text, Text, Text)>(&qxtProxyC::CreateObject)>(
            "CreateObject", sourceUnit, 265),
        proxyMethod<&qxtProxyC::GetObject>("GetObject", sourceUnit, 266),
        proxyMethod<&qxtProxyC::QueryInterface>("QueryInterface", sourceUnit, 267),
        proxyPlainMethod<&qxtProxyC::getLastExceptionInfo>("getLastExceptionInfo", sourceUnit, 268),
        proxyMethod<static_cast<mzComVariantC (qxtProxyC::*)(Text, Text, Text)>(
            &qxtProxyC::GetEnumConstant)>("GetEnumConstant", sourceUnit, 269),
        proxyMethod<static_cast<mzComVariantC (qxtProxyC::*)(Object const&, Text, Text)>(
            &qxtProxyC::GetEnumConstant)>("GetEnumConstant", sourceUnit, 270),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {
        "qxtProxyC", &proxyCastTo<qxtProxyC>, bases,      members, "qxttools.comadapter",
        0,           &proxyCreate<qxtProxyC>, sourceUnit, 254};
    return &record;
}
