#include "host/com_ptr.h"

#include <utility>

#include <gtest/gtest.h>

#include "counting_object.h"

namespace {

TEST(ComPtr, EveryPointerHoldsOneReference) {
    CountingDispatch object;
    {
        mzComPtrC const first(&object);
        EXPECT_EQ(object.references, 1u);
        mzComPtrC second = first;
        EXPECT_EQ(object.references, 2u);
        mzComPtrC const third(std::move(second));
        EXPECT_EQ(object.references, 2u);
        EXPECT_FALSE(second.isValid());
        EXPECT_EQ(third.iface(), &object);
    }
    EXPECT_EQ(object.references, 0u);
}

TEST(ComPtr, AttachTakesAReferenceAndGivesTheOldOneUp) {
    CountingDispatch first;
    CountingDispatch second;
    mzComPtrC pointer(&first);
    pointer.attach(&second);
    EXPECT_EQ(first.references, 0u);
    EXPECT_EQ(second.references, 1u);
    pointer.attach(&second);
    EXPECT_EQ(second.references, 1u);
    EXPECT_EQ(pointer.detach(), 0u);
    EXPECT_FALSE(pointer.isValid());
    EXPECT_EQ(pointer.detach(), 0u);
}

TEST(ComPtr, DetachReturnsTheCountThatIsLeft) {
    CountingDispatch object;
    mzComPtrT<mzIDispatch> const other(&object);
    mzComPtrT<mzIDispatch> pointer(&object);
    EXPECT_EQ(pointer.detach(), 1u);
}

TEST(ComPtr, TypedPointerAsksTheObject) {
    CountingDispatch dispatch;
    PlainObject plain;
    mzComPtrT<mzIDispatch> pointer;
    pointer = mzComPtrC(&dispatch);
    EXPECT_EQ(pointer.iface(), &dispatch);
    EXPECT_EQ(dispatch.references, 1u);
    pointer = mzComPtrC(&plain);
    EXPECT_FALSE(pointer.isValid());
    EXPECT_EQ(dispatch.references, 0u);
    EXPECT_EQ(plain.references, 0u);
    pointer = mzComPtrC();
    EXPECT_FALSE(pointer.isValid());
}

TEST(ComPtr, AssignmentToItselfKeepsTheObject) {
    CountingDispatch object;
    mzComPtrT<mzIDispatch> pointer(&object);
    mzComPtrT<mzIDispatch> const& same = pointer;
    pointer = same;
    pointer = pointer.iface();
    EXPECT_EQ(object.references, 1u);
}

TEST(ComPtr, TheReleasedObjectSeesTheNewValue) {
    CountingDispatch old;
    CountingDispatch fresh;
    mzComPtrT<mzIDispatch> pointer(&old);
    old.onRelease = [&] { EXPECT_EQ(pointer.iface(), &fresh); };
    pointer = &fresh;
}

}  // namespace
