#include "host/variant_array.h"

#include <utility>

#include <gtest/gtest.h>

namespace {

TEST(VariantArray, KeepsTheOrderOfItsElements) {
    mzComVariantArrayC args;
    args << 1 << 2.5;
    args.append("three");
    ASSERT_EQ(args.size(), 3);
    mzComVariantArrayC const& read = args;
    EXPECT_EQ(read[0].getInt(), 1);
    EXPECT_EQ(read[1].getDouble(), 2.5);
    EXPECT_EQ(read[2].getType(), mzTypeString);
}

TEST(VariantArray, CopiesAreIndependent) {
    mzComVariantArrayC first;
    for (int i = 0; i < 20; ++i) first << i;
    mzComVariantArrayC second = first;
    second[19] = "changed";
    EXPECT_EQ(std::as_const(first)[19].getInt(), 19);
    EXPECT_EQ(std::as_const(second)[19].getType(), mzTypeString);
    first = second;
    EXPECT_EQ(std::as_const(first)[19].getType(), mzTypeString);
}

TEST(VariantArray, ElementAssignmentCopiesTheValue) {
    mzComVariantArrayC args;
    args << 1 << 2;
    args[0] = args[1];
    EXPECT_EQ(std::as_const(args)[0].getInt(), 2);
    args[1] = 5;
    EXPECT_EQ(std::as_const(args)[0].getInt(), 2);
}

TEST(VariantArray, IndicesThatAreNotThereDoNothing) {
    mzComVariantArrayC args;
    args << 1;
    args[1] = 7;
    args[-1] = 7;
    EXPECT_EQ(args.size(), 1);
    EXPECT_EQ(std::as_const(args)[0].getInt(), 1);
    EXPECT_EQ(std::as_const(args)[1].getType(), mzTypeEmpty);
    EXPECT_EQ(std::as_const(args)[-1].getType(), mzTypeEmpty);
}

TEST(VariantArray, ResizeFillsWithEmpty) {
    mzComVariantArrayC args;
    args << "gone"
         << "too";
    args.resize(1);
    args.resize(9);
    EXPECT_EQ(args.size(), 9);
    EXPECT_EQ(std::as_const(args)[0].getType(), mzTypeString);
    EXPECT_EQ(std::as_const(args)[1].getType(), mzTypeEmpty);
    args.resize(-3);
    EXPECT_EQ(args.size(), 0);
}

TEST(VariantArray, AnElementOfItselfCanBeAppended) {
    mzComVariantArrayC args;
    args << "self";
    // Passes through every growth of the storage.
    for (int i = 0; i < 30; ++i) args.append(args.at(0));
    mzComStringC text;
    EXPECT_EQ(args.at(30).get(text), mzSuccess);
    EXPECT_EQ(text, mzComStringC("self"));
}

}  // namespace
