/// An object behind the interface IRecorder of the test library, which notes
/// down what reaches it.
#pragma once

#include <sstream>
#include <string>

#include "conformance/automation/value_notation.h"
#include "shapes.h"

namespace velk::test {

/// The vtable of IRecorder as its description lays it out.
struct IRecorder : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Add(LONG left, LONG right, LONG* sum) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Title(BSTR* text) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Title(BSTR text) = 0;
    virtual HRESULT STDMETHODCALLTYPE Count(SAFEARRAY* list, LONG* total) = 0;
    virtual HRESULT STDMETHODCALLTYPE Numbers(BYTE a, SHORT b, LONGLONG c, FLOAT d, DOUBLE e,
                                              VARIANT_BOOL f) = 0;
    virtual HRESULT STDMETHODCALLTYPE Values(CY amount, DATE date, DECIMAL number, VARIANT any,
                                             LONG shade, LONG price) = 0;
    virtual HRESULT STDMETHODCALLTYPE References(LONG* number, BSTR* text, VARIANT* any) = 0;
    virtual HRESULT STDMETHODCALLTYPE Optional(VARIANT any, LONG locale, BSTR* text) = 0;
    virtual HRESULT STDMETHODCALLTYPE Fail(SCODE code) = 0;
    virtual HRESULT STDMETHODCALLTYPE Echo(IDispatch* object, IDispatch** same) = 0;
    virtual HRESULT STDMETHODCALLTYPE putref_Partner(IUnknown* object) = 0;
    virtual HRESULT STDMETHODCALLTYPE Sum(SAFEARRAY* list, LONG* total) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT key, VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Item(VARIANT key, VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE Secret() = 0;
};

inline std::string notationOfCopy(VARIANT const& value) {
    Value copy;
    EXPECT_EQ(VariantCopy(&copy, const_cast<VARIANT*>(&value)), S_OK);
    return copy.notation();
}

inline std::string narrowText(BSTR text) {
    return text ? narrow(text, SysStringLen(text)) : "null";
}

/// Lives on the stack of a test. The count of references is asserted there.
class Recorder final : public IRecorder {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        bool const known = IsEqualGUID(riid, IID_IUnknown) || IsEqualGUID(riid, IID_IDispatch) ||
                           IsEqualGUID(riid, shapesId(0x05));
        *object = known ? static_cast<IRecorder*>(this) : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* given,
                                     VARIANT*, EXCEPINFO*, UINT*) override {
        return note("Invoke", member, flags, given->cArgs);
    }

    HRESULT STDMETHODCALLTYPE Add(LONG left, LONG right, LONG* sum) override {
        *sum = left + right;
        return note("Add", left, right);
    }
    HRESULT STDMETHODCALLTYPE get_Title(BSTR* text) override {
        *text = SysAllocString(OLESTR("title"));
        return note("get_Title");
    }
    HRESULT STDMETHODCALLTYPE put_Title(BSTR text) override {
        return note("put_Title", narrowText(text));
    }
    HRESULT STDMETHODCALLTYPE Count(SAFEARRAY* list, LONG* total) override {
        LONG upper = -1;
        SafeArrayGetUBound(list, 1, &upper);
        *total = upper + 1;
        std::string elements;
        for (LONG i = 0; i <= upper; ++i) {
            elements += notationOfCopy(static_cast<VARIANT*>(list->pvData)[i]) + ";";
        }
        return note("Count", elements);
    }
    HRESULT STDMETHODCALLTYPE Numbers(BYTE a, SHORT b, LONGLONG c, FLOAT d, DOUBLE e,
                                      VARIANT_BOOL f) override {
        return note("Numbers", +a, b, c, d, e, f);
    }
    HRESULT STDMETHODCALLTYPE Values(CY amount, DATE date, DECIMAL number, VARIANT any, LONG shade,
                                     LONG price) override {
        return note("Values", amount.int64, date, number.Lo64, +number.scale, notationOfCopy(any),
                    shade, price);
    }
    HRESULT STDMETHODCALLTYPE References(LONG* number, BSTR* text, VARIANT* any) override {
        note("References", *number, narrowText(*text), notationOfCopy(*any));
        *number += 1;
        SysFreeString(*text);
        *text = SysAllocString(OLESTR("out"));
        VariantClear(any);
        any->vt = VT_I4;
        any->lVal = 99;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Optional(VARIANT any, LONG, BSTR* text) override {
        *text = SysAllocString(OLESTR("optional"));
        return note("Optional", notationOfCopy(any));
    }
    HRESULT STDMETHODCALLTYPE Fail(SCODE code) override { return code; }
    HRESULT STDMETHODCALLTYPE Echo(IDispatch* object, IDispatch** same) override {
        *same = object;
        if (object) object->AddRef();
        return note("Echo");
    }
    HRESULT STDMETHODCALLTYPE putref_Partner(IUnknown* object) override {
        return note("putref_Partner", object == partner ? "the other" : "a stranger");
    }
    HRESULT STDMETHODCALLTYPE Sum(SAFEARRAY* list, LONG* total) override {
        *total = 0;
        LONG upper = -1;
        SafeArrayGetUBound(list, 1, &upper);
        for (LONG i = 0; i <= upper; ++i) *total += static_cast<LONG*>(list->pvData)[i];
        return note("Sum");
    }
    HRESULT STDMETHODCALLTYPE get_Item(VARIANT key, VARIANT* value) override {
        value->vt = VT_I4;
        value->lVal = key.lVal * 10;
        return note("get_Item", notationOfCopy(key));
    }
    HRESULT STDMETHODCALLTYPE put_Item(VARIANT key, VARIANT value) override {
        return note("put_Item", notationOfCopy(key), notationOfCopy(value));
    }
    HRESULT STDMETHODCALLTYPE Secret() override { return note("Secret"); }

    ULONG references = 1;
    /// The calls that came, in the order of their coming.
    std::string saw;
    IUnknown* partner = nullptr;

  private:
    template <typename... Arguments>
    HRESULT note(char const* member, Arguments const&... arguments) {
        std::ostringstream text;
        [[maybe_unused]] char const* separator = "";
        ((text << separator << arguments, separator = ", "), ...);
        saw += std::string(" | ") + member + '(' + text.str() + ')';
        return S_OK;
    }
};

}  // namespace velk::test
