#include "nested_values.h"
#include "oleauto.h"
#include "safearray_elements.h"
#include "safearray_memory.h"

namespace velk::platform {
namespace {

constexpr USHORT prefixFeatures = FADF_HAVEIID | FADF_RECORD | FADF_HAVEVARTYPE;

bool sameShape(SAFEARRAY const& first, SAFEARRAY const& second) noexcept {
    if (first.cDims != second.cDims || first.cbElements != second.cbElements) return false;
    for (USHORT dimension = 0; dimension < first.cDims; ++dimension) {
        if (first.rgsabound[dimension].cElements != second.rgsabound[dimension].cElements) {
            return false;
        }
    }
    return true;
}

// A descriptor of the same type and bounds, without data.
HRESULT copyDescriptor(SAFEARRAY& source, SAFEARRAY** copy) noexcept {
    HRESULT const result = SafeArrayAllocDescriptor(source.cDims, copy);
    if (FAILED(result)) return result;
    SAFEARRAY& target = **copy;
    for (USHORT dimension = 0; dimension < source.cDims; ++dimension) {
        target.rgsabound[dimension] = source.rgsabound[dimension];
    }
    target.cbElements = source.cbElements;
    // The copy's memory is its own, whoever owns that of the source.
    target.fFeatures = source.fFeatures & ~(foreignMemoryFeatures | FADF_CREATEVECTOR);
    if ((source.fFeatures & prefixFeatures) != 0) prefixOf(target) = prefixOf(source);
    if (IRecordInfo* const record = recordInfoOf(target)) record->AddRef();
    return S_OK;
}

/// `*copy` is null after a failure.
HRESULT copyArray(SAFEARRAY* source, SAFEARRAY** copy) {
    HRESULT result = copyDescriptor(*source, copy);
    if (FAILED(result)) return result;
    if (source->pvData != nullptr) {
        result = SafeArrayAllocData(*copy);
        if (SUCCEEDED(result)) result = SafeArrayCopyData(source, *copy);
    }
    if (FAILED(result)) {
        SafeArrayDestroy(*copy);
        *copy = nullptr;
    }
    return result;
}

}  // namespace
}  // namespace velk::platform

using namespace velk::platform;

HRESULT SafeArrayCopyData(SAFEARRAY* source, SAFEARRAY* target) {
    if (source == nullptr || target == nullptr) return E_INVALIDARG;
    if (!sameShape(*source, *target)) return E_INVALIDARG;
    if (source == target) return S_OK;
    std::size_t count = 0;
    if (!countElements(*source, count)) return E_INVALIDARG;
    if (count != 0 && (source->pvData == nullptr || target->pvData == nullptr)) return E_INVALIDARG;
    clearElements(*target, target->pvData, count);
    return copyElements(*source, source->pvData, target->pvData, count);
}

HRESULT SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** copy) {
    if (copy == nullptr) return E_INVALIDARG;
    *copy = nullptr;
    if (source == nullptr) return S_OK;
    return copyArrayInTurn(&copyArray, source, copy);
}
