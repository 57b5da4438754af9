#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <thread>

#include "native_to_host/facade.h"
#include "native_to_host/host_announcement.h"
#include "support/native_values.h"
#include "support/recording_object.h"

namespace {

using namespace velk::test;
using velk::com::ComPtr;

/// Each test begins with an empty name table and a bound facade.
class Facade : public testing::Test {
  protected:
    void SetUp() override {
        mzRunGlobalCleanup();
        ASSERT_EQ(velk::adapter::createBoundFacade(host.dispatch(), facade), S_OK);
    }

    CallOutcome call(DISPID member, WORD flags, DISPPARAMS* parameters = nullptr) {
        host->forgetCalls();
        return invoke(*facade.get(), member, flags, parameters);
    }

    RecordingHolder host;
    ComPtr<Ivelkdspwrap> facade;
};

TEST_F(Facade, NumbersNamesForAllFacadesUntilTheCleanUp) {
    ComPtr<Ivelkdspwrap> other;
    ASSERT_EQ(velk::adapter::createBoundFacade(host.dispatch(), other), S_OK);
    DISPID const member = idOf(*facade.get(), OLESTR("Member"));
    EXPECT_EQ(member, 100);
    EXPECT_EQ(idOf(*other.get(), OLESTR("")), 101);
    LPOLESTR noName = nullptr;
    DISPID id = 0;
    EXPECT_EQ(other->GetIDsOfNames(IID_NULL, &noName, 1, 0, &id), S_OK);
    EXPECT_EQ(id, 101) << "no name and the empty name are the same";
    EXPECT_EQ(idOf(*other.get(), OLESTR("Member")), member);
    // The member called last is that of its exact name.
    ASSERT_EQ(call(member, DISPATCH_METHOD).code, S_OK);
    EXPECT_EQ(idOf(*facade.get(), OLESTR("Member")), member);
    for (OLECHAR const* unlike :
         {OLESTR(""), OLESTR("Membe"), OLESTR("Members"), OLESTR("member")}) {
        EXPECT_NE(idOf(*facade.get(), unlike), member);
    }
    mzRunGlobalCleanup();
    EXPECT_EQ(call(member, DISPATCH_METHOD).code, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(idOf(*facade.get(), OLESTR("First")), member);
    EXPECT_NE(idOf(*facade.get(), OLESTR("Member")), member) << "what the former table knew";
    EXPECT_EQ(call(member, DISPATCH_METHOD).code, S_OK);
    EXPECT_EQ(host->lastCall().name, "First");
}

TEST_F(Facade, HostObjectMayCallBack) {
    DISPID const outer = idOf(*facade.get(), OLESTR("Outer"));
    host->respond = [&](RecordedCall const& recorded) {
        if (recorded.name != "Outer") return Answer{mzSuccess, mzComVariantC(1)};
        // Another thread must not wait for a lock that this call holds.
        DISPID inner = DISPID_UNKNOWN;
        std::thread([&] { inner = idOf(*facade.get(), OLESTR("Inner")); }).join();
        return Answer{
            mzSuccess,
            mzComVariantC(static_cast<int>(
                invoke(*facade.get(), inner, DISPATCH_METHOD, nullptr).result.get().lVal + 1))};
    };
    EXPECT_EQ(call(outer, DISPATCH_METHOD).result.get().lVal, 2);
}

TEST_F(Facade, NumbersFromClientsBindNothing) {
    RecordingHolder const other;
    auto const address = reinterpret_cast<LONGLONG>(other.dispatch());
    for (LONGLONG const number : {address, LONGLONG{0}, LONGLONG{-1}, LONGLONG{0x1234567890}}) {
        EXPECT_EQ(facade->bindToDispatch(number), S_OK);
        EXPECT_EQ(call(DISPID_VALUE, DISPATCH_METHOD).code, S_OK);
        EXPECT_EQ(host->calls().size(), 1U) << number;
    }
    EXPECT_EQ(other->references(), 1U);
}

/// A host object that tells when it is gone, and acts while it is called.
class Leaving : public mzComDispatchBaseC {
  public:
    Leaving(bool& gone, std::function<void()>& act) : gone_(gone), act_(act) {}
    ~Leaving() override { gone_ = true; }
    unsigned invokeByName(mzComStringC const&, unsigned, mzComVariantArrayC const&,
                          mzComVariantC& result, mzComPtrT<mzIException>&) override {
        act_();
        EXPECT_FALSE(gone_);
        result = mzComVariantC(7);
        return mzSuccess;
    }

  private:
    bool& gone_;
    std::function<void()>& act_;
};

TEST_F(Facade, CallKeepsTheHostObjectAndTheFacadeUntilItsEnd) {
    for (bool const clientReleases : {true, false}) {
        bool gone = false;
        std::function<void()> act;
        ASSERT_EQ(velk::adapter::createBoundFacade(new Leaving(gone, act), facade), S_OK);
        IDispatch* const called = facade.get();
        DISPID const member = idOf(*called, OLESTR("Member"));
        act = [&] {
            if (clientReleases) {
                facade.reset();
            } else {
                velk::adapter::HostAnnouncement const announced(host.dispatch());
                facade->bindToDispatch(velk::adapter::HostAnnouncement::numberOf(host.dispatch()));
            }
        };
        auto const outcome = invoke(*called, member, DISPATCH_METHOD, nullptr);
        EXPECT_EQ(outcome.code, S_OK);
        EXPECT_EQ(outcome.result.get().lVal, 7);
        EXPECT_TRUE(gone);
    }
}

TEST_F(Facade, UnboundFacadeFailsEveryCall) {
    ComPtr<Ivelkdspwrap> unbound;
    ASSERT_EQ(velk::adapter::createFacade(unbound.put()), S_OK);
    for (DISPID const member : {idOf(*unbound.get(), OLESTR("Member")), DISPID{DISPID_VALUE}})
        EXPECT_EQ(invoke(*unbound.get(), member, DISPATCH_METHOD, nullptr).code, E_UNEXPECTED);
    EXPECT_EQ(velk::adapter::createFacade(nullptr), E_POINTER);
}

TEST_F(Facade, AnswersItsInterfacesWithOnePointerAndHoldsItsObject) {
    EXPECT_EQ(host->references(), 2U);
    for (IID const& id : {IID_IUnknown, IID_IDispatch, IID_Ivelkdspwrap}) {
        void* found = nullptr;
        ASSERT_EQ(facade->QueryInterface(id, &found), S_OK);
        EXPECT_EQ(found, facade.get());
        EXPECT_EQ(facade->Release(), 1U);
    }
    void* found = &found;
    EXPECT_EQ(facade->QueryInterface(IID_IClassFactory, &found), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(facade->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(host->references(), 2U);
    facade.reset();
    EXPECT_EQ(host->references(), 1U);
}

// The description itself is in the registry: the tests of the whole ask for it.
TEST_F(Facade, ContradictoryCallsAreRefused) {
    OLECHAR method[] = OLESTR("Open");
    LPOLESTR names[] = {method, method};
    DISPID ids[] = {-7, -7};
    for (UINT const count : {0U, 2U, std::numeric_limits<UINT>::max()})
        EXPECT_EQ(facade->GetIDsOfNames(IID_NULL, names, count, 0, ids), DISP_E_UNKNOWNNAME);
    EXPECT_TRUE(ids[0] == -7 && ids[1] == -7);
    EXPECT_EQ(facade->GetIDsOfNames(IID_NULL, nullptr, 1, 0, ids), E_POINTER);
    EXPECT_EQ(facade->GetIDsOfNames(IID_NULL, names, 1, 0, nullptr), E_POINTER);
    DISPID const member = idOf(*facade.get(), OLESTR("Member"));
    EXPECT_EQ(member, 100) << "no refused name has a number";

    VARIANT one = integerValue(1);
    struct {
        DISPPARAMS parameters;
        HRESULT expected;
    } rows[] = {{{nullptr, nullptr, 1, 0}, E_INVALIDARG},
                {{&one, nullptr, 0x8000, 0}, DISP_E_BADPARAMCOUNT},
                {{&one, nullptr, 0xffffffff, 0xffffffff}, DISP_E_BADPARAMCOUNT},
                {{nullptr, nullptr, 0, 3}, S_OK}};
    for (auto& row : rows) {
        EXPECT_EQ(call(member, DISPATCH_METHOD, &row.parameters).code, row.expected);
        EXPECT_EQ(host->calls().size(), row.expected == S_OK);
        EXPECT_TRUE(host->lastCall().arguments.empty());
    }
    EXPECT_EQ(call(member, DISPATCH_METHOD, nullptr).code, S_OK);

    UINT count = 0;
    EXPECT_EQ(facade->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(facade->GetTypeInfoCount(nullptr), E_POINTER);
    ITypeInfo* type = nullptr;
    for (UINT const index : {1U, 2U, 0xffffffffU})
        EXPECT_EQ(facade->GetTypeInfo(index, 0, &type), static_cast<HRESULT>(0x8002000B));
    EXPECT_EQ(facade->GetTypeInfo(0, 0, nullptr), E_POINTER);
}

}  // namespace
