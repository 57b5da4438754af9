// Null pointers in places where Wine ends the process.

#include <gtest/gtest.h>

#include "recorder.h"
#include "shapes.h"

namespace velk::test {
namespace {

TEST(NullPointers, AreRefusedByAStandardDispatch) {
    auto const library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("IRecorder"));
    Recorder recorder;
    IUnknown* made = nullptr;
    ASSERT_EQ(CreateStdDispatch(nullptr, static_cast<IRecorder*>(&recorder), type.get(), &made),
              S_OK);
    Owned<IUnknown> const object(made);
    void* found = nullptr;
    EXPECT_EQ(object->QueryInterface(IID_IDispatch, nullptr), E_POINTER);
    ASSERT_EQ(object->QueryInterface(IID_IDispatch, &found), S_OK);
    Owned<IDispatch> const dispatch(static_cast<IDispatch*>(found));
    DISPID member = 0;
    EXPECT_EQ(dispatch->GetTypeInfoCount(nullptr), E_INVALIDARG);
    EXPECT_EQ(dispatch->GetTypeInfo(0, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(dispatch->GetIDsOfNames(GUID_NULL, nullptr, 1, 0, &member), E_INVALIDARG);
    EXPECT_EQ(
        dispatch->Invoke(1, GUID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
        E_INVALIDARG);
}

}  // namespace
}  // namespace velk::test
