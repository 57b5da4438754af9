#include <gtest/gtest.h>

#include "sample_objects.h"
#include "support/small_stack.h"

// Objects that hold objects that hold objects: the last reference to the
// outermost one takes them all away, on a stack of any size.

namespace velk::test {
namespace {

mzComVariantC inDictionary(mzComVariantC const& inner, int) {
    auto* const dictionary = new prxDictionaryObjC;
    mzComVariantC outer = reference(dictionary->getIUnknown());
    dictionary->addObj("next", inner);
    return outer;
}

mzComVariantC asKey(mzComVariantC const& inner, int) {
    auto* const dictionary = new prxDictionaryObjC;
    mzComVariantC outer = reference(dictionary->getIUnknown());
    dictionary->addObj(inner, 1);
    return outer;
}

mzComVariantC inArray(mzComVariantC const& inner, int) {
    mzComPtrC const list = newArray();
    EXPECT_EQ(call(list.iface(), "Add", mzCallMethod, {inner}).code, mzSuccess);
    return reference(list.iface());
}

mzComVariantC underIterator(mzComVariantC const& inner, int) {
    mzComPtrT<prxDictionaryObjC> const dictionary(new prxDictionaryObjC);
    dictionary->addObj("next", inner);
    mzComPtrT<mzIIterator> walk;
    dictionary->createIterator(walk);
    return reference(walk.iface());
}

mzComVariantC behindException(mzComVariantC const& inner, int) {
    mzComPtrT<mzIUnknown> cause;
    inner.get(cause);
    return reference(
        mzComCreateException("", "", mzComPtrT<mzIException>(mzComPtrC(cause.iface()))).iface());
}

/// A component of a host that keeps a value.
class Keeper : public mzComDispatchBaseC {
  public:
    explicit Keeper(mzComVariantC value) : value_(std::move(value)) {}

    unsigned invokeByName(mzComStringC const&, unsigned, mzComVariantArrayC const&, mzComVariantC&,
                          mzComPtrT<mzIException>&) override {
        return mzMemberNotFound;
    }

  private:
    mzComVariantC value_;
};

mzComVariantC inVariable(mzComVariantC const& inner, int) {
    return mzComVariantC::createSymbolRef(reference((new Keeper(inner))->getIUnknown()));
}

mzComVariantC inTurn(mzComVariantC const& inner, int level) {
    decltype(&inTurn) const kinds[] = {inDictionary, inArray, asKey, underIterator, inVariable};
    return kinds[level % 5](inner, level);
}

TEST(DeepStructures, GoWithTheirOutermostObject) {
    Servers const servers;
    for (auto* const enclose :
         {inDictionary, asKey, inArray, underIterator, behindException, inVariable, inTurn}) {
        long long const before = mzLiveCount(mzLiveKindE::hostObject);
        ASSERT_TRUE(withSmallStack([=] {
            mzComVariantC outermost;
            for (int level = 0; level < greatDepth; ++level) outermost = enclose(outermost, level);
            EXPECT_GE(mzLiveCount(mzLiveKindE::hostObject), before + greatDepth);
            outermost.clear();
            EXPECT_EQ(mzLiveCount(mzLiveKindE::hostObject), before);
        }));
    }
}

/// Makes a structure and drops it while it is itself on its way out.
class Nested : public mzComBaseC {
  public:
    explicit Nested(mzComPtrC inner) : inner_(std::move(inner)) {}
    ~Nested() override {
        ++gone;
        mzComVariantC other;
        for (int level = 0; level < 20; ++level) other = inTurn(other, level);
    }

    static inline int gone = 0;

  private:
    mzComPtrC inner_;
};

// What waits for its end at the end of a thread, and what ends inside of that.
TEST(DeepStructures, AreGoneWithTheThread) {
    Servers const servers;
    constexpr int depth = 5'000;
    long long const before = mzLiveCount(mzLiveKindE::hostObject);
    int const slot = mzTlsAlloc([](void* held) { delete static_cast<mzComPtrC*>(held); });
    ASSERT_TRUE(withSmallStack([slot] {
        auto* const outermost = new mzComPtrC;
        for (int level = 0; level < depth; ++level) *outermost = mzComPtrC(new Nested(*outermost));
        *mzTlsGet(slot) = outermost;
    }));
    EXPECT_EQ(Nested::gone, depth);
    EXPECT_EQ(mzLiveCount(mzLiveKindE::hostObject), before);
    mzTlsFree(slot);
}

}  // namespace
}  // namespace velk::test
