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
};

// Without a destructor, so that it can be used until the very end of a thread.
thread_local ThreadState thisThread;

/// The threads of the process that are in an apartment.
struct ProcessState {
    std::mutex lock;
    unsigned singleThreads = 0;
    unsigned multiThreads = 0;
};
constinit ProcessState process;

void enter(Apartment apartment) {
    std::lock_guard const guard(process.lock);
    thisThread = {apartment, 1};
    ++(apartment == Apartment::multi ? process.multiThreads : process.singleThreads);
}

/// Takes the thread out of its apartment; true when it was the last of all.
bool leave() {
    std::lock_guard const guard(process.lock);
    --(thisThread.apartment == Apartment::multi ? process.multiThreads : process.singleThreads);
    return process.singleThreads + process.multiThreads == 0;
}

/// Ends the thread's stay. For the modules that go with the last thread, this
/// one is in its apartment until they are gone: their tear-down may use COM.
void endStay() {
    if (leave()) freeUnusedClassModules(std::chrono::milliseconds(0));
    thisThread = {};
}

void endStayWithThread() noexcept {
    if (thisThread.apartment != Apartment::none) endStay();
}

}  // namespace

bool isInApartment() noexcept {
    if (thisThread.apartment != Apartment::none) return true;
    std::lock_guard const guard(process.lock);
    return process.multiThreads != 0;
}

}  // namespace velk::platform::com

using namespace velk::platform::com;

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
