#include "script_array.h"

#include <algorithm>
#include <limits>

#include "host/auto_register.h"
#include "host/proxy_member.h"

#include "collection.h"
#include "dictionary_key.h"

namespace velk::core {

namespace {

// A script that asks for more has made a mistake: this many values take 4 GB.
constexpr int mostValues = 1 << 28;

}  // namespace

class ScriptArray::Place {
  public:
    bool next(ScriptArray& array, mzComVariantC& value) {
        if (index_ >= array.values_.size()) return false;
        value = array.values_[index_++];
        return true;
    }

  private:
    std::size_t index_ = 0;
};

unsigned ScriptArray::queryInterface(mzIIDS const& iid, mzComPtrC& out) {
    if (iid.equal(mzIIterable::interfaceId())) {
        out.attach(static_cast<mzIIterable*>(this));
        return mzSuccess;
    }
    return proxyObjectC::queryInterface(iid, out);
}

unsigned ScriptArray::createIterator(mzComPtrT<mzIIterator>& out) {
    return CollectionWalk<ScriptArray, Place>::create(*this, singleThreadUse(), out);
}

void ScriptArray::requireIndex(int index, int last, char const* operation) const {
    if (index < 0 || index > last) {
        throwExecuteException("The index " + mzComStringC::fromInt(index, 10) +
                                  " is outside the list of " + mzComStringC::fromInt(count(), 10) +
                                  " values",
                              operation, 1);
    }
}

mzComVariantC ScriptArray::item(int index) {
    requireIndex(index, upperBound(), "Item");
    return values_[static_cast<std::size_t>(index)];
}

void ScriptArray::setItem(int index, mzComVariantC const& value) {
    // Before the index is looked at: reading a variable can run code that
    // changes this list.
    mzComVariantC const plain = value.skipVariable();
    requireIndex(index, upperBound(), "Item");
    values_[static_cast<std::size_t>(index)] = plain;
}

int ScriptArray::add(mzComVariantC const& value) {
    if (count() >= mostValues) {
        throwExecuteException("The list is full", "Add", 1);
    }
    values_.push_back(value.skipVariable());
    return upperBound();
}

bool ScriptArray::remove(mzComVariantC const& value) {
    int const index = find(value);
    if (index < 0) {
        return false;
    }
    removeAt(index);
    return true;
}

void ScriptArray::removeAt(int index) {
    requireIndex(index, upperBound(), "RemoveAt");
    auto const place = values_.begin() + index;
    // Released last: giving up an object can run code that uses this list.
    mzComVariantC const removed = std::move(*place);
    values_.erase(place);
}

void ScriptArray::insertAt(int index, mzComVariantC const& value) {
    mzComVariantC const plain = value.skipVariable();
    requireIndex(index, count(), "InsertAt");
    if (count() >= mostValues) {
        throwExecuteException("The list is full", "InsertAt", 1);
    }
    values_.insert(values_.begin() + index, plain);
}

void ScriptArray::removeAll() {
    std::vector<mzComVariantC> const removed = std::exchange(values_, {});
}

void ScriptArray::resize(int lastIndex) {
    if (lastIndex < -1 || lastIndex >= mostValues) {
        throwExecuteException(
            "The list cannot end at the index " + mzComStringC::fromInt(lastIndex, 10), "ReDim", 1);
    }
    int const count = lastIndex + 1;
    auto const size = static_cast<std::size_t>(count);
    std::vector<mzComVariantC> removed;  // released last, as above
    if (size < values_.size()) {
        removed.assign(std::make_move_iterator(values_.begin() + count),
                       std::make_move_iterator(values_.end()));
    }
    values_.resize(size);
}

int ScriptArray::find(mzComVariantC const& value) {
    return findFrom(value, 0);
}

int ScriptArray::findFrom(mzComVariantC const& value, int start) {
    requireIndex(start, count(), "Find");
    DictionaryKey const wanted(value.skipVariable(), KeyCompare::binary);
    // By index, because asking an object who it is can change this list.
    for (int index = start; index < count(); ++index) {
        DictionaryKey const candidate(values_[static_cast<std::size_t>(index)], KeyCompare::binary);
        if (candidate.equals(wanted, KeyCompare::binary)) return index;
    }
    return -1;
}

mzComPtrT<mzIUnknown> ScriptArray::copy() {
    return newScriptArray(values_);
}

mzComPtrT<mzIUnknown> ScriptArray::copyFrom(int start) {
    return copyRange(start, std::numeric_limits<int>::max());
}

mzComPtrT<mzIUnknown> ScriptArray::copyRange(int start, int length) {
    requireIndex(start, count(), "Copy");
    if (length < 0) {
        throwExecuteException("The length of a copy cannot be negative", "Copy", 1);
    }
    auto const first = values_.begin() + start;
    return newScriptArray({first, first + std::min(length, count() - start)});
}

proxyMemberDescListS const* ScriptArray::getStaticProxyTypeInfo() {
    // What returns a value answers both as a method and as a property read.
    constexpr unsigned reads = mzCallMethod | mzCallPropertyGet;
    constexpr char const* file = "script_array.h";
    using A = ScriptArray;
    static proxyMemberDescS const members[] = {
        proxyMember<&A::count>("Count", reads, file, __LINE__),
        proxyMember<&A::count>("Length", reads, file, __LINE__),
        proxyMember<&A::item>("Item", reads, file, __LINE__),
        proxyPropertyPut<&A::setItem>("Item", file, __LINE__),
        proxyMember<&A::item>("", reads, file, __LINE__),
        proxyPropertyPut<&A::setItem>("", file, __LINE__),
        proxyMethod<&A::add>("Add", file, __LINE__),
        proxyMethod<&A::remove>("Remove", file, __LINE__),
        proxyMethod<&A::removeAt>("RemoveAt", file, __LINE__),
        proxyMethod<&A::insertAt>("InsertAt", file, __LINE__),
        proxyMethod<&A::removeAll>("RemoveAll", file, __LINE__),
        proxyMember<&A::lowerBound>("LBound", reads, file, __LINE__),
        proxyMember<&A::upperBound>("UBound", reads, file, __LINE__),
        proxyMethod<&A::resize>("ReDim", file, __LINE__),
        proxyMember<&A::find>("Find", reads, file, __LINE__),
        proxyMember<&A::findFrom>("Find", reads, file, __LINE__),
        proxyMember<&A::copy>("Copy", reads, file, __LINE__),
        proxyMember<&A::copyFrom>("Copy", reads, file, __LINE__),
        proxyMember<&A::copyRange>("Copy", reads, file, __LINE__),
        proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {
        "prxArrayObjC", proxyCastTo<A>, bases,   members, "qxttools.array", 0,
        proxyCreate<A>, file,           __LINE__};
    return &record;
}

mzComPtrT<mzIUnknown> newScriptArray(std::vector<mzComVariantC> values) {
    return (new ScriptArray(std::move(values)))->getIUnknown();
}

}  // namespace velk::core

static proxyAutoRegisterT<velk::core::ScriptArray> registerArray;
