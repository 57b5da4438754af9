/// An object behind the interface IRecorder of the test library, which notes
/// down what reaches it.
#pragma once

#include <sstream>
#include <string>

#include "shapes.h"

namespace velk::test {

/// Has the vtable of IRecorder as its description lays it out. Lives on the stack
/// of a test; the count of references is asserted there.
class Recorder : public IDispatch {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        bool const known = IsEqualGUID(riid, IID_IUnknown) || IsEqualGUID(riid, IID_IDispatch) ||
                           IsEqualGUID(riid, shapesId(0x05));
        *object = known ? static_cast<IDispatch*>(this) : nullptr;
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

    virtual HRESULT STDMETHODCALLTYPE Add(LONG left, LONG right, LONG* sum) {
        *sum = left + right;
        return note("Add", left, right);
    }
    virtual HRESULT STDMETHODCALLTYPE get_Title(BSTR* text) {
        *text = SysAllocString(OLESTR("title"));
        return note("get_Title");
    }
    virtual HRESULT STDMETHODCALLTYPE put_Title(BSTR text) {
        return note("put_Title", textOf(text));
    }
    virtual HRESULT STDMETHODCALLTYPE Count(SAFEARRAY* list, LONG* total) {
        LONG upper = -1;
        SafeArrayGetUBound(list, 1, &upper);
        *total = upper + 1;
        VARIANT array{};
        array.vt = VT_ARRAY | VT_VARIANT;
        array.parray = list;
        return note("Count", notationOf(array));
    }
    virtual HRESULT STDMETHODCALLTYPE Numbers(BYTE a, SHORT b, LONGLONG c, FLOAT d, DOUBLE e,
                                              VARIANT_BOOL f) {
        return note("Numbers", +a, b, c, d, e, f);
    }
    virtual HRESULT STDMETHODCALLTYPE Values(CY amount, DATE date, DECIMAL number, VARIANT any,
                                             LONG shade, LONG price) {
        return note("Values", amount.int64, date, number.Lo64, +number.scale, notationOf(any),
                    shade, price);
    }
    virtual HRESULT STDMETHODCALLTYPE References(LONG* number, BSTR* text, VARIANT* any) {
        note("References", *number, textOf(*text), notationOf(*any));
        *number += 1;
        SysFreeString(*text);
        *text = SysAllocString(OLESTR("out"));
        VariantClear(any);
        any->vt = VT_I4;
        any->lVal = 99;
        return S_OK;
    }
    virtual HRESULT STDMETHODCALLTYPE Optional(VARIANT any, LONG, BSTR* text) {
        *text = SysAllocString(OLESTR("optional"));
        return note("Optional", notationOf(any));
    }
    virtual HRESULT STDMETHODCALLTYPE Fail(SCODE code) { return code; }
    virtual HRESULT STDMETHODCALLTYPE Echo(IDispatch* object, IDispatch** same) {
        *same = object;
        if (object) object->AddRef();
        return note("Echo");
    }
    virtual HRESULT STDMETHODCALLTYPE putref_Partner(IUnknown* object) {
        return note("putref_Partner", object == partner ? "the other" : "a stranger");
    }
    virtual HRESULT STDMETHODCALLTYPE Sum(SAFEARRAY* list, LONG* total) {
        *total = 0;
        LONG upper = -1;
        SafeArrayGetUBound(list, 1, &upper);
        for (LONG i = 0; i <= upper; ++i) *total += static_cast<LONG*>(list->pvData)[i];
        return note("Sum");
    }
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT key, VARIANT* value) {
        value->vt = VT_I4;
        value->lVal = key.lVal * 10;
        return note("get_Item", notationOf(key));
    }
    virtual HRESULT STDMETHODCALLTYPE put_Item(VARIANT key, VARIANT value) {
        return note("put_Item", notationOf(key), notationOf(value));
    }
    virtual HRESULT STDMETHODCALLTYPE Secret() { return note("Secret"); }

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
