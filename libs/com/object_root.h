/// The base of the objects that native code holds.
#pragma once

#include "com/interface_map.h"
#include "com/threading_model.h"

namespace velk::com {

/// Reference count and lock of an object. `Model` is CComSingleThreadModel,
/// CComMultiThreadModel or CComMultiThreadModelNoCS.
///
/// A class derives from this and from its interfaces, declares its
/// VELK_COM_MAP, and is made concrete by CComObject or CComAggObject, which
/// bring IUnknown. It may redeclare finalConstruct and finalRelease.
template <typename Model>
class CComObjectRootEx {
  public:
    using ThreadModel = Model;

    CComObjectRootEx(CComObjectRootEx const&) = delete;
    CComObjectRootEx& operator=(CComObjectRootEx const&) = delete;

    /// Second step of construction, when references may be taken already: a
    /// failure here is the result of the creation.
    HRESULT finalConstruct() noexcept { return S_OK; }
    /// First step of destruction, when the object is still whole.
    void finalRelease() noexcept {}

    /// Makes the lock; fails with the system's error.
    HRESULT initialiseSection() noexcept { return section_.initialise(); }
    bool sectionInitialised() const noexcept { return section_.initialised(); }
    void lock() { section_.lock(); }
    void unlock() noexcept { section_.unlock(); }

    ULONG addReference() noexcept { return Model::increment(references_); }
    ULONG releaseReference() noexcept { return Model::decrement(references_); }

    /// Lifts the count so far that references taken and given back while the
    /// object is being destroyed never make it reach 0 a second time.
    void markDestroying() noexcept { references_ = destroyingReferences; }

  protected:
    CComObjectRootEx() noexcept = default;
    ~CComObjectRootEx() = default;

  private:
    static constexpr ULONG destroyingReferences = 0x40000000;

    typename Model::Counter references_{0};
    typename Model::Section section_;
};

}  // namespace velk::com
