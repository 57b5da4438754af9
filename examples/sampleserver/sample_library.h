/// What SampleLib.idl describes, as C++ sees it.
#pragma once

#include <windows.h>

#include <oleauto.h>

namespace sampleserver {

// They differ in the last byte only.
constexpr GUID sampleId(BYTE number) {
    return {0x5C1A7D20, 0x8E4B, 0x4F60, {0xA2, 0xD3, 0x1B, 0x7C, 0x90, 0xE6, 0xF4, number}};
}
/// Version 1.0, in one language.
inline constexpr GUID sampleLibrary = sampleId(0x01);
inline constexpr LCID libraryLocale = 0x0409;
inline constexpr GUID pointId = sampleId(0x03);
inline constexpr IID sampleInterface = sampleId(0x04);
inline constexpr IID sampleEvents = sampleId(0x05);
/// "VelkSample.Sample".
inline constexpr CLSID sampleClass = sampleId(0x11);

/// The member of ISampleEvents.
inline constexpr DISPID changingEvent = 1;

struct Point {
    LONG x;
    LONG y;
};

/// The members in the order of the description.
struct ISample : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT key, VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Item(VARIANT key, VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Count(LONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get__NewEnum(IUnknown** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE Add(LONG left, LONG right, LONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE MakePoint(LONG x, LONG y, VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE MakeCube(LONG a, LONG b, LONG c, SAFEARRAY** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE SumArray(VARIANT numbers, DOUBLE* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE GiveVariant(VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeVariant(VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangePoint(Point* point) = 0;
    virtual HRESULT STDMETHODCALLTYPE Fail(LONG code, BSTR source, BSTR description, BSTR helpFile,
                                           LONG helpContext) = 0;
};

}  // namespace sampleserver
