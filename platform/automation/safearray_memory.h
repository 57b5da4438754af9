/// The memory of arrays, and what stands there before the descriptor.
#pragma once

#include "oleauto.h"

namespace velk::platform {

/// The sixteen bytes before a descriptor that the system itself has made.
/// Which of the three holds is told by FADF_HAVEIID, FADF_RECORD and
/// FADF_HAVEVARTYPE.
union ArrayPrefix {
    GUID interfaceId;
    struct {
        ULONGLONG unused;
        IRecordInfo* info;
    } record;
    struct {
        DWORD unused[3];
        DWORD type;
    } element;
};
static_assert(sizeof(ArrayPrefix) == 16);

inline ArrayPrefix& prefixOf(SAFEARRAY& array) noexcept {
    return *(reinterpret_cast<ArrayPrefix*>(&array) - 1);
}
inline ArrayPrefix const& prefixOf(SAFEARRAY const& array) noexcept {
    return *(reinterpret_cast<ArrayPrefix const*>(&array) - 1);
}

/// A new descriptor without data. E_INVALIDARG for a number of dimensions that
/// no array has.
HRESULT allocateDescriptor(UINT dimensions, SAFEARRAY** array) noexcept;

/// Gives an array zeroes for all its elements.
HRESULT allocateData(SAFEARRAY& array) noexcept;

/// Features of an array whose descriptor or data this layer did not allocate.
constexpr USHORT foreignMemoryFeatures = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED;

}  // namespace velk::platform
