#pragma once

#include <QVarLengthArray>

#include "host/export.h"
#include "host/variant.h"

class mzComVariantArrayC;

/// One element of a variant array as the target of an assignment. Valid while
/// the array lives and keeps its size.
class mzComVariantRefC {
  public:
    mzComVariantRefC(mzComVariantArrayC& array, int index) : array_(&array), index_(index) {}
    mzComVariantRefC(mzComVariantRefC const&) = default;

    /// Stores into the element; an element that does not exist is left alone.
    inline mzComVariantRefC& operator=(mzComVariantC const& value);
    /// Stores the value of the other element.
    inline mzComVariantRefC& operator=(mzComVariantRefC const& other);
    inline operator mzComVariantC() const;

  private:
    mzComVariantArrayC* array_;
    int index_;
};

/// Ordered list of host variants, above all the arguments of a call. Up to six
/// elements live in the object itself.
class mzComVariantArrayC {
  public:
    int size() const { return elements_.size(); }

    /// A copy of element `index`; empty when there is no such element.
    mzComVariantC operator[](int index) const {
        return contains(index) ? elements_[index] : mzComVariantC();
    }
    mzComVariantRefC operator[](int index) { return mzComVariantRefC(*this, index); }

    /// Element `index` itself, which must exist; valid until the array changes.
    mzComVariantC const& at(int index) const { return elements_.at(index); }

    void append(mzComVariantC const& value) { elements_.append(value); }
    mzComVariantArrayC& operator<<(mzComVariantC const& value) {
        append(value);
        return *this;
    }
    /// New elements are empty; a negative size counts as 0.
    void resize(int size) { elements_.resize(size < 0 ? 0 : size); }

  private:
    friend class mzComVariantRefC;

    bool contains(int index) const { return index >= 0 && index < elements_.size(); }

    QVarLengthArray<mzComVariantC, 6> elements_;
};

inline mzComVariantRefC& mzComVariantRefC::operator=(mzComVariantC const& value) {
    if (array_->contains(index_)) array_->elements_[index_] = value;
    return *this;
}

inline mzComVariantRefC& mzComVariantRefC::operator=(mzComVariantRefC const& other) {
    if (this != &other) *this = mzComVariantC(other);
    return *this;
}

inline mzComVariantRefC::operator mzComVariantC() const {
    return static_cast<mzComVariantArrayC const&>(*array_)[index_];
}
