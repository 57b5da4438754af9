#pragma once

#include "host/com_ptr.h"
#include "host/variant.h"

/// Walks the elements of a collection once.
class mzIIterator : public mzIUnknown {
  public:
    static mzIIDS const& interfaceId() {
        static mzPermanentIidC const id("mzIIterator");
        return id.get();
    }

    /// `mzSuccess` and the next element, or `mzFailure` and an empty `value`
    /// when there is none left, or while another thread is in the collection.
    virtual unsigned next(mzComVariantC& value) = 0;
    /// Starts again at the first element. Host result code.
    virtual unsigned reset() = 0;

  protected:
    ~mzIIterator() = default;
};

/// A collection that can be walked.
class mzIIterable : public mzIUnknown {
  public:
    static mzIIDS const& interfaceId() {
        static mzPermanentIidC const id("mzIIterable");
        return id.get();
    }

    /// A new iterator before the first element. Host result code.
    virtual unsigned createIterator(mzComPtrT<mzIIterator>& out) = 0;

  protected:
    ~mzIIterable() = default;
};
