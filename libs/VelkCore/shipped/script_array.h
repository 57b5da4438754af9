#pragma once

#include <vector>

#include "host/iterator.h"
#include "host/proxy_object.h"

namespace velk::core {

/// The script object "qxttools.array": a list of values that counts from 0 and
/// grows as needed. Values are equal as dictionary keys are: numbers by value,
/// texts exactly, objects as themselves. Its iterator walks the values.
///
/// Calls by name run on the list's own thread; an iterator may be used on any.
/// While two of them overlap on different threads, the second one fails.
class ScriptArray : public proxyObjectC, public mzIIterable {
  public:
    ScriptArray() { refuseOverlappingCalls(); }
    explicit ScriptArray(std::vector<mzComVariantC> values) : values_(std::move(values)) {
        refuseOverlappingCalls();
    }

    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override;
    unsigned addRef() override { return proxyObjectC::addRef(); }
    unsigned release() override { return proxyObjectC::release(); }
    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();
    unsigned createIterator(mzComPtrT<mzIIterator>& out) override;

    /// How many values there are; also the member "Length".
    int count() const { return static_cast<int>(values_.size()); }
    /// Always 0.
    int lowerBound() const { return 0; }
    /// The last index, -1 for an empty list.
    int upperBound() const { return count() - 1; }

    /// The value at an index; an index outside the list fails, here and below.
    mzComVariantC item(int index);
    void setItem(int index, mzComVariantC const& value);
    /// Adds at the end; the new value's index.
    int add(mzComVariantC const& value);
    /// Removes the first equal value; whether there was one.
    bool remove(mzComVariantC const& value);
    void removeAt(int index);
    /// Inserts before the value at the index; at the end with index `count()`.
    void insertAt(int index, mzComVariantC const& value);
    void removeAll();
    /// Gives the list a new last index, -1 for none. Values up to it stay, new
    /// ones are empty.
    void resize(int lastIndex);

    /// Index of the first equal value, -1 without one.
    int find(mzComVariantC const& value);
    /// The same from an index on.
    int findFrom(mzComVariantC const& value, int start);

    /// A new list of all values.
    mzComPtrT<mzIUnknown> copy();
    /// A new list of the values from an index (up to `count()`) on.
    mzComPtrT<mzIUnknown> copyFrom(int start);
    /// A new list of at most `length` values from an index on.
    mzComPtrT<mzIUnknown> copyRange(int start, int length);

  private:
    class Place;

    void requireIndex(int index, int last, char const* operation) const;

    std::vector<mzComVariantC> values_;
};

/// A new "qxttools.array" of these values.
mzComPtrT<mzIUnknown> newScriptArray(std::vector<mzComVariantC> values);

}  // namespace velk::core
