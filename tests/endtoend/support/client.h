/// A client that knows the ProgID and names of members, and nothing else.
#pragma once

#include <initializer_list>
#include <vector>

#include <gtest/gtest.h>

#include "com/owners.h"

namespace velk::test {

struct Outcome {
    HRESULT code = S_OK;
    com::Variant result;

    /// Null where there is none.
    com::ComPtr<IDispatch> object() const {
        EXPECT_EQ(result.get().vt, VT_DISPATCH);
        return com::ComPtr<IDispatch>(result.get().vt == VT_DISPATCH ? result.get().pdispVal
                                                                     : nullptr);
    }
};

inline CLSID proxyClass() {
    CLSID id{};
    EXPECT_EQ(CLSIDFromProgID(OLESTR("VelkCOMAdapter.VelkCOMProxy"), &id), S_OK);
    return id;
}

inline com::ComPtr<IDispatch> newProxy(CLSID const& id) {
    com::ComPtr<IDispatch> proxy;
    EXPECT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, proxy.putVoid()),
              S_OK);
    return proxy;
}

/// Calls a method, or reads a property.
inline Outcome call(com::ComPtr<IDispatch> const& object, std::basic_string<OLECHAR> name,
                    std::initializer_list<com::TextView> texts = {}) {
    Outcome outcome;
    LPOLESTR names[] = {name.data()};
    DISPID id = 0;
    outcome.code = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(outcome.code)) return outcome;
    std::vector<com::Bstr> owned;
    std::vector<VARIANT> reversed;
    for (auto text = std::rbegin(texts); text != std::rend(texts); ++text) {
        owned.push_back(com::makeBstr(*text));
        reversed.emplace_back().vt = VT_BSTR;
        reversed.back().bstrVal = owned.back().get();
    }
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    outcome.code =
        object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                       &parameters, outcome.result.put(), nullptr, nullptr);
    return outcome;
}

}  // namespace velk::test
