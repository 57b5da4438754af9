#include "automation_object.h"

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

namespace wordcount {
namespace {

namespace com = velk::com;

// Members and ProgIDs are ASCII; what a server describes may be anything.
std::string narrow(com::TextView text) {
    std::string result;
    for (OLECHAR unit : text) result += unit < 0x80 ? static_cast<char>(unit) : '?';
    return result;
}

std::string describe(std::string const& what, HRESULT code, EXCEPINFO const* info = nullptr) {
    char hex[16];
    std::snprintf(hex, sizeof hex, "0x%08X", static_cast<unsigned>(code));
    std::string text = what + " failed: " + hex;
    if (info != nullptr && info->bstrDescription != nullptr) {
        text += ", " + narrow(com::viewBstr(info->bstrDescription));
    }
    return text;
}

}  // namespace

AutomationObject AutomationObject::create(OLECHAR const* progId) {
    CLSID id;
    HRESULT code = CLSIDFromProgID(progId, &id);
    if (FAILED(code)) {
        throw CallError(describe("looking up " + narrow(progId), code) + " (is it registered?)");
    }
    com::ComPtr<IDispatch> object;
    code = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.putVoid());
    if (FAILED(code)) throw CallError(describe("creating " + narrow(progId), code));
    return AutomationObject(std::move(object));
}

AutomationObject::AutomationObject(com::Variant result, char const* member) {
    VARIANT& value = *result.address();
    if (value.vt != VT_DISPATCH || value.pdispVal == nullptr) {
        throw CallError(std::string(member) + " gave no object");
    }
    object_ = com::ComPtr<IDispatch>(value.pdispVal);
}

com::Variant AutomationObject::call(OLECHAR const* member, std::span<VARIANT const> arguments) {
    return invoke(member, DISPATCH_METHOD, arguments);
}

com::Variant AutomationObject::get(OLECHAR const* member, std::span<VARIANT const> arguments) {
    return invoke(member, DISPATCH_PROPERTYGET, arguments);
}

void AutomationObject::put(OLECHAR const* member, std::span<VARIANT const> arguments) {
    invoke(member, DISPATCH_PROPERTYPUT, arguments);
}

DISPID AutomationObject::identifier(OLECHAR const* member) {
    auto const known = identifiers_.find(member);
    if (known != identifiers_.end()) return known->second;
    auto* name = const_cast<LPOLESTR>(member);
    DISPID id = DISPID_UNKNOWN;
    HRESULT const code = object_->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(code)) throw CallError(describe("looking up the member " + narrow(member), code));
    identifiers_.emplace(member, id);
    return id;
}

com::Variant AutomationObject::invoke(OLECHAR const* member, WORD flags,
                                      std::span<VARIANT const> arguments) {
    // The last argument comes first in DISPPARAMS. The copies are shallow: the
    // caller keeps owning what they refer to.
    std::vector<VARIANT> reversed(arguments.begin(), arguments.end());
    std::reverse(reversed.begin(), reversed.end());
    DISPID putName = DISPID_PROPERTYPUT;
    bool const isPut = flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters{reversed.data(), isPut ? &putName : nullptr,
                          static_cast<UINT>(reversed.size()), isPut ? 1U : 0U};
    com::Variant result;
    com::ExceptionInfo info;
    HRESULT const code =
        object_->Invoke(identifier(member), IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                        isPut ? nullptr : result.put(), info.put(), nullptr);
    if (FAILED(code)) throw CallError(describe(narrow(member), code, info.address()));
    return result;
}

}  // namespace wordcount
