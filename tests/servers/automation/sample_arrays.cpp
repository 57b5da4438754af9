// Members that count, join and fill arrays.
#include <cstring>
#include <limits>

#include "servers/automation/arrays.h"
#include "servers/automation/giving.h"
#include "servers/automation/sample.h"

namespace velk::test::server {
namespace {

DOUBLE numberIn(VARIANT const& value) {
    com::Variant number;
    com::throwIfFailed(com::changeType(value, VT_R8, number));
    return number.get().dblVal;
}

/// Everything must fit: not more elements than `LONG` can count.
ULONG lengthOf(LONG count) {
    com::throwIfFailed(count < 0 ? E_INVALIDARG : S_OK);
    return static_cast<ULONG>(count);
}

com::SafeArray makeArray(VARTYPE type, std::initializer_list<LONG> lengths) {
    SAFEARRAYBOUND bounds[3];
    UINT dimensions = 0;
    for (LONG const length : lengths) bounds[dimensions++] = {lengthOf(length), 0};
    com::SafeArray array(SafeArrayCreate(type, dimensions, bounds));
    if (!array.get()) throw com::Error(E_OUTOFMEMORY);
    return array;
}

SAFEARRAY* arrayIn(VARIANT const& value) {
    VARIANT const& inner = value.vt == (VT_BYREF | VT_VARIANT) ? *value.pvarVal : value;
    com::throwIfFailed(inner.vt & VT_ARRAY ? S_OK : DISP_E_TYPEMISMATCH);
    SAFEARRAY* const array = inner.vt & VT_BYREF ? *inner.pparray : inner.parray;
    if (!array) throw com::Error(DISP_E_TYPEMISMATCH);
    return array;
}

/// One element as a value, which stays the array's.
VARIANT elementAt(SAFEARRAY const& array, VARTYPE type, std::size_t index) {
    auto const* const bytes = static_cast<BYTE const*>(array.pvData) + index * array.cbElements;
    VARIANT value{};
    com::throwIfFailed(array.cbElements <= sizeof value ? S_OK : DISP_E_TYPEMISMATCH);
    if (type == VT_VARIANT || type == VT_DECIMAL) {
        std::memcpy(&value, bytes, array.cbElements);
    } else {
        std::memcpy(&value.llVal, bytes, array.cbElements);
    }
    if (type != VT_VARIANT) value.vt = type;
    return value;
}

DOUBLE sumOf(SAFEARRAY& array) {
    VARTYPE type = VT_EMPTY;
    com::throwIfFailed(SafeArrayGetVartype(&array, &type));
    std::size_t count = 1;
    for (USHORT i = 0; i < array.cDims; ++i) count *= array.rgsabound[i].cElements;
    DOUBLE sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum += numberIn(elementAt(array, type, i));
    return sum;
}

Text describeExtra(VARIANT const& extra) {
    bool const missing = extra.vt == VT_ERROR && extra.scode == DISP_E_PARAMNOTFOUND;
    return missing ? Text(OLESTR("missing")) : describeValue(extra);
}

}  // namespace

HRESULT Sample::Add(LONG left, LONG right, LONG* result) noexcept {
    LONGLONG const sum = LONGLONG{left} + right;
    bool const fits = sum == static_cast<LONG>(sum);
    return fits ? give(result, static_cast<LONG>(sum)) : DISP_E_OVERFLOW;
}

HRESULT Sample::AddNumbers(SAFEARRAY* numbers, DOUBLE* result) noexcept {
    if (!numbers) return E_POINTER;
    try {
        return give(result, sumOf(*numbers));
    }
    VELK_COM_CATCH
}

HRESULT Sample::SumArray(VARIANT numbers, DOUBLE* result) noexcept {
    try {
        return give(result, sumOf(*arrayIn(numbers)));
    }
    VELK_COM_CATCH
}

HRESULT Sample::Describe(LONG count, BSTR text, VARIANT extra, BSTR* result) noexcept {
    try {
        auto description = textOf(std::to_string(count).c_str()) + OLESTR("/");
        description += com::viewBstr(text);
        return giveText(result, description + OLESTR("/") + describeExtra(extra));
    }
    VELK_COM_CATCH
}

HRESULT Sample::Join(SAFEARRAY* texts, BSTR separator, BSTR* result) noexcept {
    if (!texts || SafeArrayGetDim(texts) != 1) return E_INVALIDARG;
    try {
        Text joined;
        auto* const elements = static_cast<BSTR*>(texts->pvData);
        for (ULONG i = 0; i < texts->rgsabound[0].cElements; ++i) {
            if (i > 0) joined += com::viewBstr(separator);
            joined += com::viewBstr(elements[i]);
        }
        return giveText(result, joined);
    }
    VELK_COM_CATCH
}

HRESULT Sample::MakeCube(LONG a, LONG b, LONG c, SAFEARRAY** result) noexcept {
    return giveArray(result, [=] {
        auto cube = makeArray(VT_I4, {a, b, c});
        // The first index runs fastest.
        auto* element = elementsOf<LONG>(cube);
        for (LONG k = 0; k < c; ++k) {
            for (LONG j = 0; j < b; ++j) {
                for (LONG i = 0; i < a; ++i) *element++ = 100 * i + 10 * j + k;
            }
        }
        return cube;
    });
}

HRESULT Sample::MakeGrid(LONG rows, LONG columns, SAFEARRAY** result) noexcept {
    return giveArray(result, [=] {
        auto grid = makeArray(VT_R8, {rows, columns});
        auto* element = elementsOf<DOUBLE>(grid);
        for (LONG column = 0; column < columns; ++column) {
            for (LONG row = 0; row < rows; ++row) *element++ = row + column / 8.0;
        }
        return grid;
    });
}

}  // namespace velk::test::server
