#include <ocidl.h>

#include "servers/automation/other_classes.h"
#include "servers/automation/support/server_test.h"

namespace {

using namespace velk::test;
using velk::com::ComPtr;

using Classes = ServerTest;

TEST_F(Classes, AreCreatedByProgId) {
    struct Case {
        char const* progId;
        IID id;
        HRESULT code;
    };
    Case const cases[] = {
        {"VelkTest.Sample", IID_IDispatch, S_OK},
        {"VelkTest.Sample", server::sampleInterface, S_OK},
        {"VelkTest.Sample", server::sampleExtraInterface, S_OK},
        {"VelkTest.Sample", IID_IProvideClassInfo, S_OK},
        {"VelkTest.Faulty", IID_IDispatch, S_OK},
        {"VelkTest.Faulty", IID_IProvideClassInfo, E_NOINTERFACE},
        {"VelkTest.NoDispatch", IID_IUnknown, S_OK},
        {"VelkTest.NoDispatch", IID_IDispatch, E_NOINTERFACE},
        {"VelkTest.NoInstance", IID_IUnknown, server::noInstanceCode},
    };
    for (auto const& entry : cases) {
        ComPtr<IUnknown> object;
        EXPECT_EQ(createByProgId(entry.progId, entry.id, object.putVoid()), entry.code)
            << entry.progId;
        EXPECT_EQ(server_->liveObjects(), SUCCEEDED(entry.code) ? 1 : 0) << entry.progId;
    }
    ComPtr<server::INoDispatch> own;
    ASSERT_EQ(createByProgId("VelkTest.NoDispatch", server::noDispatchInterface, own.putVoid()),
              S_OK);
    EXPECT_EQ(own->answer(), 42);
}

TEST_F(Classes, TheSampleKnowsItsClass) {
    auto const info = ComPtr<IDispatch>(&create("VelkTest.Sample"))
                          .query<IProvideClassInfo>(IID_IProvideClassInfo);
    ASSERT_TRUE(info);
    ComPtr<ITypeInfo> type;
    ASSERT_EQ(info->GetClassInfo(type.put()), S_OK);
    velk::com::TypeAttributes attributes(type.get());
    ASSERT_EQ(type->GetTypeAttr(attributes.put()), S_OK);
    EXPECT_EQ(attributes->guid, server::sampleClass);
    EXPECT_EQ(attributes->typekind, TKIND_COCLASS);
}

TEST_F(Classes, TheSecondInterfaceHasMembersOfItsOwn) {
    auto& sample = create("VelkTest.Sample");
    auto const extra = ComPtr<IDispatch>(&sample).query<IDispatch>(server::sampleExtraInterface);
    ASSERT_TRUE(extra);
    EXPECT_EQ(callByName(*extra, "Twice", {number(21)}).text(), "VT_I4 42");
    EXPECT_EQ(callByName(sample, "Twice", {number(21)}).code, DISP_E_UNKNOWNNAME);
    EXPECT_EQ(getByName(*extra, "ExtraName").text(), "VT_BSTR \"extra \"");
}

}  // namespace
