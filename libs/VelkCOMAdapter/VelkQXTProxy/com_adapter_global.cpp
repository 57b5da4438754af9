#include "VelkQXTProxy/com_adapter_global.h"

#include <utility>

#include "host/coinit.h"
#include "host/module_singleton.h"
#include "host/read_write_lock.h"

using velk::com::ComPtr;

namespace {

using Table = ComPtr<IGlobalInterfaceTable>;
using Shared = mzSharedHolderT<PReadWriteSpinLock>;
using Exclusive = mzExclusiveHolderT<PReadWriteSpinLock>;

/// What the registry owns. Its own storage stays with the module, so that a
/// caller who is late for the clean-up finds it empty and not gone.
struct State {
    PReadWriteSpinLock lock;
    Table git;
    QSet<std::uint32_t> cookies;
    // Which registry this is; changes with every new one.
    std::uint32_t registry = 0;
};

/// Never destroyed: the clean-up, which empties it, comes after the end of the
/// objects that were made on first use.
union PermanentState {
    PermanentState() : state() {}
    ~PermanentState() {}
    State state;
};

State& state() {
    static PermanentState instance;
    return instance.state;
}

using Registry = mzModuleSingletonT<VelkComAdapterGlobal, VelkComAdapterGlobal::cleanupPriority>;

bool knows(State const& all, VelkObjectCookie cookie) {
    return cookie.registry == all.registry && all.cookies.contains(cookie.cookie);
}

Table createTable() {
    PCoInitializer::attach(0);
    Table table;
    CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                     IID_IGlobalInterfaceTable, table.putVoid());
    return table;
}

}  // namespace

VelkComAdapterGlobal::VelkComAdapterGlobal() {
    Table table = createTable();
    State& all = state();
    Exclusive const writing(all.lock);
    all.git = std::move(table);
    ++all.registry;
}

VelkComAdapterGlobal::~VelkComAdapterGlobal() {
    State& all = state();
    Table git;
    QSet<std::uint32_t> left;
    {
        Exclusive const writing(all.lock);
        git = std::exchange(all.git, Table());
        left.swap(all.cookies);
    }
    if (!git) return;
    for (std::uint32_t const cookie : left) git->RevokeInterfaceFromGlobal(cookie);
}

HRESULT VelkComAdapterGlobal::registerInterface(IUnknown* object, VelkObjectCookie& cookie) {
    cookie = {};
    // What the clean-up releases may want to register something in its turn.
    if (!Registry::instanceIfPossible()) return E_UNEXPECTED;
    State& all = state();
    Table git;
    std::uint32_t registry = 0;
    {
        Shared const reading(all.lock);
        git = all.git;
        registry = all.registry;
    }
    if (!git) return E_UNEXPECTED;
    DWORD made = 0;
    HRESULT const code = git->RegisterInterfaceInGlobal(object, IID_IDispatch, &made);
    if (code != S_OK) return code;
    {
        Exclusive const writing(all.lock);
        if (all.git && all.registry == registry) {
            all.cookies.insert(made);
            cookie = {made, registry};
            return S_OK;
        }
    }
    // The clean-up ran meanwhile and did not see this one.
    git->RevokeInterfaceFromGlobal(made);
    return E_UNEXPECTED;
}

HRESULT VelkComAdapterGlobal::getInterface(VelkObjectCookie cookie, IDispatch** out) {
    *out = nullptr;
    State& all = state();
    Table git;
    {
        Shared const reading(all.lock);
        if (!knows(all, cookie) || !all.git) return S_FALSE;
        git = all.git;
    }
    return git->GetInterfaceFromGlobal(cookie.cookie, IID_IDispatch, reinterpret_cast<void**>(out));
}

HRESULT VelkComAdapterGlobal::revokeInterface(VelkObjectCookie cookie) {
    State& all = state();
    Table git;
    {
        Exclusive const writing(all.lock);
        if (!knows(all, cookie)) return S_FALSE;
        // Out of the set first: whoever takes it out is the one to revoke it.
        all.cookies.remove(cookie.cookie);
        git = all.git;
    }
    return git ? git->RevokeInterfaceFromGlobal(cookie.cookie) : E_UNEXPECTED;
}
