#include "platform/com/apartments.h"

#include <mutex>

#include <objbase.h>

#include "platform/com/class_modules.h"
#include "platform/system/thread_end.h"

namespace velk::platform::com {
namespace {

enum class Apartment { none, single, multi };

struct ThreadState {
    Apartment apartment = Apartment::none;
    /// How often the thread has entered without leaving.
    unsigned entries = 0;
    bool isMainSingle = false;
};

// Without a destructor, so that it can be used until the very end of a thread.
thread_local ThreadState thisThread;

/// The threads of the process that are in an apartment.
struct ProcessState {
    std::mutex lock;
    unsigned singleThreads = 0;
    unsigned multiThreads = 0;
    bool hasMainSingle = false;
};
constinit ProcessState process;

void enter(Apartment apartment) {
    std::lock_guard const guard(process.lock);
    thisThread = {apartment, 1, false};
    if (apartment == Apartment::multi) {
        ++process.multiThreads;
        return;
    }
    ++process.singleThreads;
    thisThread.isMainSingle = !process.hasMainSingle;
    process.hasMainSingle = true;
}

/// Takes the thread out of its apartment; true when it was the last of all.
bool leave() {
    std::lock_guard const guard(process.lock);
    if (thisThread.apartment == Apartment::multi) {
        --process.multiThreads;
    } else {
        --process.singleThreads;
        if (thisThread.isMainSingle) process.hasMainSingle = false;
    }
    return process.singleThreads + process.multiThreads == 0;
}

/// Ends the thread's stay. For the modules that go with the last thread, this
/// one is in its apartment until they are gone: their tear-down may use COM.
void endStay() {
    if (leave()) freeAllClassModules();
    thisThread = {};
}

void endStayWithThread() noexcept {
    if (thisThread.apartment != Apartment::none) endStay();
}

bool multiThreadedExists() {
    std::lock_guard const guard(process.lock);
    return process.multiThreads != 0;
}

}  // namespace

bool isInApartment() noexcept {
    return thisThread.apartment != Apartment::none || multiThreadedExists();
}

}  // namespace velk::platform::com

using namespace velk::platform::com;

HRESULT CoInitialize(LPVOID reserved) {
    return CoInitializeEx(reserved, COINIT_APARTMENTTHREADED);
}

HRESULT CoInitializeEx(LPVOID reserved, DWORD flags) {
    constexpr DWORD known =
        COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE | COINIT_SPEED_OVER_MEMORY;
    if (reserved != nullptr || (flags & ~known) != 0) return E_INVALIDARG;
    velk::platform::watchThreadEnd();
    static bool const watched = [] {
        velk::platform::addThreadEndAction(&endStayWithThread);
        return true;
    }();
    static_cast<void>(watched);
    bool const single = (flags & COINIT_APARTMENTTHREADED) != 0;
    auto const wanted = single ? Apartment::single : Apartment::multi;
    if (thisThread.apartment == Apartment::none) {
        enter(wanted);
        return S_OK;
    }
    if (thisThread.apartment != wanted) return RPC_E_CHANGED_MODE;
    ++thisThread.entries;
    return S_FALSE;
}

void CoUninitialize() {
    if (thisThread.apartment == Apartment::none) return;
    if (thisThread.entries > 1) {
        --thisThread.entries;
        return;
    }
    endStay();
}

HRESULT CoGetApartmentType(APTTYPE* type, APTTYPEQUALIFIER* qualifier) {
    if (type == nullptr || qualifier == nullptr) return E_INVALIDARG;
    *qualifier = APTTYPEQUALIFIER_NONE;
    switch (thisThread.apartment) {
        case Apartment::single:
            *type = thisThread.isMainSingle ? APTTYPE_MAINSTA : APTTYPE_STA;
            return S_OK;
        case Apartment::multi:
            *type = APTTYPE_MTA;
            return S_OK;
        case Apartment::none:
            break;
    }
    if (multiThreadedExists()) {
        *type = APTTYPE_MTA;
        *qualifier = APTTYPEQUALIFIER_IMPLICIT_MTA;
        return S_OK;
    }
    *type = APTTYPE_CURRENT;
    return CO_E_NOTINITIALIZED;
}
