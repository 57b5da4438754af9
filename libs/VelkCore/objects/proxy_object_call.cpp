#include <exception>
#include <memory>
#include <string>

#include "host/auto_para_list.h"
#include "host/proxy_object.h"

#include "class_indexes.h"
#include "thread_mailbox.h"

using velk::core::IndexedMember;
using velk::core::IndexHolder;
using velk::core::MemberChoice;
using velk::core::MemberIndex;
using velk::core::MemberMatch;
using velk::core::RouteOutcome;

namespace {

// The index of the object's class, which the object keeps once it has it. The
// record differs from the kept one only while the object is being constructed
// or destroyed, when the record of a base class shows: then `temporary` holds it.
MemberIndex const& membersOf(std::atomic<MemberIndex*>& kept, proxyMemberDescListS const& record,
                             IndexHolder& temporary) {
    MemberIndex* known = kept.load(std::memory_order_acquire);
    if (known != nullptr && known->record() == &record) {
        return *known;
    }
    temporary = velk::core::indexOf(record);
    if (known == nullptr &&
        kept.compare_exchange_strong(known, temporary.get(), std::memory_order_acq_rel)) {
        return *temporary.release();
    }
    return *temporary;
}

mzComStringC nameForPeople(mzComStringC const& name) {
    return name.isEmpty() ? mzComStringC("the default member") : "'" + name + "'";
}

// Failing to make an exception object must not hide the failure itself.
unsigned fail(mzComStringC const& source, mzComStringC const& description,
              mzComPtrT<mzIException>& exception) {
    exception = mzComCreateException(source, description, {});
    return mzFailure;
}

void callMember(proxyObjectC& object, IndexedMember const& entry, mzComVariantArrayC const& args,
                mzComVariantC& result) {
    void* const self =
        entry.owner->castFn != nullptr ? entry.owner->castFn(&object) : static_cast<void*>(&object);
    proxyAutoParaListC parameters(args);
    mzComVariantC value;
    auto cast = proxyAutoTypeCastC::result(value);
    if (entry.takesConvertFlag) {
        entry.member->invoker(self, parameters, cast, true);
    } else {
        entry.member->plainInvoker(self, parameters, cast);
    }
    result = std::move(value);
}

// Translates what a member threw, called inside a catch block.
unsigned failWithCurrentException(mzComStringC const& name, mzComPtrT<mzIException>& exception) {
    try {
        throw;
    } catch (mzAutoTypeCastExceptionC const&) {
        return fail(
            name,
            "An argument of " + nameForPeople(name) + " cannot be read as the type that it takes",
            exception);
    } catch (mzExecuteExceptionC const& failure) {
        return fail(failure.operation().isEmpty() ? name : failure.operation(), failure.message(),
                    exception);
    } catch (std::bad_alloc const&) {
        return fail(name, "Out of memory", exception);
    } catch (std::exception const& failure) {
        return fail(name, mzComStringC::fromUtf8(failure.what(), -1), exception);
    } catch (...) {
        return fail(name, "Unknown exception in " + nameForPeople(name), exception);
    }
}

char const* routeFailure(RouteOutcome outcome) {
    switch (outcome) {
        case RouteOutcome::notServed:
            return "The thread of the object does not serve calls";
        case RouteOutcome::stillRunning:
            return "The call on the object's thread does not come back";
        case RouteOutcome::ownerEnded:
            return "The thread of the object has ended";
        case RouteOutcome::done:
            break;
    }
    return "";
}

}  // namespace

// The call as it travels. It holds everything that it needs, the object
// included, because the caller may have given up by the time it runs.
class mzRoutedInvokeC : public velk::core::RoutedCall {
  public:
    mzRoutedInvokeC(proxyObjectC& object, mzComStringC const& name, unsigned callKind,
                    mzComVariantArrayC const& args)
        : keepAlive_(object.getIUnknown()),
          object_(object),
          name_(name),
          callKind_(callKind),
          args_(args) {}

    void run() noexcept override {
        code_ = object_.invokeHere(name_, callKind_, args_, result_, exception_);
    }

    unsigned take(mzComVariantC& result, mzComPtrT<mzIException>& exception) {
        result = std::move(result_);
        exception = std::move(exception_);
        return code_;
    }

  private:
    mzComPtrC keepAlive_;
    proxyObjectC& object_;
    mzComStringC name_;
    unsigned callKind_;
    mzComVariantArrayC args_;
    mzComVariantC result_;
    mzComPtrT<mzIException> exception_;
    unsigned code_ = mzFailure;
};

unsigned proxyObjectC::invokeByName(mzComStringC const& name, unsigned callKind,
                                    mzComVariantArrayC const& args, mzComVariantC& result,
                                    mzComPtrT<mzIException>& exception) {
    std::int64_t const owner = getStickyThreadId(false);
    if (owner == 0 || owner == velk::core::currentThreadNumber()) {
        return invokeHere(name, callKind, args, result, exception);
    }
    return invokeOnOwner(owner, name, callKind, args, result, exception);
}

unsigned proxyObjectC::invokeHere(mzComStringC const& name, unsigned callKind,
                                  mzComVariantArrayC const& args, mzComVariantC& result,
                                  mzComPtrT<mzIException>& exception) noexcept {
    if (!refusesOverlap_ || threadSafe_) {
        return findAndCall(name, callKind, args, result, exception);
    }
    mzSingleThreadUseC::Use const use(use_);
    if (use.granted()) return findAndCall(name, callKind, args, result, exception);
    try {
        result.clear();
        return fail(name, mzInUseText, exception);
    } catch (...) {
        return mzFailure;
    }
}

unsigned proxyObjectC::findAndCall(mzComStringC const& name, unsigned callKind,
                                   mzComVariantArrayC const& args, mzComVariantC& result,
                                   mzComPtrT<mzIException>& exception) noexcept {
    try {
        result.clear();
        try {
            IndexHolder temporary;
            MemberChoice const choice =
                membersOf(members_, *getProxyTypeInfo(), temporary).find(name, callKind, args);
            if (choice.match == MemberMatch::unknownName) {
                return mzMemberNotFound;
            }
            if (choice.match == MemberMatch::wrongArgCount) {
                return fail(name,
                            nameForPeople(name) + " does not take " +
                                mzComStringC::fromInt(args.size(), 10) + " arguments",
                            exception);
            }
            callMember(*this, *choice.member, args, result);
            return mzSuccess;
        } catch (...) {
            return failWithCurrentException(name, exception);
        }
    } catch (...) {
        // Not even the exception object could be made.
        return mzFailure;
    }
}

unsigned proxyObjectC::invokeOnOwner(std::int64_t owner, mzComStringC const& name,
                                     unsigned callKind, mzComVariantArrayC const& args,
                                     mzComVariantC& result,
                                     mzComPtrT<mzIException>& exception) noexcept {
    try {
        result.clear();
        auto const call = std::make_shared<mzRoutedInvokeC>(*this, name, callKind, args);
        RouteOutcome const outcome = velk::core::runOnThread(owner, call);
        if (outcome == RouteOutcome::done) {
            return call->take(result, exception);
        }
        return fail(name, routeFailure(outcome), exception);
    } catch (...) {
        return mzFailure;
    }
}
