#include <new>
#include <utility>
#include <vector>

#include "oleauto.h"
#include "safearray_elements.h"
#include "safearray_memory.h"
#include "variant_type.h"

namespace velk::platform {
namespace {

constexpr USHORT prefixFeatures = FADF_HAVEIID | FADF_RECORD | FADF_HAVEVARTYPE;

// A descriptor of the same type and bounds, without data.
HRESULT copyDescriptor(SAFEARRAY& source, SAFEARRAY** copy) noexcept {
    HRESULT const result = allocateDescriptor(source.cDims, copy);
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

// A new array like `source` with empty elements. What was made before a failure
// is the caller's too.
HRESULT makeEmptyCopy(SAFEARRAY& source, SAFEARRAY** copy) noexcept {
    HRESULT const result = copyDescriptor(source, copy);
    return SUCCEEDED(result) ? allocateData(**copy) : result;
}

/// Copies arrays in arrays without a level of stack for each: one that is found
/// in an element waits until the array around it is done. Its copy hangs there
/// from the start, so that after a failure the outermost copy owns all others.
class ArrayCopier {
  public:
    /// Copies all elements to `target`, an array of the same shape with empty ones.
    HRESULT copyContent(SAFEARRAY& source, SAFEARRAY& target) noexcept {
        HRESULT result = copyOne({&source, &target});
        while (SUCCEEDED(result) && !waiting_.empty()) {
            Arrays const next = waiting_.back();
            waiting_.pop_back();
            result = copyOne(next);
        }
        return result;
    }

  private:
    struct Arrays {
        SAFEARRAY* source;
        SAFEARRAY* target;
    };

    HRESULT copyOne(Arrays const& arrays) noexcept {
        SAFEARRAY const& source = *arrays.source;
        void* const target = arrays.target->pvData;
        // Without data the elements are as empty as those of the copy.
        if (source.pvData == nullptr) return S_OK;
        std::size_t count = 0;
        if (!countElements(source, count)) return E_INVALIDARG;
        if (count != 0 && target == nullptr) return E_INVALIDARG;
        bool const values = (source.fFeatures & FADF_VARIANT) != 0;
        return values ? copyValues(source, target, count)
                      : copyElements(source, source.pvData, target, count);
    }

    HRESULT copyValues(SAFEARRAY const& source, void* target, std::size_t count) noexcept {
        auto const* from = static_cast<BYTE const*>(source.pvData);
        auto* to = static_cast<BYTE*>(target);
        for (; count != 0; --count, from += source.cbElements, to += source.cbElements) {
            HRESULT const result =
                copyValue(*reinterpret_cast<VARIANT const*>(from), *reinterpret_cast<VARIANT*>(to));
            if (FAILED(result)) return result;
        }
        return S_OK;
    }

    HRESULT copyValue(VARIANT const& source, VARIANT& target) noexcept {
        bool const holdsArray = isVariantType(source.vt) && isArray(source.vt) &&
                                !isByReference(source.vt) && source.parray != nullptr;
        if (!holdsArray) return VariantCopy(&target, &source);
        target.parray = nullptr;
        target.vt = source.vt;
        HRESULT const result = makeEmptyCopy(*source.parray, &target.parray);
        return SUCCEEDED(result) ? postpone({source.parray, target.parray}) : result;
    }

    HRESULT postpone(Arrays const& arrays) noexcept {
        try {
            waiting_.push_back(arrays);
            return S_OK;
        } catch (std::bad_alloc const&) {
            return E_OUTOFMEMORY;
        }
    }

    std::vector<Arrays> waiting_;
};

}  // namespace
}  // namespace velk::platform

using namespace velk::platform;

HRESULT SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** copy) {
    if (copy == nullptr) return E_INVALIDARG;
    *copy = nullptr;
    if (source == nullptr) return S_OK;
    HRESULT result = makeEmptyCopy(*source, copy);
    if (SUCCEEDED(result)) result = ArrayCopier().copyContent(*source, **copy);
    if (FAILED(result)) SafeArrayDestroy(std::exchange(*copy, nullptr));
    return result;
}
