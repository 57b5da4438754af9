#include "platform/com/global_interface_table.h"

#include <new>

#include "platform/com/apartments.h"
#include "platform/com/global_interfaces.h"
#include "platform/system/immortal.h"

namespace velk::platform::com {
namespace {

/// IUnknown of an object that lasts as long as the process.
template <typename Interface, IID const& id>
class Lasting : public Interface {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override {
        if (object == nullptr) return E_POINTER;
        bool const known = riid == IID_IUnknown || riid == id;
        *object = known ? static_cast<Interface*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 1; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }
};

// Never destroyed: what is registered stays with the process.
GlobalInterfaces& interfaces() {
    static Immortal<GlobalInterfaces> all;
    return *all;
}

template <typename Question>
HRESULT translated(Question question) noexcept {
    try {
        return question();
    } catch (std::bad_alloc const&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

/// What a foreign object answers: success with an interface, or a failure
/// without one.
template <typename Question>
HRESULT ask(void** object, Question question) noexcept {
    *object = nullptr;
    HRESULT const result = translated(question);
    if (FAILED(result)) *object = nullptr;
    return SUCCEEDED(result) && *object == nullptr ? E_NOINTERFACE : result;
}

class Table final : public Lasting<IGlobalInterfaceTable, IID_IGlobalInterfaceTable> {
  public:
    HRESULT STDMETHODCALLTYPE RegisterInterfaceInGlobal(IUnknown* unknown, REFIID riid,
                                                        DWORD* cookie) noexcept override {
        if (unknown == nullptr || cookie == nullptr) return E_INVALIDARG;
        *cookie = 0;
        if (!isInApartment()) return CO_E_NOTINITIALIZED;
        HeldObject<> object;
        HRESULT const result =
            ask(object.target(), [&] { return unknown->QueryInterface(riid, object.target()); });
        if (FAILED(result)) return result;
        return translated([&] {
            *cookie = interfaces().add(std::move(object));
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE RevokeInterfaceFromGlobal(DWORD cookie) noexcept override {
        return interfaces().revoke(cookie) ? S_OK : E_INVALIDARG;
    }
    HRESULT STDMETHODCALLTYPE GetInterfaceFromGlobal(DWORD cookie, REFIID riid,
                                                     void** object) noexcept override {
        if (object == nullptr) return E_INVALIDARG;
        return ask(object, [&] {
            return isInApartment() ? interfaces().query(cookie, riid, object) : CO_E_NOTINITIALIZED;
        });
    }
};
constinit Table table;

class TableClass final : public Lasting<IClassFactory, IID_IClassFactory> {
  public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid,
                                             void** object) noexcept override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        return outer != nullptr ? CLASS_E_NOAGGREGATION : table.QueryInterface(riid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) noexcept override { return S_OK; }
};
constinit TableClass tableClass;

}  // namespace

HRESULT globalInterfaceTableClass(REFIID riid, void** object) noexcept {
    return tableClass.QueryInterface(riid, object);
}

}  // namespace velk::platform::com
