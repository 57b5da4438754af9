#include "application/VelkCOMProxy.h"

#include <string>

#include "application/application_thread.h"
#include "host/creation.h"
#include "host/frame_trace.h"
#include "native_to_host/facade.h"

namespace {

using velk::com::ComPtr;

// Readers of the trace know the methods by these texts, whatever compiler
// built the module.
constexpr char sourceUnit[] = "VelkCOMProxy.cpp";
constexpr char constructorSignature[] = "__cdecl CVelkCOMProxy::CVelkCOMProxy(void)";
constexpr char destructorSignature[] = "__cdecl CVelkCOMProxy::~CVelkCOMProxy(void)";
constexpr char createSignature[] =
    "long __cdecl CVelkCOMProxy::CreateObject(unsigned short *,struct IDispatch **)";
constexpr char getSignature[] =
    "long __cdecl CVelkCOMProxy::GetObjectW(unsigned short *,struct IDispatch **)";

// The only meaning of the search mode that the runtime has.
constexpr int searchMode = 3;

// How often a client's object is tried when others end the application.
constexpr int mostTries = 100;

std::string hostProgId(BSTR name) {
    return mzComStringC::fromBSTR(mzBstrHolderC::copyOf(name)).toAscii();
}

QString hostText(BSTR text) {
    return mzComStringC::fromBSTR(mzBstrHolderC::copyOf(text)).toQString();
}

/// A running host object as a dispatch object; empty when there is none.
mzComPtrT<mzIDispatch> findRunning(std::string const& progId) {
    mzComPtrC found;
    if (mzComGetActiveObject(progId.c_str(), mzIDispatch::interfaceId(), searchMode, found, 0) !=
        mzSuccess) {
        return {};
    }
    return mzComPtrT<mzIDispatch>(found);
}

void trace(char const* function, int line, char const* message) {
    mzTraceRecord(codeTrackLogger, {sourceUnit, function, line}, message);
}

/// Makes the object in the application that there is. False, with `retval`
/// untouched, when it cannot be made.
bool createInApplication(BSTR name, IDispatch** retval) {
    mzFrameTraceC const frame(codeTrackLogger, "CreateObject",
                              {sourceUnit, createSignature, __LINE__});
    mzComPtrC created;
    if (mzComCreateObject(hostProgId(name).c_str(), mzIDispatch::interfaceId(), created) !=
        mzSuccess) {
        return false;
    }
    trace(createSignature, __LINE__, "MZCOM create was ok");
    mzComPtrT<mzIDispatch> const object(created);
    ComPtr<Ivelkdspwrap> facade;
    if (FAILED(velk::adapter::createBoundFacade(object.iface(), facade))) return false;
    trace(createSignature, __LINE__, "Create Object ok");
    *retval = facade.detach();
    return true;
}

}  // namespace

CVelkCOMProxy::CVelkCOMProxy() {
    mzFrameTraceC const frame(codeTrackLogger, "CVelkCOMProxy::CVelkCOMProxy",
                              {sourceUnit, constructorSignature, __LINE__});
}

CVelkCOMProxy::~CVelkCOMProxy() {
    mzFrameTraceC const frame(codeTrackLogger, "CVelkCOMProxy::~CVelkCOMProxy",
                              {sourceUnit, destructorSignature, __LINE__});
}

HRESULT CVelkCOMProxy::CreateObject(BSTR name, IDispatch** retval) noexcept {
    try {
        if (!retval) return E_POINTER;
        for (int tries = 0; tries < mostTries; ++tries) {
            auto const run = velk::adapter::ensureApplication();
            if (!run) return S_FALSE;
            if (createInApplication(name, retval)) return S_OK;
            // Nothing can be made when the application ended meanwhile.
            if (!velk::adapter::isOver(*run)) return S_FALSE;
        }
        return S_FALSE;
    }
    VELK_COM_CATCH
}

HRESULT CVelkCOMProxy::GetObject(BSTR name, IDispatch** retval) noexcept {
    try {
        if (!retval) return E_POINTER;
        if (!velk::adapter::ensureApplication()) return S_FALSE;
        mzFrameTraceC const frame(codeTrackLogger, "GetObject",
                                  {sourceUnit, getSignature, __LINE__});
        mzComPtrT<mzIDispatch> const object = findRunning(hostProgId(name));
        if (!object.isValid()) return S_FALSE;
        trace(getSignature, __LINE__, "MZCOM get was ok");
        ComPtr<Ivelkdspwrap> facade;
        if (FAILED(velk::adapter::createBoundFacade(object.iface(), facade))) return S_FALSE;
        trace(getSignature, __LINE__, "get Object ok");
        *retval = facade.detach();
        // Also with an object: callers look at what they received.
        return S_FALSE;
    }
    VELK_COM_CATCH
}

HRESULT CVelkCOMProxy::InitApplication(BSTR appName, BSTR appVersion) noexcept {
    try {
        velk::adapter::nameApplication(hostText(appName), hostText(appVersion));
        velk::adapter::ensureApplication();
        return S_OK;
    }
    VELK_COM_CATCH
}

HRESULT CVelkCOMProxy::TerminateApplication() noexcept {
    try {
        velk::adapter::stopApplication();
        return S_OK;
    }
    VELK_COM_CATCH
}
