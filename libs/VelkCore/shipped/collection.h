/// What the collections that come with the runtime share.
#pragma once

#include "host/execute_exception.h"
#include "host/iterator.h"
#include "host/single_thread_use.h"

#include "values/counted_object.h"

namespace velk::core {

/// The calling thread's stay in an object; fails the running member call while
/// another thread is inside.
class RequiredUse {
  public:
    RequiredUse(mzSingleThreadUseC& object, char const* operation) : use_(object) {
        if (!use_.granted()) mzThrowExecuteException(mzInUseText, operation, 1);
    }

  private:
    mzSingleThreadUseC::Use use_;
};

/// Walks a live collection, which it keeps. A walk that meets another thread in
/// the collection fails.
///
/// `Place` is where the walk stands: `bool next(Collection&, mzComVariantC&)`
/// steps on and reads, false at the end; a new one stands before the first element.
template <class Collection, class Place>
class CollectionWalk : public CountedObject<mzIIterator> {
  public:
    CollectionWalk(Collection& collection, mzSingleThreadUseC& use)
        : keepAlive_(collection.getIUnknown()), collection_(collection), use_(use) {}

    unsigned next(mzComVariantC& value) override {
        mzSingleThreadUseC::Use const use(use_);
        if (use.granted() && place_.next(collection_, value)) return mzSuccess;
        value.clear();
        return mzFailure;
    }

    unsigned reset() override {
        mzSingleThreadUseC::Use const use(use_);
        if (!use.granted()) return mzFailure;
        place_ = Place();
        return mzSuccess;
    }

    /// `createIterator` of the collection.
    static unsigned create(Collection& collection, mzSingleThreadUseC& use,
                           mzComPtrT<mzIIterator>& out) noexcept try {
        out = new CollectionWalk(collection, use);
        return mzSuccess;
    } catch (...) {
        out.detach();
        return mzFailure;
    }

  private:
    mzComPtrC keepAlive_;
    Collection& collection_;
    mzSingleThreadUseC& use_;
    Place place_;
};

}  // namespace velk::core
