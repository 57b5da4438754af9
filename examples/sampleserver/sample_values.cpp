// Members that make, change and refuse values.
#include "sample.h"

namespace sampleserver {

using namespace velk;

namespace {

/// What `Fail` leaves for the call of Invoke that it runs in, if any.
thread_local com::ExceptionInfo* failureOfCall = nullptr;

com::TypeInfoHolder pointType({&pointId, &sampleLibrary, 1, 0});

com::ComPtr<IRecordInfo> pointInformation() {
    com::ComPtr<ITypeInfo> type;
    com::throwIfFailed(pointType.get(libraryLocale, type));
    com::ComPtr<IRecordInfo> information;
    com::throwIfFailed(GetRecordInfoFromTypeInfo(type.get(), information.put()));
    return information;
}

ULONG lengthOf(LONG count) {
    com::throwIfFailed(count < 0 ? E_INVALIDARG : S_OK);
    return static_cast<ULONG>(count);
}

SAFEARRAY* longsIn(VARIANT const& value) {
    VARIANT const& inner = value.vt == (VT_BYREF | VT_VARIANT) ? *value.pvarVal : value;
    bool const isArray = (inner.vt & ~VT_BYREF) == (VT_ARRAY | VT_I4);
    SAFEARRAY* const array = !isArray                ? nullptr
                             : (inner.vt & VT_BYREF) ? *inner.pparray
                                                     : inner.parray;
    if (!array) throw com::Error(DISP_E_TYPEMISMATCH);
    return array;
}

}  // namespace

HRESULT Sample::Add(LONG left, LONG right, LONG* result) noexcept {
    if (!result) return E_POINTER;
    LONGLONG const sum = LONGLONG{left} + right;
    *result = static_cast<LONG>(sum);
    return *result == sum ? S_OK : DISP_E_OVERFLOW;
}

HRESULT Sample::MakePoint(LONG x, LONG y, VARIANT* result) noexcept {
    if (!result) return E_POINTER;
    VariantInit(result);
    try {
        auto information = pointInformation();
        auto* const point = static_cast<Point*>(information->RecordCreate());
        if (!point) return E_OUTOFMEMORY;
        *point = {x, y};
        result->vt = VT_RECORD;
        result->pvRecord = point;
        result->pRecInfo = information.detach();
        return S_OK;
    }
    VELK_COM_CATCH
}

HRESULT Sample::MakeCube(LONG a, LONG b, LONG c, SAFEARRAY** result) noexcept {
    if (!result) return E_POINTER;
    *result = nullptr;
    try {
        SAFEARRAYBOUND bounds[] = {{lengthOf(a), 0}, {lengthOf(b), 0}, {lengthOf(c), 0}};
        com::SafeArray cube(SafeArrayCreate(VT_I4, 3, bounds));
        if (!cube.get()) return E_OUTOFMEMORY;
        // The first index runs fastest.
        auto* element = static_cast<LONG*>(cube.get()->pvData);
        for (LONG k = 0; k < c; ++k) {
            for (LONG j = 0; j < b; ++j) {
                for (LONG i = 0; i < a; ++i) *element++ = 100 * i + 10 * j + k;
            }
        }
        *result = cube.release();
        return S_OK;
    }
    VELK_COM_CATCH
}

HRESULT Sample::SumArray(VARIANT numbers, DOUBLE* result) noexcept {
    if (!result) return E_POINTER;
    try {
        SAFEARRAY const& array = *longsIn(numbers);
        std::size_t count = 1;
        for (USHORT i = 0; i < array.cDims; ++i) count *= array.rgsabound[i].cElements;
        auto const* const elements = static_cast<LONG const*>(array.pvData);
        *result = 0;
        for (std::size_t i = 0; i < count; ++i) *result += elements[i];
        return S_OK;
    }
    VELK_COM_CATCH
}

HRESULT Sample::GiveVariant(VARIANT* value) noexcept {
    if (!value) return E_POINTER;
    VariantInit(value);
    try {
        value->bstrVal = com::makeBstr(OLESTR("given")).release();
        value->vt = VT_BSTR;
        return S_OK;
    }
    VELK_COM_CATCH
}

HRESULT Sample::ChangeVariant(VARIANT* value) noexcept {
    if (!value) return E_POINTER;
    try {
        // Clearing it gives up what the caller had put in.
        com::Variant changed;
        if (value->vt == VT_I4) {
            changed.address()->vt = VT_R8;
            changed.address()->dblVal = 2.0 * value->lVal;
        } else {
            changed.address()->bstrVal = com::makeBstr(OLESTR("changed")).release();
            changed.address()->vt = VT_BSTR;
        }
        std::swap(*value, *changed.address());
        return S_OK;
    }
    VELK_COM_CATCH
}

HRESULT Sample::ChangePoint(Point* point) noexcept {
    if (!point) return E_POINTER;
    std::swap(point->x, point->y);
    return S_OK;
}

HRESULT Sample::Fail(LONG code, BSTR source, BSTR description, BSTR helpFile,
                     LONG helpContext) noexcept {
    try {
        com::ExceptionInfo failure;
        failure.address()->scode = code;
        failure.address()->bstrSource = com::makeBstr(com::viewBstr(source)).release();
        failure.address()->bstrDescription = com::makeBstr(com::viewBstr(description)).release();
        failure.address()->bstrHelpFile = com::makeBstr(com::viewBstr(helpFile)).release();
        failure.address()->dwHelpContext = static_cast<DWORD>(helpContext);
        if (failureOfCall) *failureOfCall = std::move(failure);
        return code < 0 ? code : E_FAIL;
    }
    VELK_COM_CATCH
}

HRESULT Sample::Invoke(DISPID member, REFIID id, LCID lcid, WORD flags, DISPPARAMS* parameters,
                       VARIANT* result, EXCEPINFO* exception, UINT* argumentError) noexcept {
    com::ExceptionInfo failure;
    auto* const outer = std::exchange(failureOfCall, &failure);
    HRESULT const code = IDispatchImpl::Invoke(member, id, lcid, flags, parameters, result,
                                               exception, argumentError);
    failureOfCall = outer;
    if (!failure.get().scode) return code;
    if (exception) {
        com::ExceptionInfo const general(*exception);
        *exception = failure.release();
    }
    return DISP_E_EXCEPTION;
}

}  // namespace sampleserver
