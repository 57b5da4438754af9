#include "com/owners.h"
#include "support/native_scripts.h"

namespace {

using namespace velk::test;
using velk::com::ComPtr;

class ComAdapter : public NativeScripts {};

TEST_F(ComAdapter, AnswersAsTheTableSays) {
    tellsState_ = false;
    check("bridge/com_adapter.tsv");
}

TEST_F(ComAdapter, FindsActiveObjects) {
    // What a server does to be found.
    CLSID id{};
    ASSERT_EQ(CLSIDFromProgID(OLESTR("VelkTest.Sample"), &id), S_OK);
    ComPtr<IDispatch> running;
    ASSERT_EQ(createByProgId("VelkTest.Sample", IID_IDispatch, running.putVoid()), S_OK);
    DWORD registration = 0;
    ASSERT_EQ(RegisterActiveObject(running.get(), id, 0, &registration), S_OK);
    auto const adapter = objectOf("new qxttools.comadapter");
    auto const found = call(adapter.iface(), "GetObject", mzCallMethod, {"VelkTest.Sample"});
    EXPECT_EQ(RevokeActiveObject(registration, nullptr), S_OK);
    mzComPtrT<mzIUnknown> object;
    ASSERT_EQ(found.value.get(object), mzSuccess) << found.exception;
    EXPECT_EQ(call(object.iface(), "Add", mzCallMethod, {1, 2}).integer(), 3);
    EXPECT_EQ(server_->liveObjects(), 1) << "it is the one that runs";
}

}  // namespace
