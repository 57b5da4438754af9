/// Class objects, and the classes that can be created through one.
#pragma once

#include "com/aggregate.h"
#include "com/object.h"

namespace velk::com {

/// The class factory of a class: hands every creation to the class's
/// instance maker. Made concrete by CComObjectCached.
class CComClassFactory : public CComObjectRootEx<CComMultiThreadModel>, public IClassFactory {
  public:
    VELK_COM_MAP(CComClassFactory, VELK_COM_INTERFACE(IClassFactory, IID_IClassFactory))

    /// Who makes the instances. Set once, before the factory is handed out.
    void setInstanceMaker(InstanceMaker maker) noexcept { maker_ = maker; }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id,
                                             void** out) noexcept override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) noexcept override;

  protected:
    ~CComClassFactory() = default;

  private:
    InstanceMaker maker_ = nullptr;
};

/// The class-object maker of the classes with a cached class factory.
HRESULT makeCachedClassFactory(InstanceMaker instances, REFIID id, void** out) noexcept;

/// The instance maker of a class that can be aggregated: stands alone
/// without an outer object, is part of it with one. An outer object can only
/// ask for IUnknown: any other interface would be the outer object's own and
/// nobody would hold the part. Otherwise CLASS_E_NOAGGREGATION.
template <typename Class>
HRESULT createWithOrWithoutOuter(IUnknown* outer, REFIID id, void** out) noexcept {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (outer == nullptr) return createObject<CComObject<Class>>(nullptr, id, out);
    if (!IsEqualGUID(id, IID_IUnknown)) return CLASS_E_NOAGGREGATION;
    return createObject<CComAggObject<Class>>(outer, id, out);
}

/// The instance maker of a class that refuses an outer object.
template <typename Class>
HRESULT createWithoutOuter(IUnknown* outer, REFIID id, void** out) noexcept {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return createObject<CComObject<Class>>(nullptr, id, out);
}

/// Base of a creatable class: its id, and its creation from code.
template <typename Class, CLSID const* classId>
class CComCoClass {
  public:
    static CLSID const& GetObjectCLSID() noexcept { return *classId; }

    /// Creates an object as a client would, without the class factory.
    static HRESULT CreateInstance(IUnknown* outer, REFIID id, void** out) noexcept {
        return createWithOrWithoutOuter<Class>(outer, id, out);
    }
};

}  // namespace velk::com
