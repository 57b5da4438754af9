#include "safearray_elements.h"

#include <cstring>
#include <limits>

#include "nested_values.h"
#include "safearray_memory.h"

namespace velk::platform {
namespace {

// How one kind of element is copied (over a target that holds a value) and
// released; plain bytes have neither.
struct ElementKind {
    USHORT feature;
    HRESULT (*copy)(SAFEARRAY const& array, void const* source, void* target);
    void (*release)(SAFEARRAY const& array, void* element);
};

HRESULT copyTextElement(SAFEARRAY const&, void const* source, void* target) {
    BSTR const text = *static_cast<BSTR const*>(source);
    BSTR copy = nullptr;
    if (text != nullptr) {
        copy = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text), SysStringByteLen(text));
        if (copy == nullptr) return E_OUTOFMEMORY;
    }
    SysFreeString(*static_cast<BSTR*>(target));
    *static_cast<BSTR*>(target) = copy;
    return S_OK;
}

void releaseTextElement(SAFEARRAY const&, void* element) {
    SysFreeString(*static_cast<BSTR*>(element));
}

HRESULT copyPointerElement(SAFEARRAY const&, void const* source, void* target) {
    auto* const pointer = *static_cast<IUnknown* const*>(source);
    auto* const old = *static_cast<IUnknown**>(target);
    if (pointer != nullptr) pointer->AddRef();
    *static_cast<IUnknown**>(target) = pointer;
    if (old != nullptr) old->Release();
    return S_OK;
}

void releasePointerElement(SAFEARRAY const&, void* element) {
    if (auto* const pointer = *static_cast<IUnknown**>(element)) pointer->Release();
}

HRESULT copyVariantElement(SAFEARRAY const&, void const* source, void* target) {
    return VariantCopy(static_cast<VARIANT*>(target), static_cast<VARIANT const*>(source));
}

void releaseVariantElement(SAFEARRAY const&, void* element) {
    VariantClear(static_cast<VARIANT*>(element));
}

HRESULT copyRecordElement(SAFEARRAY const& array, void const* source, void* target) {
    IRecordInfo* const record = recordInfoOf(array);
    if (record == nullptr) return E_UNEXPECTED;
    RecordCopyLevel const level;
    HRESULT const result = level.result();
    return FAILED(result) ? result : record->RecordCopy(const_cast<void*>(source), target);
}

void releaseRecordElement(SAFEARRAY const& array, void* element) {
    if (IRecordInfo* const record = recordInfoOf(array)) record->RecordClear(element);
}

constexpr ElementKind elementKinds[] = {
    {FADF_BSTR, copyTextElement, releaseTextElement},
    {FADF_UNKNOWN, copyPointerElement, releasePointerElement},
    {FADF_DISPATCH, copyPointerElement, releasePointerElement},
    {FADF_VARIANT, copyVariantElement, releaseVariantElement},
    {FADF_RECORD, copyRecordElement, releaseRecordElement},
};

ElementKind const* kindOf(SAFEARRAY const& array) noexcept {
    for (auto const& kind : elementKinds) {
        if ((array.fFeatures & kind.feature) != 0) return &kind;
    }
    return nullptr;
}

}  // namespace

USHORT elementFeaturesOf(VARTYPE type) noexcept {
    switch (type) {
        case VT_BSTR:
            return FADF_HAVEVARTYPE | FADF_BSTR;
        case VT_VARIANT:
            return FADF_HAVEVARTYPE | FADF_VARIANT;
        case VT_UNKNOWN:
            return FADF_HAVEIID | FADF_UNKNOWN;
        case VT_DISPATCH:
            return FADF_HAVEIID | FADF_DISPATCH;
        case VT_RECORD:
            return FADF_RECORD;
        default:
            return FADF_HAVEVARTYPE;
    }
}

bool countElements(SAFEARRAY const& array, std::size_t& count) noexcept {
    constexpr std::size_t most = std::numeric_limits<LONG>::max();
    count = 1;
    for (USHORT dimension = 0; dimension < array.cDims; ++dimension) {
        std::size_t const elements = array.rgsabound[dimension].cElements;
        if (elements != 0 && count > most / elements) return false;
        count *= elements;
    }
    return array.cbElements == 0 || count <= most / array.cbElements;
}

void clearElements(SAFEARRAY const& array, void* start, std::size_t count) noexcept {
    if (start == nullptr || count == 0) return;
    auto* const bytes = static_cast<BYTE*>(start);
    if (auto const* const kind = kindOf(array)) {
        for (std::size_t index = 0; index < count; ++index) {
            kind->release(array, bytes + index * array.cbElements);
        }
    }
    std::memset(start, 0, count * array.cbElements);
}

HRESULT copyElements(SAFEARRAY const& array, void const* source, void* target,
                     std::size_t count) noexcept {
    if (count == 0) return S_OK;
    auto const* const kind = kindOf(array);
    if (kind == nullptr) {
        std::memmove(target, source, count * array.cbElements);
        return S_OK;
    }
    auto const* const from = static_cast<BYTE const*>(source);
    auto* const to = static_cast<BYTE*>(target);
    for (std::size_t index = 0; index < count; ++index) {
        std::size_t const offset = index * array.cbElements;
        HRESULT const result = kind->copy(array, from + offset, to + offset);
        if (FAILED(result)) return result;
    }
    return S_OK;
}

IRecordInfo* recordInfoOf(SAFEARRAY const& array) noexcept {
    if ((array.fFeatures & FADF_RECORD) == 0) return nullptr;
    return prefixOf(array).record.info;
}

}  // namespace velk::platform
