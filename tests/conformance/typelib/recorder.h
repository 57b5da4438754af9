/// An object behind the interface IRecorder of the test library, which notes
/// down what reaches it.
#pragma once

#include <string>

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

/// Lives on the stack of a test; the count of references is asserted there.
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
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS*, VARIANT*,
                                     EXCEPINFO*, UINT*) override {
        forwarded = member;
        forwardedFlags = flags;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Add(LONG left, LONG right, LONG* sum) override {
        *sum = left + right;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Title(BSTR* text) override {
        *text = SysAllocString(title.c_str());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Title(BSTR text) override {
        title = text ? text : Wide();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Count(SAFEARRAY* list, LONG* total) override {
        LONG upper = -1;
        SafeArrayGetUBound(list, 1, &upper);
        *total = upper + 1;
        if (upper >= 0) firstValue = static_cast<VARIANT*>(list->pvData)[0].lVal;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Numbers(BYTE a, SHORT b, LONGLONG c, FLOAT d, DOUBLE e,
                                      VARIANT_BOOL f) override {
        byteValue = a;
        shortValue = b;
        hyperValue = c;
        floatValue = d;
        doubleValue = e;
        boolValue = f;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Values(CY amount, DATE date, DECIMAL number, VARIANT any, LONG shade,
                                     LONG price) override {
        hyperValue = amount.int64;
        doubleValue = date;
        decimalValue = number;
        anyType = any.vt;
        anyValue = any.lVal;
        firstValue = shade;
        lastValue = price;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE References(LONG* number, BSTR* text, VARIANT* any) override {
        lastValue = *number;
        anyType = any->vt;
        *number += 1;
        outBefore = *text;
        *text = SysAllocString(OLESTR("out"));
        VariantClear(any);
        any->vt = VT_I4;
        any->lVal = 99;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Optional(VARIANT any, LONG locale, BSTR* text) override {
        anyType = any.vt;
        anyValue = any.lVal;
        lastValue = locale;
        *text = SysAllocString(OLESTR("optional"));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Fail(SCODE code) override { return code; }
    HRESULT STDMETHODCALLTYPE Echo(IDispatch* object, IDispatch** same) override {
        *same = object;
        if (object) object->AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE putref_Partner(IUnknown* object) override {
        partner = object;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Sum(SAFEARRAY* list, LONG* total) override {
        *total = 0;
        LONG upper = -1;
        SafeArrayGetUBound(list, 1, &upper);
        for (LONG i = 0; i <= upper; ++i) *total += static_cast<LONG*>(list->pvData)[i];
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Item(VARIANT key, VARIANT* value) override {
        value->vt = VT_I4;
        value->lVal = key.lVal * 10;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Item(VARIANT key, VARIANT value) override {
        firstValue = key.lVal;
        lastValue = value.lVal;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Secret() override { return S_OK; }

    ULONG references = 1;
    DISPID forwarded = DISPID_UNKNOWN;
    WORD forwardedFlags = 0;
    Wide title;
    BYTE byteValue = 0;
    SHORT shortValue = 0;
    LONGLONG hyperValue = 0;
    FLOAT floatValue = 0;
    DOUBLE doubleValue = 0;
    VARIANT_BOOL boolValue = 0;
    DECIMAL decimalValue{};
    VARTYPE anyType = VT_EMPTY;
    BSTR outBefore = nullptr;  ///< only to be compared with null
    LONG anyValue = 0;
    LONG firstValue = 0;
    LONG lastValue = 0;
    IUnknown* partner = nullptr;
};

}  // namespace velk::test
