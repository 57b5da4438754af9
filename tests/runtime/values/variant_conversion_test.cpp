#include <climits>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "counting_object.h"
#include "host/variant.h"

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Number {
    mzComVariantC value;
    /// Whether it reads as a floating point number, and as which.
    bool isNumber;
    double number;
    /// Whether it reads as an integer, and as which.
    bool isInt;
    int integer;
};

TEST(VariantConversion, Numbers) {
    Number const rows[] = {
        {mzComVariantC(), true, 0, true, 0},
        {7, true, 7, true, 7},
        {true, true, -1, true, -1},
        {2.4, true, 2.4, true, 2},
        // Halves go to the even neighbour.
        {0.5, true, 0.5, true, 0},
        {1.5, true, 1.5, true, 2},
        {2.5, true, 2.5, true, 2},
        {-0.5, true, -0.5, true, 0},
        {-1.5, true, -1.5, true, -2},
        {2147483647.4, true, 2147483647.4, true, INT_MAX},
        {2147483647.5, true, 2147483647.5, false, 0},
        {-2147483648.5, true, -2147483648.5, true, INT_MIN},
        {-2147483649.0, true, -2147483649.0, false, 0},
        {1e300, true, 1e300, false, 0},
        {infinity, true, infinity, false, 0},
        {"12", true, 12, true, 12},
        {" -3.5e1 ", true, -35, true, -35},
        {"3000000000", true, 3e9, false, 0},
        {"", false, 0, false, 0},
        {"12abc", false, 0, false, 0},
        {"1,5", false, 0, false, 0},
        {"nan", false, 0, false, 0},
        {"inf", false, 0, false, 0},
        {"1e999", false, 0, false, 0},
        {"0x10", false, 0, false, 0},
    };
    for (Number const& row : rows) {
        mzComStringC text;
        row.value.getExt(text);
        double number = 99;
        EXPECT_EQ(row.value.getExt(number) == mzSuccess, row.isNumber) << text.toUtf8();
        EXPECT_EQ(number, row.isNumber ? row.number : 99) << text.toUtf8();
        int integer = 99;
        EXPECT_EQ(row.value.getExt(integer) == mzSuccess, row.isInt) << text.toUtf8();
        EXPECT_EQ(integer, row.isInt ? row.integer : 99) << text.toUtf8();
    }
}

TEST(VariantConversion, NotANumberIsNoInteger) {
    int integer = 5;
    EXPECT_EQ(mzComVariantC(std::nan("")).getExt(integer), mzFailure);
    EXPECT_EQ(integer, 5);
    EXPECT_EQ(mzComVariantC(std::nan("")).getInt(), 0);
}

TEST(VariantConversion, Truth) {
    struct Row {
        mzComVariantC value;
        unsigned code;
        bool truth;
    } const rows[] = {
        {mzComVariantC(), mzSuccess, false},
        {0, mzSuccess, false},
        {1, mzSuccess, true},
        {-1, mzSuccess, true},
        {0.0, mzSuccess, false},
        {0.1, mzSuccess, true},
        {"True", mzSuccess, true},
        {" false ", mzSuccess, false},
        {"0", mzSuccess, false},
        {"2", mzSuccess, true},
        {"yes", mzFailure, false},
        {"", mzFailure, false},
    };
    for (Row const& row : rows) {
        bool truth = !row.truth;
        mzComStringC text;
        row.value.getExt(text);
        EXPECT_EQ(row.value.getExt(truth), row.code) << text.toUtf8();
        // What cannot be read leaves the target as it was.
        EXPECT_EQ(truth, row.code == mzSuccess ? row.truth : !row.truth) << text.toUtf8();
    }
}

TEST(VariantConversion, TextOfNumbersReadsBack) {
    struct Row {
        mzComVariantC value;
        char const* text;
    } const rows[] = {
        {mzComVariantC(), ""},
        {-12, "-12"},
        {true, "-1"},
        {0.1, "0.1"},
        {-0.0, "0"},
        {1e6, "1000000"},
        {123456789012345.0, "123456789012345"},
        {1e15, "1E+15"},
        {0.00001, "0.00001"},
        {1.5e-7, "1.5E-07"},
        {1.0 / 3.0, "0.3333333333333333"},
        {-infinity, "-inf"},
        {std::nan(""), "nan"},
    };
    for (Row const& row : rows) {
        mzComStringC text;
        EXPECT_EQ(row.value.getExt(text), mzSuccess);
        EXPECT_EQ(text.toUtf8(), row.text);
        double back = 0;
        if (row.value.getType() == mzTypeDouble && std::isfinite(row.value.getDouble())) {
            EXPECT_EQ(mzComVariantC(text).getExt(back), mzSuccess);
            EXPECT_EQ(back, row.value.getDouble()) << row.text;
        }
    }
}

TEST(VariantConversion, ExtremeDoublesHaveText) {
    for (double const value :
         {std::numeric_limits<double>::max(), 5e-324, -2.2250738585072014e-308}) {
        mzComStringC text;
        ASSERT_EQ(mzComVariantC(value).getExt(text), mzSuccess);
        double back = 0;
        EXPECT_EQ(mzComVariantC(text).getExt(back), mzSuccess) << text.toUtf8();
        EXPECT_EQ(back, value);
    }
}

TEST(VariantConversion, PlainReadsOfOtherTypes) {
    EXPECT_EQ(mzComVariantC(2.6).getInt(), 3);
    EXPECT_EQ(mzComVariantC(1e300).getInt(), 0);
    EXPECT_EQ(mzComVariantC(5).getDouble(), 5.0);
    EXPECT_EQ(mzComVariantC("5").getInt(), 0);
    EXPECT_EQ(mzComVariantC("5").getDouble(), 0.0);
    EXPECT_EQ(mzComVariantC().getInt(), 0);
    mzComStringC text;
    EXPECT_EQ(mzComVariantC(5).get(text), mzSuccess);
    EXPECT_EQ(text, mzComStringC("5"));
}

TEST(VariantConversion, ObjectsReadAsNothingElse) {
    CountingDispatch object;
    mzComVariantC value;
    value.set(mzComPtrT<mzIUnknown>(&object));
    bool truth = true;
    int integer = 1;
    double number = 1;
    mzComStringC text("kept");
    EXPECT_EQ(value.getExt(truth), mzFailure);
    EXPECT_EQ(value.getExt(integer), mzFailure);
    EXPECT_EQ(value.getExt(number), mzFailure);
    EXPECT_EQ(value.getExt(text), mzFailure);
    EXPECT_EQ(value.get(text), mzFailure);
    EXPECT_EQ(text, mzComStringC("kept"));
    EXPECT_EQ(value.getInt(), 0);
}

}  // namespace
