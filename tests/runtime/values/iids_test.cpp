#include "host/iids.h"

#include <gtest/gtest.h>

TEST(Iids, CompareByTextAndCase) {
    mzIIDS built("mzIDispatch");
    mzIIDS filled;
    filled.set("mzIDispatch");
    EXPECT_TRUE(built.equal(filled));
    EXPECT_FALSE(built.equal(mzIIDS("mzidispatch")));
    EXPECT_FALSE(built.equal(mzIIDS("mzIDispatch2")));
    EXPECT_STREQ(built.text(), "mzIDispatch");
}

TEST(Iids, NullAndDefaultAreTheEmptyText) {
    EXPECT_TRUE(mzIIDS().equal(mzIIDS("")));
    EXPECT_TRUE(mzIIDS(nullptr).equal(mzIIDS()));
}
