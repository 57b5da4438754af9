#include "host/proxy_object.h"

#include "host/proxy_member.h"

#include "class_indexes.h"
#include "thread_mailbox.h"
#include "values/destruction.h"

using velk::core::MemberIndex;

proxyObjectC::proxyObjectC() : stickyThread_(velk::core::currentThreadNumber()) {}

proxyObjectC::~proxyObjectC() {
    if (MemberIndex* const index = members_.load(std::memory_order_acquire)) {
        index->release();
    }
}

unsigned proxyObjectC::queryInterface(mzIIDS const& iid, mzComPtrC& out) {
    if (iid.equal(mzIDispatch::interfaceId()) || iid.equal(mzIUnknown::interfaceId())) {
        out.attach(getIUnknown());
        return mzSuccess;
    }
    out = mzComPtrC();
    return mzFailure;
}

unsigned proxyObjectC::addRef() {
    return incrementReferences();
}

unsigned proxyObjectC::release() {
    unsigned const left = decrementReferences();
    if (left == 0) {
        // Pointers to the dying object that come and go in its destructor must
        // not bring the count to 0 a second time.
        incrementReferences();
        velk::core::destroyInTurn(
            this, [](void* object) noexcept { delete static_cast<proxyObjectC*>(object); });
    }
    return left;
}

std::int64_t proxyObjectC::getStickyThreadId(bool) {
    return threadSafe_ ? 0 : stickyThread_;
}

void proxyObjectC::setNonStickyThread() {
    stickyThread_ = 0;
    refuseOverlappingCalls();
}

void proxyObjectC::setThreadSafe() {
    threadSafe_ = true;
}

void proxyObjectC::refuseOverlappingCalls() {
    refusesOverlap_ = true;
}

namespace {

proxyMemberDescListS const* findClass(proxyMemberDescListS const* record,
                                      mzComStringC const& className) {
    if (record == nullptr || className.compare(record->className, caseCompareExact) == 0) {
        return record;
    }
    for (auto const* base = record->bases; base != nullptr && *base != nullptr; ++base) {
        if (auto const* found = findClass(*base, className)) {
            return found;
        }
    }
    return nullptr;
}

}  // namespace

void* proxyObjectC::proxyCast(mzComStringC const& className) const {
    auto* const self = const_cast<proxyObjectC*>(this);
    proxyMemberDescListS const* const record = findClass(self->getProxyTypeInfo(), className);
    return record != nullptr && record->castFn != nullptr ? record->castFn(self) : nullptr;
}

proxyMemberDescListS const* proxyObjectC::getProxyTypeInfo() {
    return getStaticProxyTypeInfo();
}

proxyMemberDescListS const* proxyObjectC::getStaticProxyTypeInfo() {
    static proxyMemberDescS const members[] = {proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {nullptr};
    static proxyMemberDescListS const record = {
        "proxyObjectC", proxyCastTo<proxyObjectC>, bases,   members, nullptr, 0,
        nullptr,        "proxy_object.cpp",        __LINE__};
    return &record;
}

mzIUnknown* proxyObjectC::getIUnknown() const {
    return const_cast<mzIUnknown*>(static_cast<mzIUnknown const*>(this));
}

unsigned proxyObjectC::addRemoteConnection(mzIIDS const&) {
    ++remoteConnections_;
    addRef();
    return mzSuccess;
}

unsigned proxyObjectC::releaseRemoteConnection(mzIIDS const&,
                                               mzIComExternalConnectionReleaseStateE) {
    unsigned open = remoteConnections_.load();
    do {
        if (open == 0) {
            return mzFailure;
        }
    } while (!remoteConnections_.compare_exchange_weak(open, open - 1));
    release();
    return mzSuccess;
}

void proxyObjectC::throwExecuteException(mzComStringC const& message, mzComStringC const& operation,
                                         int code) {
    mzThrowExecuteException(message, operation, code);
}

void proxyObjectC::throwAutoTypeCastException() {
    mzThrowAutoTypeCastException();
}
