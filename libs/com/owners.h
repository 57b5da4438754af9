/// Owners of the native values and handles.
#pragma once

#include <string_view>

#include <windows.h>

#include <oleauto.h>

#include "com/com_ptr.h"
#include "com/owned.h"

namespace velk::com {

/// UTF-16 text in the character type of the native functions.
using TextView = std::basic_string_view<OLECHAR>;

inline void closeBstr(BSTR& text) noexcept {
    SysFreeString(text);
}
/// Whether a value of this type is nothing but bits: there is nothing to give up.
constexpr bool isPlainType(VARTYPE type) noexcept {
    return type <= VT_DATE || type == VT_BOOL || (type >= VT_I1 && type <= VT_UINT);
}
/// Gives up what a value holds. Foreign objects in it may throw, which ends here.
void closeHeldVariant(VARIANT& value) noexcept;
inline void closeVariant(VARIANT& value) noexcept {
    if (!isPlainType(value.vt)) closeHeldVariant(value);
}
inline void closeExceptionInfo(EXCEPINFO& info) noexcept {
    if (info.bstrSource) SysFreeString(info.bstrSource);
    if (info.bstrDescription) SysFreeString(info.bstrDescription);
    if (info.bstrHelpFile) SysFreeString(info.bstrHelpFile);
}
void closeSafeArray(SAFEARRAY*& array) noexcept;
void closeRegistryKey(HKEY& key) noexcept;
void closeTaskMemory(void*& block) noexcept;
void closeModule(HMODULE& module) noexcept;

/// One BSTR, null when empty.
using Bstr = Owned<BSTR, closeBstr>;
/// One VARIANT, VT_EMPTY when empty. address() is what functions take.
using Variant = Owned<VARIANT, closeVariant>;
/// One array with its descriptor and elements. A locked array is unlocked
/// by nobody here: its locks must be given back before the owner ends.
using SafeArray = Owned<SAFEARRAY*, closeSafeArray>;
/// The record of a failed call, with the three texts that it owns.
using ExceptionInfo = Owned<EXCEPINFO, closeExceptionInfo>;
/// One open registry key; predefined keys must not be put in.
using RegistryKey = Owned<HKEY, closeRegistryKey>;
/// One block of CoTaskMemAlloc.
using TaskMemory = Owned<void*, closeTaskMemory>;
/// One loaded module, held by LoadLibrary's count.
using Module = Owned<HMODULE, closeModule>;

/// A BSTR copy of `text`, NULs inside included.
/// Throws Error(E_OUTOFMEMORY) when there is no memory for it.
Bstr makeBstr(TextView text);

/// The characters of a BSTR; a null one reads as empty text.
inline TextView viewBstr(BSTR text) noexcept {
    return text != nullptr ? TextView(text, SysStringLen(text)) : TextView();
}
inline TextView viewBstr(Bstr const& text) noexcept {
    return viewBstr(text.get());
}

/// A copy of `source`. Throws Error with the failure of VariantCopy.
Variant copyVariant(VARIANT const& source);

/// `VariantCopy` of `source` over what `target` holds, which must be a value;
/// it is empty when that fails.
HRESULT copyVariant(VARIANT const& source, VARIANT& target) noexcept;

/// A copy of `source`, or of the value that it refers to, into `result`, which
/// is empty when that fails.
HRESULT copyReferredTo(VARIANT const& source, Variant& result) noexcept;

/// `VariantChangeType` of `source` with flags 0, into `result`; `result` is
/// empty when it fails, as it does when an object throws that is asked for its
/// default value.
HRESULT changeType(VARIANT const& source, VARTYPE type, Variant& result) noexcept;

/// The text that a task-memory block holds, up to its NUL.
inline LPOLESTR taskText(TaskMemory const& block) noexcept {
    return static_cast<LPOLESTR>(block.get());
}

/// A description that type information lends out: it goes back to the object
/// that it came from. Moves, does not copy; empty until `put` has been filled.
template <typename Lender, typename Description,
          void (STDMETHODCALLTYPE Lender::*giveBack)(Description*)>
class Lent {
  public:
    /// `lender` must not be null; a reference to it is kept.
    explicit Lent(Lender* lender) noexcept : lender_(lender) {}
    Lent(Lent&& other) noexcept
        : lender_(std::move(other.lender_)),
          description_(std::exchange(other.description_, nullptr)) {}
    Lent& operator=(Lent&& other) noexcept {
        std::swap(lender_, other.lender_);
        std::swap(description_, other.description_);
        return *this;
    }
    ~Lent() { reset(); }

    Description* get() const noexcept { return description_; }
    Description* operator->() const noexcept { return description_; }
    Description& operator*() const noexcept { return *description_; }
    explicit operator bool() const noexcept { return description_ != nullptr; }

    /// Gives back what is held and gives the place for an out-parameter.
    Description** put() noexcept {
        reset();
        return &description_;
    }

  private:
    void reset() noexcept {
        if (Description* former = std::exchange(description_, nullptr)) {
            (lender_.get()->*giveBack)(former);
        }
    }

    ComPtr<Lender> lender_;
    Description* description_ = nullptr;
};

using TypeAttributes = Lent<ITypeInfo, TYPEATTR, &ITypeInfo::ReleaseTypeAttr>;
using FunctionDescription = Lent<ITypeInfo, FUNCDESC, &ITypeInfo::ReleaseFuncDesc>;
using VariableDescription = Lent<ITypeInfo, VARDESC, &ITypeInfo::ReleaseVarDesc>;
using LibraryAttributes = Lent<ITypeLib, TLIBATTR, &ITypeLib::ReleaseTLibAttr>;

}  // namespace velk::com
