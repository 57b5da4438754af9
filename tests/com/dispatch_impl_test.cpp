#include "com/dispatch_impl.h"

#include <thread>

#include <gtest/gtest.h>

#include "com/utf.h"
#include "support/start_gate.h"
#include "test_module.h"

namespace velk::com::test {

// The library of com_tests.idl.
inline constexpr GUID testedLibrary = {
    0x3f0c6b53, 0x8d21, 0x4a77, {0x9b, 0x6e, 0x10, 0x55, 0xc2, 0x7e, 0x41, 0x0d}};
inline constexpr IID testedInterface = {
    0xd42e7f13, 0x50c6, 0x4b39, {0x8e, 0x74, 0x2f, 0xa8, 0x06, 0xbd, 0x93, 0x5a}};
constexpr LCID libraryLocale = 0x409;

struct ITested : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Add(LONG left, LONG right, LONG* sum) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Name(BSTR* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Name(BSTR value) = 0;
    virtual HRESULT STDMETHODCALLTYPE Fail() = 0;
};

class Tested : public CComObjectRootEx<CComSingleThreadModel>,
               public IDispatchImpl<ITested, &testedInterface, &testedLibrary, 1, 0> {
  public:
    VELK_COM_MAP(Tested, VELK_COM_INTERFACE(ITested, testedInterface),
                 VELK_COM_INTERFACE(IDispatch, IID_IDispatch))

    HRESULT STDMETHODCALLTYPE Add(LONG left, LONG right, LONG* sum) override {
        *sum = left + right;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Name(BSTR* value) override {
        *value = makeBstr(name).release();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE put_Name(BSTR value) override {
        name = viewBstr(value);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Fail() override { return E_ACCESSDENIED; }

    std::basic_string<OLECHAR> name;
};

namespace {

class DispatchImplTest : public ModuleTest {
  protected:
    void SetUp() override {
        ModuleTest::SetUp();
        ASSERT_EQ(createWithoutOuter<Tested>(nullptr, IID_IDispatch, object.putVoid()), S_OK);
    }
    void TearDown() override {
        object.reset();
        UnRegisterTypeLib(testedLibrary, 1, 0, libraryLocale, SYS_WIN64);
        ModuleTest::TearDown();
    }

    // The library stands beside the test program.
    static void registerLibrary() {
        auto path = modulePath(nullptr);
        path.resize(path.find_last_of(OLESTR("/\\")) + 1);
        path += OLESTR("com_tests.tlb");
        ComPtr<ITypeLib> library;
        ASSERT_EQ(LoadTypeLibEx(path.c_str(), REGKIND_NONE, library.put()), S_OK) << toUtf8(path);
        ASSERT_EQ(RegisterTypeLib(library.get(), path.data(), nullptr), S_OK);
    }
    HRESULT idOf(std::basic_string<OLECHAR> name, DISPID& id) {
        LPOLESTR names[] = {name.data()};
        return object->GetIDsOfNames(IID_NULL, names, 1, libraryLocale, &id);
    }

    ComPtr<IDispatch> object;
};

TEST_F(DispatchImplTest, ChecksWhatItIsGiven) {
    UINT count = 0;
    EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(object->GetTypeInfoCount(nullptr), E_POINTER);
    ITypeInfo* type = reinterpret_cast<ITypeInfo*>(&count);
    EXPECT_EQ(object->GetTypeInfo(1, libraryLocale, &type), DISP_E_BADINDEX);
    EXPECT_EQ(type, nullptr);
    EXPECT_EQ(object->GetTypeInfo(0, libraryLocale, nullptr), E_POINTER);
    DISPID id = 0;
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, nullptr, 1, libraryLocale, &id), E_INVALIDARG);
}

TEST_F(DispatchImplTest, WorksOnceTheLibraryIsRegistered) {
    DISPID id = 0;
    EXPECT_EQ(idOf(OLESTR("Add"), id), TYPE_E_LIBNOTREGISTERED);
    DISPPARAMS none{};
    EXPECT_EQ(object->Invoke(1, IID_NULL, libraryLocale, DISPATCH_METHOD, &none, nullptr, nullptr,
                             nullptr),
              TYPE_E_LIBNOTREGISTERED);
    registerLibrary();
    EXPECT_EQ(idOf(OLESTR("add"), id), S_OK);
    EXPECT_EQ(id, 1);
    EXPECT_EQ(idOf(OLESTR("Missing"), id), DISP_E_UNKNOWNNAME);

    ComPtr<ITypeInfo> first;
    ComPtr<ITypeInfo> second;
    ASSERT_EQ(object->GetTypeInfo(0, libraryLocale, first.put()), S_OK);
    ASSERT_EQ(object->GetTypeInfo(0, libraryLocale, second.put()), S_OK);
    EXPECT_EQ(first, second) << "the type information is kept";
}

TEST_F(DispatchImplTest, WorksInTheLocaleOfAnyClient) {
    registerLibrary();
    constexpr LCID french = 0x040C;
    OLECHAR name[] = OLESTR("Add");
    LPOLESTR names[] = {name};
    DISPID id = 0;
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, names, 1, french, &id), S_OK);
}

TEST_F(DispatchImplTest, CallsTheMethodsOfTheInterface) {
    registerLibrary();
    VARIANT arguments[2]{};
    arguments[0].vt = VT_I4;
    arguments[0].lVal = 40;
    arguments[1].vt = VT_I2;  // is converted
    arguments[1].iVal = 2;
    DISPPARAMS two{arguments, nullptr, 2, 0};
    Variant result;
    EXPECT_EQ(object->Invoke(1, IID_NULL, libraryLocale, DISPATCH_METHOD, &two, result.address(),
                             nullptr, nullptr),
              S_OK);
    EXPECT_EQ(result.get().vt, VT_I4);
    EXPECT_EQ(result.get().lVal, 42);

    Bstr const name = makeBstr(OLESTR("a name"));
    VARIANT value{};
    value.vt = VT_BSTR;
    value.bstrVal = name.get();
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS one{&value, &put, 1, 1};
    EXPECT_EQ(object->Invoke(2, IID_NULL, libraryLocale, DISPATCH_PROPERTYPUT, &one, nullptr,
                             nullptr, nullptr),
              S_OK);
    // No record of arguments means no arguments.
    EXPECT_EQ(object->Invoke(2, IID_NULL, libraryLocale, DISPATCH_PROPERTYGET, nullptr,
                             result.put(), nullptr, nullptr),
              S_OK);
    EXPECT_EQ(viewBstr(result.get().bstrVal), OLESTR("a name"));

    VARIANT many[3]{};
    for (auto& argument : many) argument.vt = VT_I4;
    DISPPARAMS three{many, nullptr, 3, 0};
    EXPECT_EQ(object->Invoke(1, IID_NULL, libraryLocale, DISPATCH_METHOD, &three, nullptr, nullptr,
                             nullptr),
              DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(object->Invoke(9, IID_NULL, libraryLocale, DISPATCH_METHOD, nullptr, nullptr, nullptr,
                             nullptr),
              DISP_E_MEMBERNOTFOUND);
    EXPECT_TRUE(FAILED(object->Invoke(3, IID_NULL, libraryLocale, DISPATCH_METHOD, nullptr, nullptr,
                                      nullptr, nullptr)));
}

TEST_F(DispatchImplTest, RacingCallersGetOneTypeInformation) {
    registerLibrary();
    constexpr int callers = 4;
    std::vector<ComPtr<ITypeInfo>> found(callers);
    velk::test::StartGate start(callers);
    std::vector<std::thread> threads;
    for (auto& place : found) {
        threads.emplace_back([&] {
            start.arriveAndWait();
            object->GetTypeInfo(0, libraryLocale, place.put());
        });
    }
    for (auto& thread : threads) thread.join();
    ASSERT_TRUE(found[0]);
    ComPtr<ITypeInfo> kept;
    ASSERT_EQ(object->GetTypeInfo(0, libraryLocale, kept.put()), S_OK);
    for (auto const& place : found) EXPECT_EQ(place, kept);
}

}  // namespace
}  // namespace velk::com::test
