#pragma once

#include <utility>

#include "host/com_base.h"

/// An aggregate's inner side: owns a `T` (derived from `mzComBaseC`) whose
/// `mzIUnknown` goes to the outer object, and is itself the reference by which
/// the outer object holds it.
template <class T>
class mzComAggObject : public mzComBaseC {
  public:
    /// `outer` is the aggregating object, which outlives this one and is not
    /// counted; the further arguments construct the `T`.
    template <class... Arguments>
    explicit mzComAggObject(mzIUnknown* outer, Arguments&&... arguments)
        : contained_(std::forward<Arguments>(arguments)...) {
        contained_.setAggregated(outer);
    }

    /// "mzIUnknown" is the aggregate itself, every other id the contained object's.
    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override {
        if (!iid.equal(mzIUnknown::interfaceId())) return contained_.queryInterface(iid, out);
        out.attach(static_cast<mzIUnknown*>(this));
        return mzSuccess;
    }
    unsigned addRef() override { return InternalAddRef(); }
    unsigned release() override { return InternalRelease(true); }

    T& contained() { return contained_; }

  private:
    T contained_;
};
