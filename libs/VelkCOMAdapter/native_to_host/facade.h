/// The native object that stands for a host object in front of native clients.
#pragma once

#include "com/com_ptr.h"
#include "com/object_root.h"
#include "com/owners.h"
#include "host/com_string.h"
#include "host/critical_section.h"
#include "host/dispatch.h"
#include "module/interfaces.h"

/// Gives every member name a DISPID and calls the host object by that name.
///
/// Created unbound, bound once by the module, made concrete by CComObject.
/// Any thread may count references, ask for names and call. No lock is held
/// while the host object is called; the host object and the facade stay until
/// their call ends, whoever gives them up in it.
///
/// A host object that belongs to no thread and is not safe for several is for
/// one at a time: a call that overlaps another thread's fails with
/// DISP_E_EXCEPTION and the text "The object is in use by another thread".
class Cvelkdspwrap : public velk::com::CComObjectRootEx<velk::com::CComMultiThreadModelNoCS>,
                     public Ivelkdspwrap {
  public:
    VELK_COM_MAP(Cvelkdspwrap, VELK_COM_INTERFACE(Ivelkdspwrap, IID_Ivelkdspwrap),
                 VELK_COM_INTERFACE(IDispatch, IID_IDispatch))

    HRESULT finalConstruct() noexcept;

    /// The facade behind an interface pointer, when the object is one of this
    /// module; null for null and for objects of anyone else, whatever
    /// interface ids they answer to.
    static Cvelkdspwrap* ownFacade(Ivelkdspwrap* pointer) noexcept;

    /// The object that it stands for, without a new reference; null while unbound.
    mzIDispatch* hostObject() const noexcept { return hostDispatch_.iface(); }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override;
    /// The description of Ivelkdspwrap, not of the host object's members.
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** out) noexcept override;
    /// One name at a time; every name gets a DISPID, known to the host object
    /// or not. DISP_E_UNKNOWNNAME when named arguments are asked for.
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) noexcept override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT*) noexcept override;
    HRESULT STDMETHODCALLTYPE bindToDispatch(LONGLONG value) noexcept override;

  protected:
    ~Cvelkdspwrap() = default;

  private:
    bool isLastName(velk::com::TextView name) const;
    HRESULT nameOfMember(DISPID member, mzComStringC& name);

    mzComPtrT<mzIDispatch> hostDispatch_;
    // Guards what follows it.
    mzCriticalSectionObjectC lookupSection_;
    // The member called last: calling it again touches nothing that facades
    // on other threads touch.
    DISPID lastMember_ = DISPID_UNKNOWN;
    unsigned lastGeneration_ = 0;
    mzComStringC lastName_;
};

namespace velk::adapter {

/// A new facade without a host object, with one reference for the caller.
/// E_POINTER for a null `out`, E_OUTOFMEMORY, or what its creation answers;
/// `out` is null after a failure. Locks the module while the facade lives.
HRESULT createFacade(Ivelkdspwrap** out) noexcept;

/// A new facade that is bound to `object`, of which it holds a reference.
/// With null it stays unbound and every call on it fails.
HRESULT createBoundFacade(mzIDispatch* object, com::ComPtr<Ivelkdspwrap>& out) noexcept;

}  // namespace velk::adapter
