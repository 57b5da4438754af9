// IDispatch over objects that only have a vtable, by the type that describes it.

#include <gtest/gtest.h>

#include "recorder.h"
#include "shapes.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

template <typename Interface>
Owned<Interface> queried(IUnknown* object, IID const& id) {
    void* found = nullptr;
    EXPECT_EQ(object->QueryInterface(id, &found), S_OK);
    return Owned<Interface>(static_cast<Interface*>(found));
}

Owned<IUnknown> dispatchOver(Recorder& recorder, ITypeInfo* type, IUnknown* outer = nullptr) {
    IUnknown* object = nullptr;
    EXPECT_EQ(CreateStdDispatch(outer, static_cast<IRecorder*>(&recorder), type, &object), S_OK);
    return Owned<IUnknown>(object);
}

VARIANT integer(LONG value) {
    VARIANT result{};
    result.vt = VT_I4;
    result.lVal = value;
    return result;
}

class StdDispatch : public testing::Test {
  protected:
    Owned<ITypeLib> library = loadShapes();
    Owned<ITypeInfo> type = typeNamed(library.get(), OLESTR("IRecorder"));
    Recorder recorder;
};

TEST_F(StdDispatch, CallsTheVtableByName) {
    auto const other = otherView(type.get());
    for (auto* const view : {type.get(), other.get()}) {
        auto const object = dispatchOver(recorder, view);
        auto const dispatch = queried<IDispatch>(object.get(), IID_IDispatch);
        Wide name = OLESTR("Add");
        LPOLESTR names[] = {name.data()};
        DISPID member = DISPID_UNKNOWN;
        ASSERT_EQ(dispatch->GetIDsOfNames(GUID_NULL, names, 1, 0, &member), S_OK);
        EXPECT_EQ(member, 1);
        VARIANT arguments[] = {integer(12), integer(30)};
        DISPPARAMS parameters{arguments, nullptr, 2, 0};
        VARIANT result;
        VariantInit(&result);
        ASSERT_EQ(dispatch->Invoke(member, GUID_NULL, 0, DISPATCH_METHOD, &parameters, &result,
                                   nullptr, nullptr),
                  S_OK);
        EXPECT_EQ(result.vt, VT_I4);
        EXPECT_EQ(result.lVal, 42);
    }
}

// Whether they are inherited or spelled out, and whatever the library says of them.
TEST_F(StdDispatch, LeavesCountingToItsOwner) {
    auto const alone = loadLibrary(VELK_ALONE_TLB);
    auto const spelledOut = typeNamed(alone.get(), OLESTR("IAlone"));
    auto const base = typeNamed(library.get(), OLESTR("IBase"));
    for (auto* const described : {type.get(), base.get(), spelledOut.get()}) {
        auto const object = dispatchOver(recorder, described);
        auto const dispatch = queried<IDispatch>(object.get(), IID_IDispatch);
        for (OLECHAR const* const member : {OLESTR("AddRef"), OLESTR("release")}) {
            Wide name = member;
            LPOLESTR names[] = {name.data()};
            DISPID id = DISPID_UNKNOWN;
            ASSERT_EQ(dispatch->GetIDsOfNames(GUID_NULL, names, 1, 0, &id), S_OK);
            DISPPARAMS none{};
            expectDifference(System::wine, "counting can be called by name", [&] {
                EXPECT_EQ(dispatch->Invoke(id, GUID_NULL, 0, DISPATCH_METHOD, &none, nullptr,
                                           nullptr, nullptr),
                          DISP_E_MEMBERNOTFOUND);
            });
        }
        EXPECT_EQ(recorder.references, 1U);
    }
}

TEST_F(StdDispatch, ReadsAndWritesProperties) {
    auto const object = dispatchOver(recorder, type.get());
    auto const dispatch = queried<IDispatch>(object.get(), IID_IDispatch);
    VARIANT text{};
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocString(OLESTR("a title"));
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{&text, &put, 1, 1};
    EXPECT_EQ(dispatch->Invoke(2, GUID_NULL, 0, DISPATCH_PROPERTYPUT, &parameters, nullptr, nullptr,
                               nullptr),
              S_OK);
    VariantClear(&text);
    EXPECT_EQ(recorder.title, OLESTR("a title"));
    DISPPARAMS none{};
    ASSERT_EQ(
        dispatch->Invoke(2, GUID_NULL, 0, DISPATCH_PROPERTYGET, &none, &text, nullptr, nullptr),
        S_OK);
    EXPECT_EQ(Wide(text.bstrVal), OLESTR("a title"));
    VariantClear(&text);
}

TEST_F(StdDispatch, ReportsWhatTheMemberAnswers) {
    auto const object = dispatchOver(recorder, type.get());
    auto const dispatch = queried<IDispatch>(object.get(), IID_IDispatch);
    VARIANT code{};
    code.vt = VT_ERROR;
    code.scode = E_ACCESSDENIED;
    DISPPARAMS parameters{&code, nullptr, 1, 0};
    EXCEPINFO exception{};
    EXPECT_EQ(dispatch->Invoke(8, GUID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, &exception,
                               nullptr),
              DISP_E_EXCEPTION);
    EXPECT_EQ(exception.scode, E_ACCESSDENIED);
    DISPPARAMS none{};
    EXPECT_EQ(
        dispatch->Invoke(4711, GUID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
        DISP_E_MEMBERNOTFOUND);
}

TEST_F(StdDispatch, HandsOutItsType) {
    auto const object = dispatchOver(recorder, type.get());
    auto const dispatch = queried<IDispatch>(object.get(), IID_IDispatch);
    UINT count = 0;
    EXPECT_EQ(dispatch->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    ITypeInfo* given = nullptr;
    ASSERT_EQ(dispatch->GetTypeInfo(0, 0, &given), S_OK);
    EXPECT_EQ(nameOf(given), OLESTR("IRecorder"));
    given->Release();
    given = type.get();
    EXPECT_EQ(dispatch->GetTypeInfo(1, 0, &given), DISP_E_BADINDEX);
    EXPECT_EQ(given, nullptr);
}

TEST_F(StdDispatch, KeepsItsTypeButNotTheInstance) {
    auto const object = dispatchOver(recorder, type.get());
    type.reset();
    library.reset();
    auto const dispatch = queried<IDispatch>(object.get(), IID_IDispatch);
    EXPECT_EQ(recorder.references, 1u);
    Wide name = OLESTR("title");
    LPOLESTR names[] = {name.data()};
    DISPID member = DISPID_UNKNOWN;
    EXPECT_EQ(dispatch->GetIDsOfNames(GUID_NULL, names, 1, 0, &member), S_OK);
    EXPECT_EQ(member, 2);
}

TEST_F(StdDispatch, HasOneIdentityAlone) {
    auto const object = dispatchOver(recorder, type.get());
    auto const dispatch = queried<IDispatch>(object.get(), IID_IDispatch);
    auto const unknown = queried<IUnknown>(dispatch.get(), IID_IUnknown);
    EXPECT_EQ(queried<IUnknown>(unknown.get(), IID_IUnknown), unknown);
    void* other = object.get();
    EXPECT_EQ(object->QueryInterface(IID_ITypeInfo, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
}

// The recorder stands outside: its count and its interfaces are those that a
// client of the inner IDispatch sees.
TEST_F(StdDispatch, DelegatesToItsOuterObject) {
    auto const inner = dispatchOver(recorder, type.get(), &recorder);
    EXPECT_EQ(recorder.references, 1u);
    auto const dispatch = queried<IDispatch>(inner.get(), IID_IDispatch);
    EXPECT_NE(static_cast<IUnknown*>(dispatch.get()), static_cast<IUnknown*>(&recorder));
    expectDifference(System::wine, "the outer object is not asked", [&] {
        EXPECT_EQ(recorder.references, 2u);
        auto const identity = queried<IUnknown>(dispatch.get(), IID_IUnknown);
        EXPECT_EQ(identity.get(), static_cast<IUnknown*>(&recorder));
        EXPECT_EQ(recorder.references, 3u);
    });
    // The inner identity answers for itself.
    ULONG const before = recorder.references;
    EXPECT_EQ(queried<IUnknown>(inner.get(), IID_IUnknown), inner);
    EXPECT_EQ(recorder.references, before);
}

TEST_F(StdDispatch, RefusesWhatIsMissing) {
    IUnknown* object = nullptr;
    EXPECT_EQ(CreateStdDispatch(nullptr, nullptr, type.get(), &object), E_INVALIDARG);
    EXPECT_EQ(CreateStdDispatch(nullptr, &recorder, nullptr, &object), E_INVALIDARG);
    EXPECT_EQ(CreateStdDispatch(nullptr, &recorder, type.get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(object, nullptr);
}

TEST_F(StdDispatch, RefusesOtherInterfacesThanTheNullOne) {
    auto const object = dispatchOver(recorder, type.get());
    auto const dispatch = queried<IDispatch>(object.get(), IID_IDispatch);
    Wide name = OLESTR("Add");
    LPOLESTR names[] = {name.data()};
    DISPID member = 0;
    DISPPARAMS none{};
    EXPECT_EQ(dispatch->GetIDsOfNames(IID_IDispatch, names, 1, 0, &member), E_INVALIDARG);
    expectDifference(System::wine, "another interface is an invalid argument", [&] {
        EXPECT_EQ(dispatch->Invoke(1, IID_IDispatch, 0, DISPATCH_METHOD, &none, nullptr, nullptr,
                                   nullptr),
                  DISP_E_UNKNOWNINTERFACE);
    });
}

}  // namespace
}  // namespace velk::test
