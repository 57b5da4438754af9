#include "host/variant.h"

#include <climits>
#include <cmath>
#include <thread>

#include <gtest/gtest.h>
#include <QByteArray>

#include "counting_object.h"
#include "host/dispatch_client.h"
#include "host/exception.h"
#include "host/symbol_ref.h"
#include "support/small_stack.h"

// Values as owners of what they hold, and script variables. What they convert to
// stands in tests/data/runtime/conversions.tsv.

namespace {

static_assert(sizeof(mzComVariantC) == 16);
static_assert(!std::is_constructible_v<mzComVariantC, void*>);
static_assert(!std::is_constructible_v<mzComVariantC, mzIUnknown*>);

mzComVariantC holding(mzIUnknown* object) {
    mzComVariantC value;
    EXPECT_EQ(value.set(mzComPtrT<mzIUnknown>(object)), mzSuccess);
    return value;
}

std::string textOf(mzComVariantC const& value) {
    mzComStringC text;
    value.getExt(text);
    return std::to_string(value.getType()) + ' ' + text.toUtf8();
}

TEST(Variant, TakesEverySource) {
    unsigned short const utf16[] = {'u', 0};
    mzComVariantC value;
    auto const set = [&](auto const& source) {
        value.set("before");
        value.set(source);
        return textOf(value);
    };
    EXPECT_EQ(set(7), "1 7");
    EXPECT_EQ(set(true), "1 -1");
    EXPECT_EQ(set(2.5), "2 2.5");
    EXPECT_EQ(set("text"), "4 text");
    EXPECT_EQ(set(mzComStringC()), "4 ");
    EXPECT_EQ(set(OLESTR("wide")), "4 wide");
    EXPECT_EQ(set(utf16), "4 u");
    EXPECT_EQ(set(mzComVariantC(4.5)), "2 4.5");
    EXPECT_EQ(set(static_cast<long>(INT_MIN)), "1 -2147483648");
    EXPECT_EQ(set(QVariant()), "0 ");
    EXPECT_EQ(set(QVariant(true)), "1 -1");
    EXPECT_EQ(set(QVariant(-5)), "1 -5");
    EXPECT_EQ(set(QVariant(4000000000u)), "2 4000000000");
    EXPECT_EQ(set(QVariant(Q_INT64_C(1) << 40)), "2 1099511627776");
    EXPECT_EQ(set(QVariant(Q_INT64_C(-3))), "1 -3");
    EXPECT_EQ(set(QVariant(0.25f)), "2 0.25");
    EXPECT_EQ(set(QVariant(QStringLiteral("q"))), "4 q");
    EXPECT_EQ(set(QVariant(QByteArray("bytes"))), "4 bytes");
    EXPECT_EQ(set(QVariant(QVariantList{1})), "0 ");
    if constexpr (sizeof(long) > sizeof(int)) {
        EXPECT_EQ(set(LONG_MAX), "2 9.223372036854776E+18");
        EXPECT_EQ(value.getDouble(), std::ldexp(1.0, 63));
    }
}

TEST(Variant, CopiesAreIndependentAndMovesLeaveEmpty) {
    CountingDispatch object;
    mzComVariantC holder = holding(&object);
    mzComVariantC const samples[] = {mzComVariantC(), 1, 2.5, "text", holder};
    for (mzComVariantC const& sample : samples) {
        mzComVariantC copy = sample;
        EXPECT_EQ(textOf(copy), textOf(sample));
        mzComVariantC const moved = std::move(copy);
        EXPECT_EQ(textOf(moved), textOf(sample));
        EXPECT_EQ(copy.getType(), mzTypeEmpty);
        copy = moved;
        mzComVariantC const& same = copy;
        copy = same;
        EXPECT_EQ(textOf(copy), textOf(sample));
        EXPECT_FALSE(sample.isVariable());
        EXPECT_EQ(textOf(sample.skipVariable()), textOf(sample));
    }
    EXPECT_EQ(object.references, 2u);
    holder.set("text");
    EXPECT_EQ(object.references, 1u);
    holder = samples[4];
    object.onRelease = [&] { EXPECT_EQ(holder.getInt(), 9) << "the object finds it changed"; };
    holder = mzComVariantC(9);
}

TEST(Variant, HoldsObjects) {
    CountingDispatch object, plain(mzIUnknown::interfaceId());
    mzComVariantC const value = holding(&object), none = holding(nullptr);
    mzComPtrT<mzIUnknown> read;
    EXPECT_EQ(value.get(read), mzSuccess);
    EXPECT_EQ(read.iface(), &object);
    EXPECT_EQ(object.references, 2u);
    EXPECT_EQ(mzComVariantC(1).get(read), mzFailure);
    EXPECT_FALSE(read.isValid());
    EXPECT_TRUE(value.isIDispatch());
    EXPECT_EQ(value.toDispatch().dispatch().iface(), &object);
    EXPECT_FALSE(holding(&plain).isIDispatch());
    EXPECT_EQ(none.getType(), mzTypeObject);
    EXPECT_FALSE(none.isIDispatch() || none.isVariable() || none.toDispatch().isValid());
}

TEST(VariantArray, IsAListOfValues) {
    mzComVariantArrayC args;
    args << 1 << 2.5;
    args.append("three");
    mzComVariantArrayC const copy = args;
    args[0] = args[1];
    args[1] = 5;
    args[3] = 7;
    args[-1] = 7;
    EXPECT_EQ(textOf(args.at(0)) + ',' + textOf(args.at(1)) + ',' + textOf(args.at(2)),
              "2 2.5,1 5,4 three");
    EXPECT_EQ(args.size(), 3) << "what is not there cannot be written";
    EXPECT_EQ(copy[3].getType() + copy[-1].getType(), mzTypeEmpty);
    EXPECT_EQ(textOf(copy[0]) + textOf(copy[1]), "1 12 2.5");
    // An element of itself passes through every growth of the storage.
    for (int i = 0; i < 30; ++i) args.append(args.at(2));
    EXPECT_EQ(textOf(args.at(32)), "4 three");
    args.resize(1);
    args.resize(9);
    EXPECT_EQ(args.size(), 9);
    EXPECT_EQ(textOf(args.at(0)) + textOf(args.at(1)), "2 2.50 ");
    args.resize(-3);
    EXPECT_EQ(args.size(), 0);
    args = copy;
    EXPECT_EQ(textOf(args.at(2)), "4 three");
}

unsigned call(mzComVariantC const& target, char const* name, unsigned kind,
              mzComVariantArrayC const& args, mzComVariantC& result) {
    mzComPtrT<mzIException> exception;
    mzComPtrT<mzIUnknown> object;
    target.get(object);
    mzComPtrT<mzIDispatch> const dispatch{mzComPtrC(object.iface())};
    return dispatch->invokeByName(name, kind, args, result, exception);
}

void write(mzComVariantC const& variable, mzComVariantC const& value) {
    mzComVariantArrayC args;
    args << value;
    mzComVariantC result;
    EXPECT_EQ(call(variable, "", mzCallPropertyPut, args, result), mzSuccess);
}

std::string valueOf(mzISymbolRefC const& symbol) {
    mzComVariantC value;
    EXPECT_EQ(symbol.get(value), mzSuccess);
    return textOf(value);
}

TEST(ScriptVariable, IsAnArgumentThatTheCalleeWrites) {
    mzISymbolRefC const symbol = mzComVariantC::createSymbolRef(5);
    mzComVariantC const argument = symbol;
    EXPECT_EQ(argument.getType(), mzTypeObject);
    EXPECT_TRUE(argument.isVariable());
    EXPECT_EQ(argument.skipVariable().getInt(), 5);
    write(argument, "new");
    EXPECT_EQ(valueOf(symbol), "4 new");
    write(argument, symbol);
    EXPECT_EQ(valueOf(symbol), "4 new") << "never itself";
    EXPECT_EQ(mzComVariantC::createSymbolRef(symbol).symbol().iface(), symbol.symbol().iface());
    mzComVariantC value(1);
    EXPECT_EQ(mzISymbolRefC().get(value), mzFailure);
    EXPECT_FALSE(mzComVariantC(mzISymbolRefC()).isVariable());
}

TEST(ScriptVariable, PassesOtherCallsToTheObjectInside) {
    CountingDispatch object;
    object.onInvoke = [](mzComVariantC& result, auto&) {
        result.set(8);
        return mzSuccess;
    };
    mzISymbolRefC const symbol = mzComVariantC::createSymbolRef(holding(&object));
    mzISymbolRefC const plain = mzComVariantC::createSymbolRef(3);
    mzComVariantC result;
    EXPECT_EQ(call(symbol, "Count", mzCallPropertyGet, {}, result), mzSuccess);
    EXPECT_EQ(result.getInt(), 8);
    EXPECT_EQ(object.calls, "Count/2/0 ");
    EXPECT_EQ(call(plain, "Count", mzCallPropertyGet, {}, result), mzMemberNotFound);
    EXPECT_EQ(call(plain, "", mzCallMethod, {}, result), mzSuccess);
    EXPECT_EQ(result.getInt(), 3);
    mzComPtrT<mzIUnknown> read;
    EXPECT_EQ(mzComVariantC(symbol).getExt(read), mzSuccess);
    EXPECT_EQ(read.iface(), &object);
    EXPECT_EQ(mzComVariantC(symbol).get(read), mzSuccess);
    EXPECT_NE(read.iface(), &object) << "the plain read gives the variable";
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

    mzComVariantC held;
};

TEST(ScriptVariable, ChainsAndRingsAreLookedThrough) {
    std::vector<ForeignVariable> chain(velk::test::greatDepth);
    for (std::size_t i = 1; i < chain.size(); ++i) chain[i - 1].held = holding(&chain[i]);
    chain.back().held = "7";
    mzComVariantC const first = holding(&chain.front());
    mzISymbolRefC const own = mzComVariantC::createSymbolRef(0);
    ASSERT_TRUE(velk::test::withSmallStack([&] {
        int number = 0;
        EXPECT_EQ(first.getExt(number), mzSuccess);
        EXPECT_EQ(number, 7);
        write(own, first);
        EXPECT_EQ(valueOf(own), "4 7");
    }));
    chain[1].held = first;
    EXPECT_TRUE(first.isVariable());
    EXPECT_EQ(textOf(first.skipVariable()), "0 ") << "a ring holds nothing";
    chain[1].held = own;
    write(own, first);
    EXPECT_EQ(valueOf(own), "4 7");
}

TEST(ScriptVariable, ThreadsReadWhileOneWrites) {
    mzISymbolRefC const symbol = mzComVariantC::createSymbolRef("start");
    std::jthread writer([symbol] {
        for (int i = 0; i < 500; ++i) write(symbol, mzComStringC::fromInt(i, 10));
    });
    for (int i = 0; i < 500; ++i) ASSERT_EQ(valueOf(symbol).substr(0, 2), "4 ");
    writer.join();
    EXPECT_EQ(valueOf(symbol), "4 499");
}

}  // namespace
