#include "com/dispatch_impl.h"

#include "com/utf.h"
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
    HRESULT idOf(std::basic_string<OLECHAR> name, DISPID& id, LCID locale = libraryLocale) {
        LPOLESTR names[] = {name.data()};
        return object->GetIDsOfNames(IID_NULL, names, 1, locale, &id);
    }
    /// The arguments from the last to the first; null for no record of them.
    HRESULT invoke(DISPID member, WORD flags, std::vector<VARIANT>* arguments) {
        DISPID put = DISPID_PROPERTYPUT;
        bool const puts = flags == DISPATCH_PROPERTYPUT;
        DISPPARAMS parameters{};
        if (arguments != nullptr)
            parameters = {arguments->data(), puts ? &put : nullptr,
                          static_cast<UINT>(arguments->size()), puts ? 1U : 0U};
        return object->Invoke(member, IID_NULL, libraryLocale, flags,
                              arguments != nullptr ? &parameters : nullptr,
                              puts ? nullptr : result.put(), nullptr, nullptr);
    }

    ComPtr<IDispatch> object;
    Variant result;
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

TEST_F(DispatchImplTest, WorksOnceTheLibraryIsRegisteredInAnyLocale) {
    constexpr LCID french = 0x040C;
    DISPID id = 0;
    EXPECT_EQ(idOf(OLESTR("Add"), id), TYPE_E_LIBNOTREGISTERED);
    EXPECT_EQ(invoke(1, DISPATCH_METHOD, nullptr), TYPE_E_LIBNOTREGISTERED);
    registerLibrary();
    EXPECT_EQ(idOf(OLESTR("add"), id, french), S_OK);
    EXPECT_EQ(id, 1);
    EXPECT_EQ(idOf(OLESTR("Missing"), id), DISP_E_UNKNOWNNAME);
}

TEST_F(DispatchImplTest, CallsTheMethodsOfTheInterface) {
    registerLibrary();
    std::vector<VARIANT> arguments(2);
    arguments[0].vt = VT_I4;
    arguments[0].lVal = 40;
    arguments[1].vt = VT_I2;  // is converted
    arguments[1].iVal = 2;
    EXPECT_EQ(invoke(1, DISPATCH_METHOD, &arguments), S_OK);
    EXPECT_EQ(result.get().vt, VT_I4);
    EXPECT_EQ(result.get().lVal, 42);
    arguments.push_back(arguments[0]);
    EXPECT_EQ(invoke(1, DISPATCH_METHOD, &arguments), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(invoke(9, DISPATCH_METHOD, nullptr), DISP_E_MEMBERNOTFOUND);
    EXPECT_TRUE(FAILED(invoke(3, DISPATCH_METHOD, nullptr)));

    Bstr const name = makeBstr(OLESTR("a name"));
    arguments.resize(1);
    arguments[0].vt = VT_BSTR;
    arguments[0].bstrVal = name.get();
    EXPECT_EQ(invoke(2, DISPATCH_PROPERTYPUT, &arguments), S_OK);
    // No record of arguments means no arguments.
    EXPECT_EQ(invoke(2, DISPATCH_PROPERTYGET, nullptr), S_OK);
    EXPECT_EQ(viewBstr(result.get().bstrVal), OLESTR("a name"));
}

TEST_F(DispatchImplTest, RacingCallersGetOneTypeInformation) {
    registerLibrary();
    expectOneForAll<ITypeInfo>(
        [&](ComPtr<ITypeInfo>& place) { object->GetTypeInfo(0, libraryLocale, place.put()); });
}

}  // namespace
}  // namespace velk::com::test
