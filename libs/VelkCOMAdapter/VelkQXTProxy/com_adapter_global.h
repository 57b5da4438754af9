/// The native objects that host wrappers hold.
#pragma once

#include <cstdint>

#include <windows.h>
#include <QSet>

#include <oleauto.h>

#include "com/com_ptr.h"
#include "host/read_write_lock.h"

/// What a wrapper keeps instead of a pointer: a cookie of the global interface
/// table, and the registry that it is from. Cookie 0 stands for no object.
struct VelkObjectCookie {
    std::uint32_t cookie = 0;
    std::uint32_t registry = 0;
};

/// The process's global interface table and every cookie that wrappers still
/// have in it. Made on first use; the runtime's global clean-up revokes what is
/// left and ends it, and the next use makes a new one, which does not know the
/// cookies of the one before. Thread-safe, also beside the clean-up; no lock
/// is held while native code runs.
class VelkComAdapterGlobal {
  public:
    /// Late enough for everything that may still hold wrappers.
    static constexpr int cleanupPriority = -2000002;

    /// Registers `object`, of which the table then holds a reference. The
    /// native result; `cookie` is 0 after a failure. E_UNEXPECTED on the thread
    /// that is running the clean-up.
    static HRESULT registerInterface(IUnknown* object, VelkObjectCookie& cookie);
    /// The object behind a cookie, with a reference for the caller. S_FALSE
    /// when this registry does not know the cookie.
    static HRESULT getInterface(VelkObjectCookie cookie, IDispatch** out);
    /// Gives the object up. S_FALSE when this registry does not know the cookie.
    static HRESULT revokeInterface(VelkObjectCookie cookie);

    /// Only for the singleton.
    VelkComAdapterGlobal();
    ~VelkComAdapterGlobal();
    VelkComAdapterGlobal(VelkComAdapterGlobal const&) = delete;
    VelkComAdapterGlobal& operator=(VelkComAdapterGlobal const&) = delete;
};
