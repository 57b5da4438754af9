/// A native object whose calls the test answers.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "com/owners.h"
#include "host/host.h"

namespace velk::test {

/// One call of `IDispatch::Invoke` as it arrived.
struct NativeCallArguments {
    DISPID member;
    WORD flags;
    DISPPARAMS& parameters;
    VARIANT* result;
    EXCEPINFO* exception;
    UINT* wrongArgument;
};

/// Knows every name but "Unknown": the default member has DISPID 0, "Other" 2,
/// every other name 1.
class ScriptedDispatch : public IDispatch {
  public:
    using Respond = std::function<HRESULT(NativeCallArguments&)>;

    explicit ScriptedDispatch(Respond respond = {}) : respond_(std::move(respond)) {}
    virtual ~ScriptedDispatch() = default;

    /// The references of others.
    ULONG references() const { return references_; }
    /// What the last call was, in text.
    std::string lastCall() const {
        std::lock_guard const guard(mutex_);
        return lastCall_;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) noexcept override {
        bool const answers = IsEqualGUID(id, IID_IUnknown) || IsEqualGUID(id, IID_IDispatch);
        *out = answers ? static_cast<IDispatch*>(this) : nullptr;
        if (answers) AddRef();
        return answers ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return --references_; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                            DISPID* ids) noexcept override {
        std::basic_string<OLECHAR> const name = names[0];
        if (name == OLESTR("Unknown")) return DISP_E_UNKNOWNNAME;
        ids[0] = name == OLESTR("Other") ? 2 : 1;
        return S_OK;
    }
    // May throw, as careless servers do.
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* wrongArgument) override {
        NativeCallArguments call{member, flags, *parameters, result, exception, wrongArgument};
        {
            std::lock_guard const guard(mutex_);
            lastCall_ = describe(call);
        }
        return respond_ ? respond_(call) : S_OK;
    }

  private:
    static std::string describe(NativeCallArguments const& call) {
        std::string text =
            "member " + std::to_string(call.member) + " flags " + std::to_string(call.flags) + " (";
        for (UINT i = 0; i < call.parameters.cArgs; ++i) {
            if (i > 0) text += ", ";
            text += describe(call.parameters.rgvarg[i]);
        }
        text += ")";
        if (call.parameters.cNamedArgs > 0) {
            text += " named " + std::to_string(call.parameters.rgdispidNamedArgs[0]);
        }
        return text;
    }
    /// Type code, and content where it is a number.
    static std::string describe(VARIANT const& value) {
        switch (value.vt) {
            case VT_I4:
                return "I4 " + std::to_string(value.lVal);
            case VT_R8:
                return "R8 " + std::to_string(value.dblVal);
            case VT_BYREF | VT_I4:
                return value.plVal ? "ref I4 " + std::to_string(*value.plVal) : "ref to nothing";
            case VT_BYREF | VT_VARIANT:
                if (!value.pvarVal) return "ref to nothing";
                return "ref to " +
                       (value.pvarVal->vt & VT_BYREF ? "ref" : describe(*value.pvarVal));
            default:
                return "type " + std::to_string(value.vt);
        }
    }

    Respond const respond_;
    std::atomic<ULONG> references_{0};
    mutable std::mutex mutex_;
    std::string lastCall_;
};

}  // namespace velk::test
