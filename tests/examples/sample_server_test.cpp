// The sample server as its clients use it: a collection that raises events.
#include <gtest/gtest.h>
#include <ocidl.h>

#include "com/owners.h"
#include "com/utf.h"

namespace velk::test {
namespace {

constexpr IID sampleEvents = {
    0x5C1A7D20, 0x8E4B, 0x4F60, {0xA2, 0xD3, 0x1B, 0x7C, 0x90, 0xE6, 0xF4, 0x05}};

/// Keeps what it is told; forbids what it is told to.
struct Sink : IDispatch {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override {
        bool const known = id == IID_IUnknown || id == IID_IDispatch || id == sampleEvents;
        *out = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* call, VARIANT*,
                                     EXCEPINFO*, UINT*) override {
        heard += std::to_string(member) + ":" +
                 com::toUtf8(com::viewBstr(call->rgvarg[2].bstrVal)) + "=" +
                 std::to_string(call->rgvarg[1].lVal) + " ";
        if (forbids) *call->rgvarg[0].pboolVal = VARIANT_TRUE;
        return S_OK;
    }

    int references = 0;
    bool forbids = false;
    std::string heard;
};

class SampleServer : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        module_ = com::Module(LoadLibraryW(com::fromUtf8Leniently(VELK_SAMPLE_SERVER).c_str()));
        ASSERT_TRUE(module_.get());
        ASSERT_EQ(call("DllRegisterServer"), S_OK);
        CLSID id{};
        ASSERT_EQ(CLSIDFromProgID(OLESTR("VelkSample.Sample"), &id), S_OK);
        ASSERT_EQ(
            CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, sample_.putVoid()),
            S_OK);
    }
    void TearDown() override {
        sample_.reset();
        EXPECT_EQ(call("DllUnregisterServer"), S_OK);
        module_.reset();
        CoFreeUnusedLibraries();
        CoUninitialize();
    }

    HRESULT call(char const* name) {
        auto* const function = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(
            reinterpret_cast<void (*)()>(GetProcAddress(module_.get(), name)));
        return function ? function() : E_FAIL;
    }

    /// Calls the member `id` with `arguments`, last one first.
    com::Variant invoke(DISPID id, WORD kind, std::vector<VARIANT> arguments = {}) {
        DISPID put = DISPID_PROPERTYPUT;
        bool const isPut = kind == DISPATCH_PROPERTYPUT;
        DISPPARAMS parameters{arguments.data(), isPut ? &put : nullptr,
                              static_cast<UINT>(arguments.size()), isPut ? 1U : 0U};
        com::Variant result;
        EXPECT_EQ(sample_->Invoke(id, GUID_NULL, 0x409, kind, &parameters, result.put(), nullptr,
                                  nullptr),
                  S_OK);
        return result;
    }
    void put(OLECHAR const* key, LONG value) {
        auto const text = com::makeBstr(key);
        std::vector<VARIANT> arguments(2);
        arguments[1].vt = VT_BSTR;
        arguments[1].bstrVal = text.get();
        arguments[0].vt = VT_I4;
        arguments[0].lVal = value;
        invoke(DISPID_VALUE, DISPATCH_PROPERTYPUT, arguments);
    }
    LONG count() { return invoke(1, DISPATCH_PROPERTYGET).get().lVal; }

    com::Module module_;
    com::ComPtr<IDispatch> sample_;
};

TEST_F(SampleServer, EnumeratesItsKeys) {
    for (auto const* key : {OLESTR("b"), OLESTR("a"), OLESTR("c")}) put(key, 1);
    auto const list = invoke(DISPID_NEWENUM, DISPATCH_PROPERTYGET);
    com::ComPtr<IUnknown> const unknown(list.get().punkVal);
    auto const keys = unknown.query<IEnumVARIANT>(IID_IEnumVARIANT);
    ASSERT_TRUE(keys);
    std::string seen;
    com::Variant key;
    while (keys->Next(1, key.put(), nullptr) == S_OK)
        seen += com::toUtf8(com::viewBstr(key.get().bstrVal)) + " ";
    EXPECT_EQ(seen, "a b c ");
    EXPECT_EQ(keys->Reset(), S_OK);
    EXPECT_EQ(keys->Skip(2), S_OK);
    com::ComPtr<IEnumVARIANT> rest;
    ASSERT_EQ(keys->Clone(rest.put()), S_OK);
    VARIANT values[3] = {};
    ULONG fetched = 9;
    EXPECT_EQ(rest->Next(3, values, &fetched), S_FALSE);
    EXPECT_EQ(fetched, 1u);
    for (auto& value : values) VariantClear(&value);
    EXPECT_EQ(keys->Skip(2), S_FALSE);
}

TEST_F(SampleServer, TellsItsSinksAndLetsThemForbid) {
    auto source = sample_.query<IConnectionPointContainer>(IID_IConnectionPointContainer);
    ASSERT_TRUE(source);
    com::ComPtr<IConnectionPoint> point;
    EXPECT_LT(source->FindConnectionPoint(IID_IUnknown, point.put()), 0);
    ASSERT_EQ(source->FindConnectionPoint(sampleEvents, point.put()), S_OK);
    Sink sink;
    DWORD cookie = 0;
    ASSERT_EQ(point->Advise(&sink, &cookie), S_OK);
    put(OLESTR("a"), 1);
    sink.forbids = true;
    put(OLESTR("b"), 2);
    EXPECT_EQ(point->Unadvise(cookie), S_OK);
    EXPECT_LT(point->Unadvise(cookie), 0);
    put(OLESTR("c"), 3);
    EXPECT_EQ(sink.heard, "1:a=1 1:b=2 ");
    EXPECT_EQ(sink.references, 0);
    EXPECT_EQ(count(), 2);
    // The point outlives its object, and says so.
    sample_.reset();
    source.reset();
    com::ComPtr<IConnectionPointContainer> owner;
    EXPECT_EQ(point->GetConnectionPointContainer(owner.put()), E_UNEXPECTED);
}

}  // namespace
}  // namespace velk::test
