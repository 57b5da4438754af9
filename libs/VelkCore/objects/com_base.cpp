#include "host/com_base.h"

#include "values/destruction.h"

namespace {

// The components on this thread that are asking their outer object for an
// interface. An outer object that does not know it asks the component again,
// which must then answer no instead of asking once more.
struct OuterQuestion {
    explicit OuterQuestion(mzComBaseC const* component) noexcept;
    ~OuterQuestion() { innermost = previous; }

    static bool isAsking(mzComBaseC const* component) noexcept {
        for (auto const* question = innermost; question != nullptr; question = question->previous) {
            if (question->component == component) {
                return true;
            }
        }
        return false;
    }

    mzComBaseC const* component;
    OuterQuestion* previous;
    static thread_local OuterQuestion* innermost;
};

thread_local OuterQuestion* OuterQuestion::innermost = nullptr;

OuterQuestion::OuterQuestion(mzComBaseC const* asking) noexcept
    : component(asking), previous(innermost) {
    innermost = this;
}

}  // namespace

mzComBaseC::mzComBaseC() = default;
mzComBaseC::~mzComBaseC() = default;

void mzComBaseC::onBeforeDelete() {}

unsigned mzComBaseC::queryInterface(mzIIDS const& iid, mzComPtrC& out) {
    out = mzComPtrC();
    if (iid.equal(mzIUnknown::interfaceId())) {
        out.attach(getIUnknown());
        return mzSuccess;
    }
    if (outer_ == nullptr || OuterQuestion::isAsking(this)) {
        return mzFailure;
    }
    OuterQuestion const question(this);
    return outer_->queryInterface(iid, out);
}

unsigned mzComBaseC::addRef() {
    return outer_ != nullptr ? outer_->addRef() : InternalAddRef();
}

unsigned mzComBaseC::release() {
    return outer_ != nullptr ? outer_->release() : InternalRelease(true);
}

mzIUnknown* mzComBaseC::getIUnknown() const {
    return outer_ != nullptr ? outer_
                             : const_cast<mzIUnknown*>(static_cast<mzIUnknown const*>(this));
}

void mzComBaseC::setAggregated(mzIUnknown* outer) {
    outer_ = outer;
}

unsigned mzComBaseC::InternalAddRef() {
    return incrementReferences();
}

unsigned mzComBaseC::InternalRelease(bool deleteAtZero) {
    unsigned const left = decrementReferences();
    if (left == 0 && deleteAtZero) {
        // Pointers to the dying object that come and go while it says goodbye
        // must not bring the count to 0 a second time.
        incrementReferences();
        velk::core::destroyInTurn(this, [](void* object) noexcept {
            auto* const dying = static_cast<mzComBaseC*>(object);
            dying->onBeforeDelete();
            delete dying;
        });
    }
    return left;
}

mzComDispatchBaseC::mzComDispatchBaseC() = default;
mzComDispatchBaseC::~mzComDispatchBaseC() = default;

unsigned mzComDispatchBaseC::queryInterface(mzIIDS const& iid, mzComPtrC& out) {
    if (iid.equal(mzIDispatch::interfaceId())) {
        out.attach(static_cast<mzIDispatch*>(this));
        return mzSuccess;
    }
    return mzComBaseC::queryInterface(iid, out);
}

unsigned mzComDispatchBaseC::addRef() {
    return mzComBaseC::addRef();
}

unsigned mzComDispatchBaseC::release() {
    return mzComBaseC::release();
}
