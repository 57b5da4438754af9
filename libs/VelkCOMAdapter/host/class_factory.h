#pragma once

#include <utility>
#include <vector>

#include "host/com_base.h"
#include "host/com_ptr.h"
#include "host/export.h"

/// Receives what a class factory can create.
class mzIClassFactoryEnumerator : public mzIUnknown {
  public:
    static mzIIDS const& interfaceId() {
        static mzPermanentIidC const id("mzIClassFactoryEnumerator");
        return id.get();
    }

    /// Takes one creatable class. Any code but `mzSuccess` ends the enumeration.
    virtual unsigned addCreatable(mzIIDS const& id) = 0;

  protected:
    ~mzIClassFactoryEnumerator() = default;
};

/// Creates host objects by class id.
class mzIClassFactory : public mzIUnknown {
  public:
    static mzIIDS const& interfaceId() {
        static mzPermanentIidC const id("mzIClassFactory");
        return id.get();
    }

    /// A new object of the class `id`, aggregated by `outer` when that is not
    /// null. Host result code: a class that is unknown, or that refuses to be
    /// aggregated, gives `mzFailure` and leaves `result` empty.
    virtual unsigned createInstance(mzIUnknown* outer, mzIIDS const& id,
                                    mzComPtrT<mzIUnknown>& result) = 0;
    /// Tells `enumerator` (may be empty) every class id, and `count` (may be
    /// null) how many there are.
    virtual unsigned getCreateableObjects(mzComPtrT<mzIClassFactoryEnumerator> const& enumerator,
                                          int* count) = 0;

  protected:
    ~mzIClassFactory() = default;
};

/// A class factory made of creator functions.
class VELKCORE_API mzComDefaultClassFactory : public mzComBaseC, public mzIClassFactory {
  public:
    /// Makes one object: stores its `mzIUnknown` in `result` and returns 0, or
    /// returns 1 when `outer` is not null and it cannot be aggregated.
    using Creator = unsigned (*)(mzComDefaultClassFactory* factory, mzIUnknown* outer,
                                 mzComPtrT<mzIUnknown>& result);

    mzComDefaultClassFactory();
    ~mzComDefaultClassFactory() override;

    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override;
    unsigned addRef() override;
    unsigned release() override;
    unsigned createInstance(mzIUnknown* outer, mzIIDS const& id,
                            mzComPtrT<mzIUnknown>& result) override;
    unsigned getCreateableObjects(mzComPtrT<mzIClassFactoryEnumerator> const& enumerator,
                                  int* count) override;

    /// Registers `creator` under `id`; the first one of an id counts. Not
    /// beside other calls on the same factory.
    void addCreator(mzIIDS const& id, Creator creator);

  private:
    std::vector<std::pair<mzIIDS, Creator>> creators_;
};
