#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "counting_object.h"
#include "host/exception.h"
#include "host/symbol_ref.h"
#include "support/small_stack.h"

namespace {

unsigned call(mzComVariantC const& target, char const* name, unsigned kind,
              mzComVariantArrayC const& args, mzComVariantC& result) {
    mzComPtrT<mzIUnknown> object;
    target.get(object);
    mzComPtrT<mzIDispatch> const dispatch{mzComPtrC(object.iface())};
    mzComPtrT<mzIException> exception;
    return dispatch->invokeByName(name, kind, args, result, exception);
}

mzComVariantArrayC arguments(mzComVariantC const& value) {
    mzComVariantArrayC args;
    args << value;
    return args;
}

TEST(ScriptVariable, AnArgumentThatTheCalleeWrites) {
    mzISymbolRefC const symbol = mzComVariantC::createSymbolRef(5);
    mzComVariantC const argument = symbol;
    EXPECT_EQ(argument.getType(), mzTypeObject);
    EXPECT_TRUE(argument.isVariable());
    EXPECT_EQ(argument.skipVariable().getInt(), 5);
    mzComVariantC result;
    EXPECT_EQ(call(argument, "", mzCallPropertyPut, arguments("new"), result), mzSuccess);
    mzComVariantC value;
    EXPECT_EQ(symbol.get(value), mzSuccess);
    mzComStringC text;
    EXPECT_EQ(value.get(text), mzSuccess);
    EXPECT_EQ(text, mzComStringC("new"));
}

TEST(ScriptVariable, ValuesAreNoVariables) {
    CountingDispatch object;
    mzComVariantC holder;
    holder.set(mzComPtrT<mzIUnknown>(&object));
    mzComVariantC const samples[] = {mzComVariantC(), 1, 2.5, "text", holder};
    for (mzComVariantC const& sample : samples) {
        EXPECT_FALSE(sample.isVariable());
        EXPECT_EQ(sample.skipVariable().getType(), sample.getType());
    }
}

TEST(ScriptVariable, ConvertingReadsLookThrough) {
    CountingDispatch object;
    mzComVariantC const number = mzComVariantC::createSymbolRef("42");
    int integer = 0;
    EXPECT_EQ(number.getExt(integer), mzSuccess);
    EXPECT_EQ(integer, 42);
    mzComVariantC held;
    held.set(mzComPtrT<mzIUnknown>(&object));
    mzComVariantC const variable = mzComVariantC::createSymbolRef(held);
    mzComPtrT<mzIUnknown> read;
    EXPECT_EQ(variable.getExt(read), mzSuccess);
    EXPECT_EQ(read.iface(), &object);
    // The plain read gives the variable itself.
    EXPECT_EQ(variable.get(read), mzSuccess);
    EXPECT_NE(read.iface(), &object);
}

TEST(ScriptVariable, AReferenceToAVariableIsTheSameVariable) {
    mzISymbolRefC const first = mzComVariantC::createSymbolRef(1);
    mzISymbolRefC const second = mzComVariantC::createSymbolRef(first);
    EXPECT_EQ(first.symbol().iface(), second.symbol().iface());
}

TEST(ScriptVariable, NeverHoldsAnotherVariableNorItself) {
    mzISymbolRefC const symbol = mzComVariantC::createSymbolRef(1);
    mzComVariantC result;
    EXPECT_EQ(call(symbol, "", mzCallPropertyPut, arguments(symbol), result), mzSuccess);
    mzComVariantC value;
    symbol.get(value);
    EXPECT_EQ(value.getInt(), 1);
    EXPECT_EQ(value.getType(), mzTypeInteger);
}

/// A variable of another engine, which may hold a variable.
class ForeignVariable : public mzScriptSymbolRefI {
  public:
    unsigned queryInterface(mzIIDS const&, mzComPtrC& out) override {
        out.attach(this);
        return mzSuccess;
    }
    unsigned addRef() override { return 1; }
    unsigned release() override { return 1; }
    unsigned invokeByName(mzComStringC const&, unsigned, mzComVariantArrayC const&, mzComVariantC&,
                          mzComPtrT<mzIException>&) override {
        return mzMemberNotFound;
    }
    unsigned get(mzComVariantC& value) override {
        value = held;
        return mzSuccess;
    }
    mzComVariantC asValue() { return mzISymbolRefC(mzComPtrT<mzScriptSymbolRefI>(this)); }

    mzComVariantC held;
};

TEST(ScriptVariable, ChainsOfAnyLengthAreLookedThrough) {
    std::vector<ForeignVariable> chain(velk::test::greatDepth);
    for (std::size_t i = 1; i < chain.size(); ++i) chain[i - 1].held = chain[i].asValue();
    chain.back().held = "7";
    mzComVariantC const first = chain.front().asValue();
    mzISymbolRefC const own = mzComVariantC::createSymbolRef(0);
    ASSERT_TRUE(velk::test::withSmallStack([&] {
        int number = 0;
        EXPECT_EQ(first.getExt(number), mzSuccess);
        EXPECT_EQ(number, 7);
        mzComVariantC value;
        EXPECT_EQ(call(own, "", mzCallPropertyPut, arguments(first), value), mzSuccess);
        EXPECT_EQ(own.get(value), mzSuccess);
        EXPECT_EQ(value.getType(), mzTypeString);
    }));
}

TEST(ScriptVariable, ARingOfVariablesHoldsNothing) {
    ForeignVariable ring[2];
    ring[0].held = ring[1].asValue();
    ring[1].held = ring[0].asValue();
    mzComVariantC const value = ring[0].asValue();
    EXPECT_TRUE(value.isVariable());
    EXPECT_EQ(value.skipVariable().getType(), mzTypeEmpty);
    mzComStringC text("before");
    EXPECT_EQ(value.getExt(text), mzSuccess);
    EXPECT_TRUE(text.isEmpty());
    mzISymbolRefC const own = mzComVariantC::createSymbolRef(ring[0].held.skipVariable());
    ring[1].held = own;
    mzComVariantC result;
    call(own, "", mzCallPropertyPut, arguments(value), result);
    EXPECT_EQ(call(own, "Member", mzCallMethod, {}, result), mzMemberNotFound);
}

TEST(ScriptVariable, OtherCallsGoToTheObjectInside) {
    CountingDispatch object;
    object.onInvoke = [](mzComVariantC& result, auto&) {
        result.set(8);
        return mzSuccess;
    };
    mzComVariantC held;
    held.set(mzComPtrT<mzIUnknown>(&object));
    mzISymbolRefC const symbol = mzComVariantC::createSymbolRef(held);
    mzComVariantC result;
    EXPECT_EQ(call(symbol, "Count", mzCallPropertyGet, {}, result), mzSuccess);
    EXPECT_EQ(result.getInt(), 8);
    EXPECT_EQ(object.lastCall, "Count/2/0");
    mzISymbolRefC const plain = mzComVariantC::createSymbolRef(3);
    EXPECT_EQ(call(plain, "Count", mzCallPropertyGet, {}, result), mzMemberNotFound);
    EXPECT_EQ(call(plain, "", mzCallMethod, {}, result), mzSuccess);
    EXPECT_EQ(result.getInt(), 3);
}

TEST(ScriptVariable, AnUnboundReferenceFails) {
    mzComVariantC value(1);
    EXPECT_EQ(mzISymbolRefC().get(value), mzFailure);
    mzComVariantC const argument = mzISymbolRefC();
    EXPECT_FALSE(argument.isVariable());
}

TEST(ScriptVariable, ThreadsReadWhileOneWrites) {
    mzISymbolRefC const symbol = mzComVariantC::createSymbolRef("start");
    std::thread writer([symbol] {
        mzComVariantC result;
        for (int i = 0; i < 500; ++i) {
            call(symbol, "", mzCallPropertyPut, arguments(mzComStringC::fromInt(i, 10)), result);
        }
    });
    for (int i = 0; i < 500; ++i) {
        mzComVariantC value;
        ASSERT_EQ(symbol.get(value), mzSuccess);
        ASSERT_EQ(value.getType(), mzTypeString);
    }
    writer.join();
    mzComVariantC value;
    symbol.get(value);
    EXPECT_EQ(value.skipVariable().getType(), mzTypeString);
    int last = 0;
    EXPECT_EQ(value.getExt(last), mzSuccess);
    EXPECT_EQ(last, 499);
}

}  // namespace
