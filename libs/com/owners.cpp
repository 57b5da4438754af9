#include "com/owners.h"

#include <limits>

#include "com/error.h"

namespace velk::com {
namespace {

/// Copying and converting call foreign objects, which may throw.
template <typename Function>
HRESULT guarded(Function function) noexcept {
    try {
        return function();
    }
    VELK_COM_CATCH
}

}  // namespace

void closeHeldVariant(VARIANT& value) noexcept {
    try {
        VariantClear(&value);
    } catch (...) {
        // Nobody is left to tell: the value is gone as far as it could go.
    }
}

void closeSafeArray(SAFEARRAY*& array) noexcept {
    if (array != nullptr) SafeArrayDestroy(array);
}

void closeRegistryKey(HKEY& key) noexcept {
    if (key != nullptr) RegCloseKey(key);
}

void closeTaskMemory(void*& block) noexcept {
    CoTaskMemFree(block);
}

void closeModule(HMODULE& module) noexcept {
    if (module != nullptr) FreeLibrary(module);
}

Bstr makeBstr(TextView text) {
    // The length in bytes has to fit the 32 bits that stand before the text.
    if (text.size() > std::numeric_limits<UINT>::max() / sizeof(OLECHAR)) {
        throw Error(E_OUTOFMEMORY, "text too long for a BSTR");
    }
    // A null view is still text: the copy is the empty one, not null.
    Bstr copy(
        SysAllocStringLen(text.empty() ? OLESTR("") : text.data(), static_cast<UINT>(text.size())));
    if (copy.get() == nullptr) throw Error(E_OUTOFMEMORY, "no memory for a BSTR");
    return copy;
}

// Not every system's header says that the source stays as it is.
HRESULT copyVariant(VARIANT const& source, VARIANT& target) noexcept {
    HRESULT const code =
        guarded([&] { return VariantCopy(&target, const_cast<VARIANT*>(&source)); });
    // Some systems leave the source's pointers behind then.
    if (FAILED(code)) target = VARIANT{};
    return code;
}

HRESULT copyReferredTo(VARIANT const& source, Variant& result) noexcept {
    HRESULT const code =
        guarded([&] { return VariantCopyInd(result.put(), const_cast<VARIANT*>(&source)); });
    if (FAILED(code)) *result.address() = VARIANT{};
    return code;
}

Variant copyVariant(VARIANT const& source) {
    Variant copy;
    throwIfFailed(copyVariant(source, *copy.address()));
    return copy;
}

HRESULT changeType(VARIANT const& source, VARTYPE type, Variant& result) noexcept {
    return guarded(
        [&] { return VariantChangeType(result.put(), const_cast<VARIANT*>(&source), 0, type); });
}

}  // namespace velk::com
