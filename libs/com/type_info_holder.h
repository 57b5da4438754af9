/// Type information of a registered type library, loaded when first needed.
#pragma once

#include <mutex>

#include "com/owners.h"

namespace velk::com {

/// Which interface of which version of which library is described.
struct TypeInfoSource {
    IID const* interfaceId;
    GUID const* libraryId;
    WORD major;
    WORD minor;
};

/// Holds the type information of one interface from its first use until the
/// module ends. Thread-safe.
class TypeInfoHolder {
  public:
    explicit TypeInfoHolder(TypeInfoSource source) noexcept : source_(source) {}
    TypeInfoHolder(TypeInfoHolder const&) = delete;
    TypeInfoHolder& operator=(TypeInfoHolder const&) = delete;

    /// Hands the type information out with a reference of the caller's.
    /// Loads it with LoadRegTypeLib under `lcid` when none is held yet; a
    /// failure is returned and not remembered, so that a library registered
    /// later is found. `out` is null after a failure.
    HRESULT get(LCID lcid, ComPtr<ITypeInfo>& out) noexcept;

  private:
    HRESULT load(LCID lcid, ComPtr<ITypeInfo>& out) const noexcept;
    HRESULT keep(ComPtr<ITypeInfo>& type);

    TypeInfoSource source_;
    std::mutex mutex_;
    ComPtr<ITypeInfo> held_;
};

}  // namespace velk::com
