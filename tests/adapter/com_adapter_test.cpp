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

/// What "GetObject" gives while an object of that class runs.
Outcome foundWhileRunning(mzComPtrC const& adapter, char const* progId) {
    CLSID id{};
    EXPECT_EQ(CLSIDFromProgID(wide(progId).c_str(), &id), S_OK);
    ComPtr<IUnknown> running;
    EXPECT_EQ(createByProgId(progId, IID_IUnknown, running.putVoid()), S_OK);
    // What a server does to be found.
    DWORD registration = 0;
    EXPECT_EQ(RegisterActiveObject(running.get(), id, 0, &registration), S_OK);
    auto const found = call(adapter.iface(), "GetObject", mzCallMethod, {progId});
    EXPECT_EQ(RevokeActiveObject(registration, nullptr), S_OK);
    return found;
}

TEST_F(ComAdapter, FindsActiveObjects) {
    auto const adapter = objectOf("new qxttools.comadapter");
    auto const found = foundWhileRunning(adapter, "VelkTest.Sample");
    mzComPtrT<mzIUnknown> object;
    ASSERT_EQ(found.value.get(object), mzSuccess) << found.exception;
    EXPECT_EQ(call(object.iface(), "Add", mzCallMethod, {1, 2}).integer(), 3);
    EXPECT_EQ(server_->liveObjects(), 1) << "it is the one that runs";
    EXPECT_EQ(foundWhileRunning(adapter, "VelkTest.NoDispatch").exception,
              "Could not get object 'VelkTest.NoDispatch'");
}

}  // namespace
