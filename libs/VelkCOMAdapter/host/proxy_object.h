#pragma once

#include <atomic>
#include <cstdint>

#include "host/dispatch.h"
#include "host/exception.h"
#include "host/execute_exception.h"
#include "host/export.h"
#include "host/member_desc.h"
#include "host/ref_object.h"
#include "host/single_thread_use.h"
#include "host/variant_array.h"

namespace velk::core {
class MemberIndex;
}

/// What ending a remote connection means for the object.
enum mzIComExternalConnectionReleaseStateE : int {
    mzExternalConnectionKeepsAlive = 0,
    mzExternalConnectionLastCloses = 1
};

/// Base of every script object. A class describes its members in a table
/// (`proxyMemberDescListS`) and returns it from `getProxyTypeInfo`; calls by
/// name find the member there. Objects start with reference count 0 and get
/// their first reference from the first pointer that takes them.
///
/// An object belongs to the thread that made it: calls from other threads are
/// carried to that thread, unless the object calls `setNonStickyThread` or
/// `setThreadSafe`. An object that is bound to no thread and not thread-safe is
/// for one thread at a time: a call that comes while another thread is in it
/// fails with an exception that says so. Calls back on the same thread are fine.
class VELKCORE_API proxyObjectC : public mzIDispatch, public mzComRefObjectC {
  public:
    /// Answers "mzIUnknown" and "mzIDispatch".
    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override;
    unsigned addRef() override;
    unsigned release() override;
    /// Looks the member up in the class's table, then in its parents', by name
    /// (without regard to ASCII case), call kind and argument count.
    unsigned invokeByName(mzComStringC const& name, unsigned callKind,
                          mzComVariantArrayC const& args, mzComVariantC& result,
                          mzComPtrT<mzIException>& exception) override;
    /// Id of the thread that the object is bound to, 0 when it is bound to
    /// none. The flag is without effect.
    virtual std::int64_t getStickyThreadId(bool flag);
    /// The object as the named class of its record or one of its parents', or null.
    virtual void* proxyCast(mzComStringC const& className) const;
    /// The record of the object's class.
    virtual proxyMemberDescListS const* getProxyTypeInfo();
    virtual ~proxyObjectC();
    /// A connection that keeps the object alive until it is released.
    virtual unsigned addRemoteConnection(mzIIDS const& iid);
    virtual unsigned releaseRemoteConnection(mzIIDS const& iid,
                                             mzIComExternalConnectionReleaseStateE state);

    /// The object's `mzIUnknown`, without a new reference.
    mzIUnknown* getIUnknown() const;
    /// The record of `proxyObjectC` itself, the parent of other records.
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

    /// Fails the running member call. `message` is the text for the script,
    /// `operation` the name of the member or operation that failed.
    [[noreturn]] static void throwExecuteException(mzComStringC const& message,
                                                   mzComStringC const& operation, int code);
    /// Fails the running member call because an argument cannot be read.
    [[noreturn]] static void throwAutoTypeCastException();

  protected:
    proxyObjectC();

    /// The object may be called from any thread from now on, by one at a time.
    void setNonStickyThread();
    /// The object declares itself safe for concurrent calls.
    void setThreadSafe();
    /// Calls by name fail from now on while another thread is in the object. For
    /// an object with operations besides, which reach it on any thread.
    void refuseOverlappingCalls();
    /// Who is in the object; operations that are no calls by name enter it too.
    mzSingleThreadUseC& singleThreadUse() const noexcept { return use_; }

  private:
    unsigned invokeHere(mzComStringC const& name, unsigned callKind, mzComVariantArrayC const& args,
                        mzComVariantC& result, mzComPtrT<mzIException>& exception) noexcept;
    unsigned findAndCall(mzComStringC const& name, unsigned callKind,
                         mzComVariantArrayC const& args, mzComVariantC& result,
                         mzComPtrT<mzIException>& exception) noexcept;
    unsigned invokeOnOwner(std::int64_t owner, mzComStringC const& name, unsigned callKind,
                           mzComVariantArrayC const& args, mzComVariantC& result,
                           mzComPtrT<mzIException>& exception) noexcept;
    friend class mzRoutedInvokeC;

    std::int64_t stickyThread_;
    // The members of the object's class by name; found with the first call.
    std::atomic<velk::core::MemberIndex*> members_{nullptr};
    std::atomic<unsigned> remoteConnections_{0};
    mutable mzSingleThreadUseC use_;
    bool threadSafe_ = false;
    bool refusesOverlap_ = false;
};
