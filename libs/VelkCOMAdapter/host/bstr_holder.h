#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstddef>
#include <new>

#include "host/export.h"

/// Out of memory, as the error that carries `E_OUTOFMEMORY`.
class VELKCORE_API mzOutOfMemoryC : public std::bad_alloc {
  public:
    char const* what() const noexcept override;
    /// Always `E_OUTOFMEMORY` (0x8007000E).
    HRESULT code() const noexcept;
};

/// Owner of one `BSTR`, shared by its copies: the last of them frees it.
/// Copies may be used and destroyed on different threads; one holder object
/// must not be changed by two threads at a time. Whatever copies text throws
/// `mzOutOfMemoryC` when memory runs out.
class VELKCORE_API mzBstrHolderC {
  public:
    /// Holds no string.
    mzBstrHolderC() noexcept = default;
    /// Copies NUL-terminated text; null gives a holder without a string.
    explicit mzBstrHolderC(OLECHAR const* text);
    /// Copies `length` code units, NULs among them included; `length` at least
    /// 0. Null text gives a string of zeros.
    mzBstrHolderC(OLECHAR const* text, int length);
    mzBstrHolderC(mzBstrHolderC const& other) noexcept;
    mzBstrHolderC(mzBstrHolderC&& other) noexcept;
    ~mzBstrHolderC();
    mzBstrHolderC& operator=(mzBstrHolderC other) noexcept;

    /// Takes ownership of `text`, also when this throws; null is allowed.
    static mzBstrHolderC adopt(BSTR text);
    /// An exact copy of the same byte length; null gives a holder without one.
    static mzBstrHolderC copyOf(BSTR text);

    /// The string, owned by the holder; null when there is none.
    BSTR get() const noexcept;
    bool isNull() const noexcept { return get() == nullptr; }
    /// Length in code units, 0 for no string.
    int length() const noexcept;
    /// A new exact copy for a receiver that frees it; null when there is none.
    BSTR copy() const;

  private:
    struct Shared;
    Shared* shared_ = nullptr;
};
