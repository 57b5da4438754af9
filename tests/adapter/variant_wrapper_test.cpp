#include "VelkQXTProxy/variant_wrapper.h"

#include "VelkQXTProxy/dispatch_wrapper.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/cells.h"
#include "support/counting_dispatch.h"
#include "support/host_calls.h"
#include "support/native_values.h"
#include "support/scripted_dispatch.h"

namespace {

using namespace velk::test;
using velk::com::Variant;

constexpr unsigned method = mzCallMethod;
constexpr unsigned get = mzCallPropertyGet;
constexpr unsigned put = mzCallPropertyPut;

/// A wrapper with the calls that tests make of it.
class Wrapper {
  public:
    explicit Wrapper(VARIANT value = {})
        : object_(mzComPtrC(vbsComVariantWrapperC::make(Variant(value)).iface())) {}
    explicit Wrapper(mzComVariantC const& value) : object_(dispatchIn(value)) {}

    HostOutcome call(char const* name, unsigned kind,
                     std::initializer_list<mzComVariantC> arguments = {}) const {
        return callHost(object_.iface(), name, kind, arguments);
    }
    std::string text(char const* name, unsigned kind,
                     std::initializer_list<mzComVariantC> arguments = {}) const {
        return call(name, kind, arguments).text();
    }
    int type() const { return call("vt", get).result.getInt(); }
    mzComVariantC asValue() const { return valueOf(object_); }
    mzIDispatch* object() const { return object_.iface(); }

  private:
    mzComPtrT<mzIDispatch> object_;
};

/// A new array wrapper: the type code of its elements, then their counts.
Wrapper arrayOf(std::initializer_list<mzComVariantC> elementAndCounts) {
    Wrapper const wrapper;
    mzComVariantArrayC arguments;
    arguments << VT_ARRAY;
    for (auto const& argument : elementAndCounts) arguments << argument;
    mzComVariantC result;
    mzComPtrT<mzIException> exception;
    EXPECT_EQ(wrapper.object()->invokeByName("Create", method, arguments, result, exception),
              mzSuccess);
    return wrapper;
}

/// As the column `of` says.
Wrapper wrapperOf(std::string const& cell) {
    Wrapper const wrapper(cell == "5" ? integerValue(5) : VARIANT{});
    auto const arguments = valuesOfCell(cell, {});
    mzComVariantC result;
    mzComPtrT<mzIException> exception;
    if (arguments.size() > 0 && cell != "5")
        wrapper.object()->invokeByName("Create", method, arguments, result, exception);
    return wrapper;
}

TEST(VariantWrapper, Table) {
    Wrapper wrapper;
    NamedValues const names = {{"object", [] { return Wrapper().asValue(); }}};
    expectTable("bridge/variant_wrapper.tsv", [&](DataRow const& row) {
        if (row["of"] != "\"") wrapper = wrapperOf(row["of"]);
        std::string const text = callOfRow(wrapper.object(), row, names);
        auto const type = wrapper.call("vt", get);
        return text + " [" +
               (type.code == mzSuccess ? std::to_string(type.result.getInt()) : "record") + "]";
    });
}

TEST(VariantWrapper, CopyIsAnotherValueWithoutFlags) {
    Wrapper const wrapper(integerValue(5));
    wrapper.call("flags", put, {3});
    Wrapper const copy(wrapper.call("Copy", 0).result);
    EXPECT_EQ(copy.text("flags", get), "ok integer 0");
    copy.call("val", put, {6});
    EXPECT_EQ(wrapper.text("val", get), "ok integer 5");
    EXPECT_EQ(copy.text("val", get), "ok integer 6");
}

TEST(VariantWrapper, ChangesTypeOfAnObjectsValue) {
    Wrapper const wrapper;
    Wrapper const source(integerValue(12));
    EXPECT_EQ(wrapper.text("ChangeType", method, {VT_BSTR, source.asValue()}), "ok empty");
    EXPECT_EQ(wrapper.text("val", get), "ok text 12");
    EXPECT_EQ(wrapper.text("ChangeType", method, {VT_DISPATCH, source.asValue()}), "ok empty");
    EXPECT_EQ(wrapper.text("val", get), "ok text 12") << "what cannot be converted changes nothing";
}

/// An object that has one more interface, on another pointer than its own.
class TwoFaced : public ScriptedDispatch {
  public:
    static constexpr IID otherId = {
        0x7e0b5a10, 0x3c64, 0x4d2f, {0x9b, 0x18, 0x52, 0xd6, 0xa1, 0xc4, 0x0e, 0xf1}};

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) noexcept override {
        if (!IsEqualGUID(id, otherId)) return ScriptedDispatch::QueryInterface(id, out);
        *out = &face;
        face.AddRef();
        return S_OK;
    }

    ScriptedDispatch face;
};

TEST(VariantWrapper, ElementsAreTheInterfaceThatTheArrayNames) {
    TwoFaced fitting;
    ScriptedDispatch other;
    for (VARTYPE const type : {VT_UNKNOWN, VT_DISPATCH}) {
        SAFEARRAYBOUND bound{1, 0};
        IID id = TwoFaced::otherId;
        SAFEARRAY* const array = SafeArrayCreateEx(type, 1, &bound, &id);
        ASSERT_NE(array, nullptr);
        Wrapper const wrapper(
            makeValue(VT_ARRAY | type, [array](VARIANT& value) { value.parray = array; }));
        auto const valueWith = [](IDispatch& object) {
            return valueOf(mzComPtrT<mzIDispatch>(new vbsComDispatchWrapperC(&object)));
        };
        EXPECT_EQ(wrapper.text("", put, {0, valueWith(other)}),
                  "Invoke DSP: unknown exception :0x80004002");
        EXPECT_EQ(wrapper.text("", put, {0, valueWith(fitting)}), "ok empty");
        EXPECT_EQ(*static_cast<IUnknown**>(array->pvData), &fitting.face);
    }
    EXPECT_EQ(fitting.references() + fitting.face.references() + other.references(), 0U);
}

TEST(VariantWrapper, ArrayWhoseDataIsGoneHasNoElements) {
    for (VARTYPE const type : {VT_I4, VT_BSTR, VT_VARIANT, VT_DISPATCH, VT_DECIMAL}) {
        SAFEARRAYBOUND bound{3, 0};
        SAFEARRAY* const array = SafeArrayCreate(type, 1, &bound);
        ASSERT_EQ(SafeArrayDestroyData(array), S_OK);
        Wrapper const wrapper(
            makeValue(VT_ARRAY | type, [array](VARIANT& value) { value.parray = array; }));
        EXPECT_EQ(wrapper.text("", method, {1}), "failed") << type;
        EXPECT_EQ(wrapper.text("", put, {1, 5}), "failed") << type;
        EXPECT_EQ(wrapper.text("ubound", method), "ok integer 2") << type;
    }
}

TEST(VariantWrapper, ElementsWithoutHostForm) {
    for (VARTYPE const type : {VT_CY, VT_DECIMAL, VT_ERROR}) {
        Wrapper const array = arrayOf({type, 2});
        VARIANT number{};
        number.vt = VT_I4;
        number.lVal = 3;
        if (type == VT_ERROR) number.vt = VT_ERROR;
        EXPECT_EQ(array.text("", put, {1, Wrapper(number).asValue()}), "ok empty") << type;
        Wrapper const element(array.call("", method, {1}).result);
        EXPECT_EQ(element.type(), type);
        if (type != VT_ERROR) {
            element.call("ChangeType", method, {VT_I4});
            EXPECT_EQ(element.text("val", get), "ok integer 3") << type;
        }
    }
}

TEST(VariantWrapper, ObjectsThatThrowWhenTheyAreConvertedFailTheCall) {
    ScriptedDispatch throwing([](NativeCallArguments&) -> HRESULT { throw 5; });
    mzComPtrT<mzIDispatch> const object(new vbsComDispatchWrapperC(&throwing));
    Wrapper const wrapper;
    EXPECT_EQ(wrapper.text("ChangeType", method, {VT_I4, valueOf(object)}), "ok empty");
    EXPECT_EQ(wrapper.type(), VT_EMPTY);
    EXPECT_EQ(arrayOf({VT_I4, 1}).call("", put, {0, valueOf(object)}).code, mzFailure);
}

TEST(VariantWrapper, ElementsKeepTheIdentityOfObjects) {
    RecordingHolder const host;
    for (VARTYPE const type : {VT_DISPATCH, VT_VARIANT}) {
        Wrapper const array = arrayOf({type, 1});
        EXPECT_EQ(array.text("", put, {0, host.asValue()}), "ok empty");
        EXPECT_EQ(objectIn(array.call("", method, {0}).result),
                  static_cast<mzIUnknown*>(host.dispatch()));
    }
    EXPECT_EQ(host->references(), 1U);
}

/// An object that puts another value into a wrapper while it is looked at.
class Meddler : public CountingDispatch {
  public:
    explicit Meddler(Wrapper const& target) : target_(target) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) noexcept override {
        if (!busy_) {
            busy_ = true;
            target_.call("val", put, {1});
            busy_ = false;
        }
        return CountingDispatch::QueryInterface(id, out);
    }

  private:
    Wrapper const& target_;
    bool busy_ = false;
};

TEST(VariantWrapper, ValueReplacedWhileItIsRead) {
    Wrapper const wrapper;
    Meddler meddler(wrapper);
    {
        SAFEARRAYBOUND bound{1, 0};
        VARIANT value{};
        value.vt = VT_ARRAY | VT_UNKNOWN;
        value.parray = SafeArrayCreate(VT_UNKNOWN, 1, &bound);
        LONG index = 0;
        ASSERT_EQ(SafeArrayPutElement(value.parray, &index, &meddler), S_OK);
        mzComPtrT<mzIComVariantWrapper> const holder{mzComPtrC(wrapper.object())};
        Variant const owner(value);
        holder->setVariant(owner.get());
    }
    EXPECT_TRUE(dispatchIn(wrapper.call("", method, {0}).result).isValid());
    EXPECT_EQ(wrapper.text("val", get), "ok integer 1");
    EXPECT_EQ(meddler.references(), 1U);
}

}  // namespace
