#include "host/variant.h"

#include <climits>
#include <cmath>
#include <limits>
#include <utility>

#include <gtest/gtest.h>
#include <QByteArray>

#include "counting_object.h"
#include "host/dispatch_client.h"

namespace {

TEST(Variant, TypesOfTheConstructors) {
    EXPECT_EQ(mzComVariantC().getType(), mzTypeEmpty);
    EXPECT_EQ(mzComVariantC(7).getInt(), 7);
    EXPECT_EQ(mzComVariantC(7).getType(), 1);
    EXPECT_EQ(mzComVariantC(2.5).getType(), 2);
    EXPECT_EQ(mzComVariantC(2.5).getDouble(), 2.5);
    EXPECT_EQ(mzComVariantC("text").getType(), 4);
    EXPECT_EQ(mzComVariantC(mzComStringC()).getType(), 4);
    static_assert(sizeof(mzComVariantC) == 16);
    static_assert(!std::is_constructible_v<mzComVariantC, void*>);
    static_assert(!std::is_constructible_v<mzComVariantC, mzIUnknown*>);
}

TEST(Variant, ABoolIsAnInteger) {
    EXPECT_EQ(mzComVariantC(true).getType(), 1);
    EXPECT_EQ(mzComVariantC(true).getInt(), -1);
    EXPECT_EQ(mzComVariantC(false).getType(), 1);
    EXPECT_EQ(mzComVariantC(false).getInt(), 0);
}

TEST(Variant, SetReplacesWhateverWasThere) {
    CountingDispatch object;
    mzComVariantC value;
    ASSERT_EQ(value.set(mzComPtrT<mzIUnknown>(&object)), mzSuccess);
    EXPECT_EQ(object.references, 1u);
    value.set("text");
    EXPECT_EQ(object.references, 0u);
    value.set(3);
    value.set(OLESTR("wide"));
    EXPECT_EQ(value.getType(), mzTypeString);
    unsigned short const utf16[] = {'u', 0};
    value.set(utf16);
    mzComStringC text;
    EXPECT_EQ(value.get(text), mzSuccess);
    EXPECT_EQ(text, mzComStringC("u"));
    value.set(mzComVariantC(4.5));
    EXPECT_EQ(value.getDouble(), 4.5);
    value.clear();
    EXPECT_EQ(value.getType(), mzTypeEmpty);
}

TEST(Variant, LongsOutsideTheRangeBecomeFloatingPoint) {
    mzComVariantC value;
    value.set(static_cast<long>(INT_MIN));
    EXPECT_EQ(value.getType(), mzTypeInteger);
    EXPECT_EQ(value.getInt(), INT_MIN);
    if constexpr (sizeof(long) > sizeof(int)) {
        value.set(std::numeric_limits<long>::max());
        EXPECT_EQ(value.getType(), mzTypeDouble);
        EXPECT_EQ(value.getDouble(), std::ldexp(1.0, 63));
    }
}

TEST(Variant, CopiesAreIndependentAndMovesLeaveEmpty) {
    CountingDispatch object;
    mzComVariantC holder;
    holder.set(mzComPtrT<mzIUnknown>(&object));
    mzComVariantC const samples[] = {mzComVariantC(), 1, 2.5, "text", holder};
    for (mzComVariantC const& sample : samples) {
        mzComVariantC copy = sample;
        EXPECT_EQ(copy.getType(), sample.getType());
        mzComVariantC const moved = std::move(copy);
        EXPECT_EQ(moved.getType(), sample.getType());
        EXPECT_EQ(copy.getType(), mzTypeEmpty);
        copy = moved;
        mzComVariantC const& same = copy;
        copy = same;
        EXPECT_EQ(copy.getType(), sample.getType());
    }
    EXPECT_EQ(object.references, 2u);
    holder.clear();
    EXPECT_EQ(object.references, 1u);
}

TEST(Variant, TheReleasedObjectFindsTheVariantChanged) {
    CountingDispatch object;
    mzComVariantC value;
    value.set(mzComPtrT<mzIUnknown>(&object));
    object.onRelease = [&] { EXPECT_EQ(value.getInt(), 9); };
    value = mzComVariantC(9);
    EXPECT_EQ(object.references, 0u);
}

TEST(Variant, ReadsObjects) {
    CountingDispatch object;
    mzComVariantC value;
    value.set(mzComPtrT<mzIUnknown>(&object));
    {
        mzComPtrT<mzIUnknown> read;
        EXPECT_EQ(value.get(read), mzSuccess);
        EXPECT_EQ(read.iface(), &object);
        EXPECT_EQ(object.references, 2u);
        EXPECT_EQ(mzComVariantC(1).get(read), mzFailure);
        EXPECT_FALSE(read.isValid());
    }
    EXPECT_TRUE(value.isIDispatch());
    EXPECT_EQ(value.toDispatch().dispatch().iface(), &object);
}

TEST(Variant, AnEmptyReferenceIsAnObjectTypeWithoutObject) {
    mzComVariantC value;
    EXPECT_EQ(value.set(mzComPtrT<mzIUnknown>()), mzSuccess);
    EXPECT_EQ(value.getType(), mzTypeObject);
    mzComPtrT<mzIUnknown> read;
    EXPECT_EQ(value.get(read), mzFailure);
    EXPECT_FALSE(value.isIDispatch());
    EXPECT_FALSE(value.isVariable());
    EXPECT_FALSE(value.toDispatch().isValid());
}

TEST(Variant, PlainObjectsAreNoDispatch) {
    PlainObject plain;
    mzComVariantC value;
    value.set(mzComPtrT<mzIUnknown>(&plain));
    EXPECT_FALSE(value.isIDispatch());
}

TEST(Variant, TakesQtValues) {
    auto const big = Q_INT64_C(1) << 40;
    struct Row {
        QVariant source;
        int type;
        char const* text;
    } const rows[] = {
        {QVariant(), mzTypeEmpty, ""},
        {QVariant(true), mzTypeInteger, "-1"},
        {QVariant(-5), mzTypeInteger, "-5"},
        {QVariant(4000000000u), mzTypeDouble, "4000000000"},
        {QVariant(big), mzTypeDouble, "1099511627776"},
        {QVariant(Q_INT64_C(-3)), mzTypeInteger, "-3"},
        {QVariant(1.5), mzTypeDouble, "1.5"},
        {QVariant(0.25f), mzTypeDouble, "0.25"},
        {QVariant(QStringLiteral("q")), mzTypeString, "q"},
        {QVariant(QByteArray("bytes")), mzTypeString, "bytes"},
        {QVariant(QVariantList{1}), mzTypeEmpty, ""},
    };
    for (Row const& row : rows) {
        mzComVariantC value("before");
        value.set(row.source);
        EXPECT_EQ(value.getType(), row.type) << row.text;
        mzComStringC text;
        EXPECT_EQ(value.getExt(text), mzSuccess);
        EXPECT_EQ(text.toUtf8(), row.text);
    }
}

}  // namespace
