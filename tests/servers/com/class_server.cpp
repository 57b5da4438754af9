/// A class module for tests: small objects, and classes that are wrong on purpose.
#include "servers/com/class_server.h"

#include <atomic>
#include <new>

#include <objbase.h>

#include "servers/com/exports.h"

namespace {

using namespace velk::test;

std::atomic<long> liveThings{0};

/// Counts down when the module goes.
struct TearDown {
    int* counter = nullptr;
    ~TearDown() {
        if (counter != nullptr) ++*counter;
    }
} tearDown;

/// An object that may be part of an outer one: then its own IUnknown is `inner_`.
class Plain {
  public:
    explicit Plain(IUnknown* outer) : inner_(this), outer_(outer) { ++liveThings; }
    IUnknown* inner() { return &inner_; }
    IUnknown* outer() const { return outer_; }

  private:
    struct Inner : IUnknown {
        explicit Inner(Plain* whole) : whole_(whole) {}
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
            if (object == nullptr) return E_POINTER;
            *object = nullptr;
            if (riid != IID_IUnknown) return E_NOINTERFACE;
            *object = this;
            AddRef();
            return S_OK;
        }
        ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
        ULONG STDMETHODCALLTYPE Release() override {
            ULONG const left = --references_;
            if (left == 0) {
                delete whole_;
                --liveThings;
            }
            return left;
        }
        virtual ~Inner() = default;
        std::atomic<ULONG> references_{1};
        Plain* whole_;
    };
    Inner inner_;
    IUnknown* outer_;
};

struct Factory : IClassFactory {
    explicit Factory(bool aggregates) : aggregates_(aggregates) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        if (object == nullptr) return E_POINTER;
        bool const known = riid == IID_IUnknown || riid == IID_IClassFactory;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr && (!aggregates_ || riid != IID_IUnknown)) {
            return CLASS_E_NOAGGREGATION;
        }
        auto* const made = new (std::nothrow) Plain(outer);
        if (made == nullptr) return E_OUTOFMEMORY;
        HRESULT const result = made->inner()->QueryInterface(riid, object);
        made->inner()->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        liveThings += lock ? 1 : -1;
        return S_OK;
    }
    bool const aggregates_;
};

Factory plainFactory{true};
Factory lonelyFactory{false};

}  // namespace

VELK_TEST_EXPORT void SetTearDownCounterHere(int* counter) {
    tearDown.counter = counter;
}

VELK_TEST_EXPORT HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID id, REFIID riid,
                                                          LPVOID* object) {
    if (id == plainClass) return plainFactory.QueryInterface(riid, object);
    if (id == lonelyClass) return lonelyFactory.QueryInterface(riid, object);
    *object = nullptr;
    if (id == emptySuccessClass) return S_OK;
    if (id != failingClass) return CLASS_E_CLASSNOTAVAILABLE;
    *object = reinterpret_cast<void*>(0x10);
    return E_UNEXPECTED;
}

VELK_TEST_EXPORT HRESULT STDAPICALLTYPE DllCanUnloadNow() {
    return liveThings == 0 ? S_OK : S_FALSE;
}
