#pragma once

#include "host/dispatch.h"
#include "host/export.h"
#include "host/ref_object.h"

/// Reference-counted base of host components. It can be part of an aggregate:
/// then references and the question for "mzIUnknown" go to the outer object.
class VELKCORE_API mzComBaseC : public mzIUnknown, public mzComRefObjectC {
  public:
    /// Answers "mzIUnknown".
    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override;
    unsigned addRef() override;
    unsigned release() override;
    virtual ~mzComBaseC();
    /// Called just before the object deletes itself.
    virtual void onBeforeDelete();

    /// The object's identity, the outer object's in an aggregate; without a
    /// new reference.
    mzIUnknown* getIUnknown() const;
    /// Makes the object delegate its `mzIUnknown` to `outer`, of which it holds
    /// no reference; null ends that.
    void setAggregated(mzIUnknown* outer);

  protected:
    mzComBaseC();

    /// Counts this object's own references, whoever aggregates it.
    unsigned InternalAddRef();
    /// Destroys the object at 0 when `deleteAtZero` is set.
    unsigned InternalRelease(bool deleteAtZero);
    mzIUnknown* outer() const { return outer_; }

  private:
    mzIUnknown* outer_ = nullptr;
};

/// Base of components that are called by name.
class VELKCORE_API mzComDispatchBaseC : public mzComBaseC, public mzIDispatch {
  public:
    mzComDispatchBaseC();
    ~mzComDispatchBaseC() override;

    /// Answers "mzIUnknown" (the outer object's in an aggregate) and "mzIDispatch".
    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override;
    unsigned addRef() override;
    unsigned release() override;
};
