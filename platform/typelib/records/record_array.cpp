#include "platform/typelib/records/record_array.h"

namespace velk::typelib {

bool hasElementsOf(SAFEARRAY& array, GUID const& record) {
    Reference<IRecordInfo> info;
    GUID id{};
    return SUCCEEDED(SafeArrayGetRecordInfo(&array, info.out())) && info &&
           SUCCEEDED(info->GetGuid(&id)) && id == record;
}

SAFEARRAY& arrayIn(VARIANT const& value, VARTYPE element) {
    VARIANT const* holder = &value;
    if (holder->vt == (VT_BYREF | VT_VARIANT)) holder = holder->pvarVal;
    auto const wanted = static_cast<VARTYPE>(VT_ARRAY | element);
    require(holder && (holder->vt & ~VT_BYREF) == wanted, DISP_E_TYPEMISMATCH);
    bool const reference = holder->vt & VT_BYREF;
    require(!reference || holder->pparray, DISP_E_TYPEMISMATCH);
    SAFEARRAY* const array = reference ? *holder->pparray : holder->parray;
    require(array && array->pvData, DISP_E_TYPEMISMATCH);
    return *array;
}

bool sameBounds(SAFEARRAY const& array, std::vector<SAFEARRAYBOUND> const& bounds) {
    if (array.cDims != bounds.size()) return false;
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        // The descriptor lists the dimensions from the last to the first.
        if (array.rgsabound[array.cDims - 1 - i].cElements != bounds[i].cElements) return false;
    }
    return true;
}

std::size_t arrayPosition(SAFEARRAY const& array, std::size_t index) {
    std::size_t position = 0;
    for (USHORT i = 0; i < array.cDims; ++i) {
        // From the last dimension to the first, which is the descriptor's order.
        std::size_t stride = 1;
        for (USHORT before = i + 1; before < array.cDims; ++before) {
            stride *= array.rgsabound[before].cElements;
        }
        position += index % array.rgsabound[i].cElements * stride;
        index /= array.rgsabound[i].cElements;
    }
    return position;
}

}  // namespace velk::typelib
