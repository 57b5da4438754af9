#include "safearray_memory.h"

#include <cstdlib>
#include <cstring>

#include "platform/system/live_counts.h"
#include "safearray_elements.h"
#include "variant_type.h"

namespace velk::platform {
namespace {

constexpr UINT mostDimensions = 0xffff;

std::size_t descriptorSize(UINT dimensions) noexcept {
    return offsetof(SAFEARRAY, rgsabound) + dimensions * sizeof(SAFEARRAYBOUND);
}

// The data of a vector follows its descriptor in one block.
std::size_t vectorDataOffset() noexcept {
    return descriptorSize(1);
}

SAFEARRAY* allocateBlock(UINT dimensions, std::size_t dataBytes) noexcept {
    std::size_t const size = sizeof(ArrayPrefix) + descriptorSize(dimensions) + dataBytes;
    auto* const block = static_cast<BYTE*>(std::calloc(1, size));
    if (block == nullptr) return nullptr;
    countLive(VELK_LIVE_SAFEARRAY, 1);
    auto* const array = reinterpret_cast<SAFEARRAY*>(block + sizeof(ArrayPrefix));
    array->cDims = static_cast<USHORT>(dimensions);
    return array;
}

void freeDescriptor(SAFEARRAY& array) noexcept {
    countLive(VELK_LIVE_SAFEARRAY, -1);
    std::free(reinterpret_cast<BYTE*>(&array) - sizeof(ArrayPrefix));
}

void setElementType(SAFEARRAY& array, VARTYPE type) noexcept {
    array.fFeatures = elementFeaturesOf(type);
    array.cbElements = sizeOfType(type);
    if (type == VT_UNKNOWN) {
        prefixOf(array).interfaceId = IID_IUnknown;
    } else if (type == VT_DISPATCH) {
        prefixOf(array).interfaceId = IID_IDispatch;
    } else if (type != VT_RECORD) {
        prefixOf(array).element.type = type;
    }
}

// `extra` is the record information of records, or the GUID of interfaces.
HRESULT setExtra(SAFEARRAY& array, PVOID extra) noexcept {
    if ((array.fFeatures & FADF_RECORD) != 0) {
        if (extra == nullptr) return E_INVALIDARG;
        auto* const record = static_cast<IRecordInfo*>(extra);
        HRESULT const result = record->GetSize(&array.cbElements);
        if (FAILED(result)) return result;
        return SafeArraySetRecordInfo(&array, record);
    }
    if ((array.fFeatures & FADF_HAVEIID) != 0 && extra != nullptr) {
        prefixOf(array).interfaceId = *static_cast<GUID const*>(extra);
    }
    return S_OK;
}

void destroyDescriptor(SAFEARRAY& array) noexcept {
    // Elements inside the descriptor's own block end with it.
    if ((array.fFeatures & FADF_CREATEVECTOR) != 0) SafeArrayDestroyData(&array);
    // Only now: records are cleared by their description.
    if ((array.fFeatures & FADF_RECORD) != 0) SafeArraySetRecordInfo(&array, nullptr);
    if ((array.fFeatures & foreignMemoryFeatures) == 0) freeDescriptor(array);
}

SAFEARRAY* createVector(VARTYPE type, LONG lowerBound, ULONG elements) noexcept {
    ULONG const size = sizeOfType(type);
    if (size == 0) return nullptr;
    SAFEARRAY shape{};
    shape.cDims = 1;
    shape.cbElements = size;
    shape.rgsabound[0] = {elements, lowerBound};
    std::size_t count = 0;
    if (!countElements(shape, count)) return nullptr;
    SAFEARRAY* const array = allocateBlock(1, count * size);
    if (array == nullptr) return nullptr;
    array->rgsabound[0] = shape.rgsabound[0];
    setElementType(*array, type);
    array->fFeatures |= FADF_CREATEVECTOR;
    array->pvData = reinterpret_cast<BYTE*>(array) + vectorDataOffset();
    return array;
}

SAFEARRAY* create(VARTYPE type, UINT dimensions, SAFEARRAYBOUND const* bounds,
                  PVOID extra) noexcept {
    if (bounds == nullptr || (type != VT_RECORD && sizeOfType(type) == 0)) return nullptr;
    SAFEARRAY* array = nullptr;
    if (FAILED(SafeArrayAllocDescriptorEx(type, dimensions, &array))) return nullptr;
    // The descriptor lists the dimensions from the last to the first.
    for (UINT dimension = 0; dimension < dimensions; ++dimension) {
        array->rgsabound[dimension] = bounds[dimensions - 1 - dimension];
    }
    if (FAILED(setExtra(*array, extra)) || FAILED(allocateData(*array))) {
        destroyDescriptor(*array);
        // The descriptor stands inside the memory that is freed, behind its start.
        return nullptr;  // NOLINT(clang-analyzer-unix.Malloc)
    }
    return array;
}

void freeData(SAFEARRAY& array) noexcept {
    if (array.pvData == nullptr || (array.fFeatures & foreignMemoryFeatures) != 0) return;
    if ((array.fFeatures & FADF_CREATEVECTOR) == 0) {
        std::free(array.pvData);
        countLive(VELK_LIVE_SAFEARRAY, -1);
    }
    array.pvData = nullptr;
}

}  // namespace

HRESULT allocateDescriptor(UINT dimensions, SAFEARRAY** array) noexcept {
    if (dimensions == 0 || dimensions > mostDimensions) return E_INVALIDARG;
    if (array == nullptr) return E_POINTER;
    *array = allocateBlock(dimensions, 0);
    return *array == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT allocateData(SAFEARRAY& array) noexcept {
    std::size_t count = 0;
    if (!countElements(array, count)) return E_OUTOFMEMORY;
    // An array without elements still has a block, as clients expect data.
    void* const data =
        std::calloc(count == 0 ? 1 : count, array.cbElements == 0 ? 1 : array.cbElements);
    if (data == nullptr) return E_OUTOFMEMORY;
    countLive(VELK_LIVE_SAFEARRAY, 1);
    array.pvData = data;
    return S_OK;
}

}  // namespace velk::platform

using namespace velk::platform;

HRESULT SafeArrayAllocDescriptorEx(VARTYPE type, UINT dimensions, SAFEARRAY** array) {
    HRESULT const result = allocateDescriptor(dimensions, array);
    if (SUCCEEDED(result)) setElementType(**array, type);
    return result;
}

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
    return type == VT_RECORD ? nullptr : create(type, dimensions, bounds, nullptr);
}

SAFEARRAY* SafeArrayCreateEx(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds, PVOID extra) {
    return create(type, dimensions, bounds, extra);
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG elements) {
    return createVector(type, lowerBound, elements);
}

HRESULT SafeArrayDestroyData(SAFEARRAY* array) {
    if (array == nullptr) return E_INVALIDARG;
    if (array->cLocks != 0) return DISP_E_ARRAYISLOCKED;
    std::size_t count = 0;
    if (!countElements(*array, count)) return E_INVALIDARG;
    clearElements(*array, array->pvData, count);
    freeData(*array);
    return S_OK;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
    if (array == nullptr) return S_OK;
    if (array->cLocks != 0) return DISP_E_ARRAYISLOCKED;
    if (array->pvData != nullptr) {
        HRESULT const result = SafeArrayDestroyData(array);
        if (FAILED(result)) return result;
    }
    destroyDescriptor(*array);
    return S_OK;
}
