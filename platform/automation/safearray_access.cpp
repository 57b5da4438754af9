#include <atomic>
#include <cstdlib>
#include <cstring>

#include "oleauto.h"
#include "platform/system/live_counts.h"
#include "safearray_elements.h"
#include "safearray_memory.h"

namespace velk::platform {
namespace {

constexpr ULONG mostLocks = 0xffff;

// Dimensions are numbered from 1; the descriptor lists them backwards.
SAFEARRAYBOUND* boundOf(SAFEARRAY& array, UINT dimension) noexcept {
    if (dimension == 0 || dimension > array.cDims) return nullptr;
    return &array.rgsabound[array.cDims - dimension];
}

// Clears the elements that a smaller last dimension cuts off, or zeroes those
// that a greater one adds.
HRESULT resizeData(SAFEARRAY& array, std::size_t oldCount, std::size_t newCount) noexcept {
    auto* const bytes = static_cast<BYTE*>(array.pvData);
    if (newCount < oldCount) {
        // An array whose data is gone has nothing to clear.
        if (bytes == nullptr) return S_OK;
        clearElements(array, bytes + newCount * array.cbElements, oldCount - newCount);
        return S_OK;
    }
    if (newCount == oldCount) return S_OK;
    bool const partOfDescriptor = (array.fFeatures & FADF_CREATEVECTOR) != 0;
    void* const grown = std::calloc(newCount, array.cbElements);
    if (grown == nullptr) return E_OUTOFMEMORY;
    // The bytes move with what they own; the old block holds nothing then.
    if (bytes != nullptr) std::memcpy(grown, bytes, oldCount * array.cbElements);
    if (partOfDescriptor || bytes == nullptr) {
        countLive(VELK_LIVE_SAFEARRAY, 1);
    } else {
        std::free(bytes);
    }
    array.fFeatures &= ~FADF_CREATEVECTOR;
    array.pvData = grown;
    return S_OK;
}

}  // namespace
}  // namespace velk::platform

using namespace velk::platform;

HRESULT SafeArrayLock(SAFEARRAY* array) {
    if (array == nullptr) return E_INVALIDARG;
    std::atomic_ref<ULONG> locks(array->cLocks);
    if (locks.fetch_add(1) >= mostLocks) {
        locks.fetch_sub(1);
        return E_UNEXPECTED;
    }
    return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY* array) {
    if (array == nullptr) return E_INVALIDARG;
    std::atomic_ref<ULONG> locks(array->cLocks);
    ULONG held = locks.load();
    do {
        if (held == 0) return E_UNEXPECTED;
    } while (!locks.compare_exchange_weak(held, held - 1));
    return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
    if (array == nullptr || data == nullptr) return E_INVALIDARG;
    HRESULT const result = SafeArrayLock(array);
    *data = SUCCEEDED(result) ? array->pvData : nullptr;
    return result;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
    return SafeArrayUnlock(array);
}

UINT SafeArrayGetDim(SAFEARRAY* array) {
    return array == nullptr ? 0 : array->cDims;
}

UINT SafeArrayGetElemsize(SAFEARRAY* array) {
    return array == nullptr ? 0 : array->cbElements;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    SAFEARRAYBOUND const* const found = boundOf(*array, dimension);
    if (found == nullptr) return DISP_E_BADINDEX;
    *bound = found->lLbound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    SAFEARRAYBOUND const* const found = boundOf(*array, dimension);
    if (found == nullptr) return DISP_E_BADINDEX;
    // Unsigned, so that an empty dimension at the lowest bound wraps silently.
    *bound = static_cast<LONG>(static_cast<ULONG>(found->lLbound) + found->cElements - 1);
    return S_OK;
}

HRESULT SafeArrayPtrOfIndex(SAFEARRAY* array, LONG* indices, void** element) {
    if (array == nullptr || indices == nullptr || element == nullptr) return E_INVALIDARG;
    std::size_t offset = 0;
    std::size_t stride = 1;
    for (UINT dimension = 1; dimension <= array->cDims; ++dimension) {
        SAFEARRAYBOUND const& bound = *boundOf(*array, dimension);
        LONGLONG const distance = static_cast<LONGLONG>(indices[dimension - 1]) - bound.lLbound;
        if (distance < 0 || distance >= bound.cElements) return DISP_E_BADINDEX;
        offset += static_cast<std::size_t>(distance) * stride;
        stride *= bound.cElements;
    }
    if (array->pvData == nullptr) return E_INVALIDARG;
    *element = static_cast<BYTE*>(array->pvData) + offset * array->cbElements;
    return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* value) {
    if (array == nullptr || indices == nullptr || value == nullptr) return E_INVALIDARG;
    HRESULT result = SafeArrayLock(array);
    if (FAILED(result)) return result;
    void* element = nullptr;
    result = SafeArrayPtrOfIndex(array, indices, &element);
    if (SUCCEEDED(result)) {
        // What the receiver's memory holds is not a value yet, except for
        // records, whose receiver must be an initialised one.
        if ((array->fFeatures & FADF_RECORD) == 0) std::memset(value, 0, array->cbElements);
        result = copyElements(*array, element, value, 1);
    }
    SafeArrayUnlock(array);
    return result;
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* value) {
    if (array == nullptr || indices == nullptr) return E_INVALIDARG;
    HRESULT result = SafeArrayLock(array);
    if (FAILED(result)) return result;
    void* element = nullptr;
    result = SafeArrayPtrOfIndex(array, indices, &element);
    if (SUCCEEDED(result)) {
        // Texts and interface pointers are passed themselves, everything
        // else by its address.
        bool const passedItself =
            (array->fFeatures & (FADF_BSTR | FADF_UNKNOWN | FADF_DISPATCH)) != 0;
        void const* const source = passedItself ? static_cast<void const*>(&value) : value;
        result = source == nullptr ? E_INVALIDARG : copyElements(*array, source, element, 1);
    }
    SafeArrayUnlock(array);
    return result;
}

HRESULT SafeArrayRedim(SAFEARRAY* array, SAFEARRAYBOUND* bound) {
    if (array == nullptr || bound == nullptr) return E_INVALIDARG;
    if ((array->fFeatures & FADF_FIXEDSIZE) != 0) return E_INVALIDARG;
    if ((array->fFeatures & foreignMemoryFeatures) != 0) return E_INVALIDARG;
    if (array->cLocks != 0) return DISP_E_ARRAYISLOCKED;
    std::size_t oldCount = 0;
    if (!countElements(*array, oldCount)) return E_INVALIDARG;
    SAFEARRAYBOUND const old = array->rgsabound[0];
    array->rgsabound[0] = *bound;
    std::size_t newCount = 0;
    HRESULT const result =
        countElements(*array, newCount) ? resizeData(*array, oldCount, newCount) : E_OUTOFMEMORY;
    if (FAILED(result)) array->rgsabound[0] = old;
    return result;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
    if (array == nullptr || type == nullptr) return E_INVALIDARG;
    USHORT const features = array->fFeatures;
    if ((features & FADF_RECORD) != 0) {
        *type = VT_RECORD;
    } else if ((features & FADF_HAVEIID) != 0) {
        *type = (features & FADF_DISPATCH) != 0 ? VT_DISPATCH : VT_UNKNOWN;
    } else if ((features & FADF_HAVEVARTYPE) != 0) {
        *type = static_cast<VARTYPE>(prefixOf(*array).element.type);
    } else {
        return E_INVALIDARG;
    }
    return S_OK;
}

HRESULT SafeArraySetRecordInfo(SAFEARRAY* array, IRecordInfo* record) {
    if (array == nullptr || (array->fFeatures & FADF_RECORD) == 0) return E_INVALIDARG;
    IRecordInfo* const old = prefixOf(*array).record.info;
    if (record != nullptr) record->AddRef();
    prefixOf(*array).record.info = record;
    if (old != nullptr) old->Release();
    return S_OK;
}

HRESULT SafeArrayGetRecordInfo(SAFEARRAY* array, IRecordInfo** record) {
    if (array == nullptr || record == nullptr) return E_INVALIDARG;
    if ((array->fFeatures & FADF_RECORD) == 0) return E_INVALIDARG;
    *record = prefixOf(*array).record.info;
    if (*record != nullptr) (*record)->AddRef();
    return S_OK;
}

HRESULT SafeArrayGetIID(SAFEARRAY* array, GUID* id) {
    if (array == nullptr || id == nullptr) return E_INVALIDARG;
    if ((array->fFeatures & FADF_HAVEIID) == 0) return E_INVALIDARG;
    *id = prefixOf(*array).interfaceId;
    return S_OK;
}
