#pragma once

#include "host/codes.h"
#include "host/com_ptr.h"
#include "host/ref_object.h"
#include "values/destruction.h"

namespace velk::core {

/// An object of one interface that lives by its reference count. It answers
/// "mzIUnknown" and the interface's own id; `Parents` are the interfaces
/// between the two.
template <class Interface, class... Parents>
class CountedObject : public Interface, public mzComRefObjectC {
  public:
    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override {
        if ((iid.equal(Interface::interfaceId()) || ... || iid.equal(Parents::interfaceId())) ||
            iid.equal(mzIUnknown::interfaceId())) {
            out.attach(static_cast<Interface*>(this));
            return mzSuccess;
        }
        out.detach();
        return mzFailure;
    }
    unsigned addRef() override { return incrementReferences(); }
    unsigned release() override {
        unsigned const left = decrementReferences();
        if (left == 0) {
            destroyInTurn(
                this, [](void* object) noexcept { delete static_cast<CountedObject*>(object); });
        }
        return left;
    }

  protected:
    CountedObject() = default;
    virtual ~CountedObject() = default;
};

}  // namespace velk::core
