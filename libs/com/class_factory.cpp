#include "com/class_factory.h"

namespace velk::com {

HRESULT CComClassFactory::CreateInstance(IUnknown* outer, REFIID id, void** out) noexcept {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    // Only IUnknown of the new object is its own when it is part of another.
    if (outer != nullptr && !IsEqualGUID(id, IID_IUnknown)) return CLASS_E_NOAGGREGATION;
    return maker_ != nullptr ? maker_(outer, id, out) : E_UNEXPECTED;
}

HRESULT CComClassFactory::LockServer(BOOL lock) noexcept {
    if (lock) {
        lockModule();
    } else {
        unlockModule();
    }
    return S_OK;
}

HRESULT makeCachedClassFactory(InstanceMaker instances, REFIID id, void** out) noexcept {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    CComObjectCached<CComClassFactory>* factory = nullptr;
    HRESULT code = newObject(nullptr, factory);
    if (FAILED(code)) return code;
    std::unique_ptr<CComObjectCached<CComClassFactory>> owned(factory);
    factory->setInstanceMaker(instances);
    code = factory->QueryInterface(id, out);
    if (SUCCEEDED(code)) static_cast<void>(owned.release());
    return code;
}

}  // namespace velk::com
