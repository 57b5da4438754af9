#include "VelkQXTProxy/variant_wrapper.h"

#include "VelkQXTProxy/dispatch_wrapper.h"

#include <gtest/gtest.h>

#include <vector>

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

/// One call of a wrapper that holds the integer 5 with the flags 0.
struct MemberRow {
    char const* name;
    unsigned kind;
    std::vector<mzComVariantC> arguments;
    char const* expected;
    int typeAfter;
};

TEST(VariantWrapper, MembersOfAPlainValue) {
    mzComVariantC const object = Wrapper().asValue();
    MemberRow const rows[] = {
        {"", method, {}, "ok integer 5", VT_I4},
        {"", get, {}, "code 4", VT_I4},
        {"", method, {0}, "code 4", VT_I4},
        {"val", get, {}, "ok integer 5", VT_I4},
        {"VAL", get, {}, "ok integer 5", VT_I4},
        {"val", put, {"text"}, "ok empty", VT_BSTR},
        {"val", put, {mzComVariantC()}, "ok empty", VT_EMPTY},
        {"vt", get, {}, "ok integer 3", VT_I4},
        {"vt", get, {1, 2}, "ok integer 3", VT_I4},
        {"vt", put, {8}, "ok empty", VT_BSTR},
        {"vt", put, {"no number"}, "failed", VT_I4},
        {"vt", put, {-1}, "failed", VT_I4},
        {"vt", put, {65536}, "failed", VT_I4},
        {"vt", put, {65535}, "ok empty", 65535},
        {"flags", get, {}, "ok integer 0", VT_I4},
        {"flags", put, {"no number"}, "ok empty", VT_I4},
        {"flags", put, {-1}, "ok empty", VT_I4},
        {"ChangeType", method, {8}, "ok empty", VT_BSTR},
        {"changetype", get, {5}, "ok empty", VT_R8},
        {"ChangeType", method, {9}, "ok empty", VT_I4},
        {"ChangeType", method, {object}, "Invoke DSP: Invalid parameter at position: 0", VT_I4},
        {"ChangeType", method, {99999}, "Invoke DSP: Invalid parameter at position: 0", VT_I4},
        {"ChangeType", method, {8, 1}, "Invoke DSP: Invalid parameter at position: 1", VT_I4},
        {"ChangeType",
         method,
         {8, 1, 2},
         "Invoke DSP: Invalid parameters count, expected 2 got 3",
         VT_I4},
        {"ChangeType",
         method,
         {9, object, 2},
         "Invoke DSP: Invalid parameter at position: 1",
         VT_I4},
        {"ChangeType",
         method,
         {9, "{", object},
         "Invoke DSP: Invalid parameter at position: 2",
         VT_I4},
        {"ChangeType",
         method,
         {9, "no id", "no path"},
         "Invoke DSP: IID at pos 1 is invalid: 0x80070057",
         VT_I4},
        {"ChangeType",
         method,
         {9, 1, 2, 3},
         "Invoke DSP: Invalid parameters count, expected 2 got 4",
         VT_I4},
        {"Create", method, {object}, "Invoke DSP: Invalid parameter at position: 0", VT_I4},
        {"Create", method, {-3}, "Invoke DSP: Invalid parameter at position: 0", VT_I4},
        {"Create", method, {11}, "ok empty", VT_BOOL},
        {"Create", method, {0x2003}, "ok empty", 0x2003},
        {"Create", method, {0x2000}, "failed", 0x2000},
        {"Create", method, {0x2000, object}, "failed", 0x2000},
        {"Create", method, {0x2000, 3, -1}, "failed", 0x2000},
        {"Create", method, {0x2000, 3, object}, "failed", 0x2000},
        {"Create", method, {0x2000, 99, 2}, "failed", 0x2000 | 99},
        {"Create", method, {0x2000, 0, 5}, "ok empty", 0x2000},
        {"Create", method, {36}, "code 4", VT_RECORD},
        {"Create", method, {36, 1, 2, 3}, "code 4", VT_RECORD},
        {"Create",
         method,
         {36, 1, 2},
         "Invoke DSP: Failed to cast argument at position 1 to a dispatch",
         VT_RECORD},
        {"Create",
         method,
         {36, object, 2},
         "Invoke DSP: Failed to cast argument at position 1 to a dispatch wrapper => not a native "
         "COM object",
         VT_RECORD},
        {"lbound", method, {}, "code 4", VT_I4},
        {"Copy", method, {1}, "code 4", VT_I4},
        {"Create", method, {}, "code 4", VT_I4},
        {"nothing", method, {}, "code 4", VT_I4},
    };
    for (auto const& row : rows) {
        Wrapper const wrapper(integerValue(5));
        mzComVariantArrayC arguments;
        for (auto const& argument : row.arguments) arguments << argument;
        HostOutcome outcome;
        outcome.code = wrapper.object()->invokeByName(row.name, row.kind, arguments, outcome.result,
                                                      outcome.exception);
        std::string const title =
            std::string(row.name) + " " + std::to_string(row.kind) + ": " + row.expected;
        EXPECT_EQ(outcome.text(), row.expected) << title;
        if (row.typeAfter != VT_RECORD) {
            EXPECT_EQ(wrapper.type(), row.typeAfter) << title;
        }
    }
}

TEST(VariantWrapper, NewOneIsEmpty) {
    Wrapper const wrapper;
    EXPECT_EQ(wrapper.text("", method), "ok empty");
    EXPECT_EQ(wrapper.text("val", get), "ok empty");
    EXPECT_EQ(wrapper.type(), VT_EMPTY);
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

TEST(VariantWrapper, RecordWithoutContentHasNoMembers) {
    Wrapper const wrapper;
    wrapper.call("Create", method, {VT_RECORD});
    for (char const* member : {"vt", "flags", "val", "lbound", "", "x"}) {
        EXPECT_EQ(wrapper.text(member, get), "Invoke DSP: The underlying variant is not valid");
    }
    EXPECT_EQ(wrapper.text("Create", method, {VT_I4}), "ok empty");
    EXPECT_EQ(wrapper.type(), VT_I4);
}

TEST(VariantWrapper, Bounds) {
    Wrapper const array = arrayOf({VT_I4, 2, 4});
    struct {
        char const* name;
        std::vector<mzComVariantC> arguments;
        char const* expected;
    } const rows[] = {
        {"lbound", {}, "ok integer 0"},
        {"ubound", {}, "ok integer 1"},
        {"ubound", {1}, "ok integer 3"},
        {"UBound", {1}, "ok integer 3"},
        {"ubound", {1, 2}, "ok integer 1"},
        {"lbound", {1, 2}, "code 4"},
        {"ubound", {"x"}, "failed"},
        {"ubound", {2}, "Invoke DSP: Invalid parameter at position: 0"},
        {"ubound", {-1}, "Invoke DSP: Invalid parameter at position: 0"},
        {"lbound", {2147483647}, "Invoke DSP: Invalid parameter at position: 0"},
    };
    for (auto const& row : rows) {
        mzComVariantArrayC arguments;
        for (auto const& argument : row.arguments) arguments << argument;
        HostOutcome outcome;
        outcome.code = array.object()->invokeByName(row.name, method, arguments, outcome.result,
                                                    outcome.exception);
        EXPECT_EQ(outcome.text(), row.expected) << row.name << " " << row.arguments.size();
    }
    EXPECT_EQ(arrayOf({VT_I4}).text("ubound", method), "ok integer -1");
    Wrapper const none;
    none.call("vt", put, {0x2003});
    EXPECT_EQ(none.text("ubound", method), "Invoke DSP: The underlying variant is not valid");
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

TEST(VariantWrapper, Elements) {
    Wrapper const array = arrayOf({VT_I4, 2, 3, 4});
    EXPECT_EQ(array.text("", put, {1, 2, 3, "12"}), "ok empty");
    EXPECT_EQ(array.text("", method, {1, 2, 3}), "ok integer 12");
    EXPECT_EQ(array.text("", method, {1, 2, 2}), "ok integer 0");
    struct {
        unsigned kind;
        std::vector<mzComVariantC> arguments;
        char const* expected;
    } const rows[] = {
        {method, {1, 2}, "Invoke DSP: Invalid parameter count"},
        {method, {1, 2, 3, 0}, "failed"},
        {method, {1, 2, 4}, "failed"},
        {method, {-1, 2, 3}, "failed"},
        {method, {2147483647, 2147483647, 2147483647}, "failed"},
        {method, {1, "x", 3}, "failed"},
        {put, {7}, "Invoke DSP: Invalid parameter count"},
        {put, {1, 2, 7}, "Invoke DSP: Invalid parameter count"},
        {put, {1, 2, 3, 0, 7}, "failed"},
        {put, {1, 2, 4, 7}, "failed"},
        {put, {1, "x", 3, 7}, "failed"},
        {put, {1, 2, 3, "no number"}, "Invoke DSP: unknown exception :0x80020005"},
    };
    for (auto const& row : rows) {
        mzComVariantArrayC arguments;
        for (auto const& argument : row.arguments) arguments << argument;
        HostOutcome outcome;
        outcome.code = array.object()->invokeByName("", row.kind, arguments, outcome.result,
                                                    outcome.exception);
        EXPECT_EQ(outcome.text(), row.expected) << row.kind << " " << row.arguments.size();
    }
    EXPECT_EQ(array.text("", method, {1, 2, 3}), "ok integer 12");
}

TEST(VariantWrapper, ElementsOfEveryType) {
    struct {
        VARTYPE type;
        mzComVariantC value;
        char const* expected;
    } const rows[] = {
        {VT_I1, -5, "ok integer -5"},        {VT_UI1, 200, "ok integer 200"},
        {VT_I2, -300, "ok integer -300"},    {VT_UI2, 60000, "ok integer 60000"},
        {VT_UI4, 70000, "ok integer 70000"}, {VT_I8, -5, "ok integer -5"},
        {VT_UI8, 5, "ok integer 5"},         {VT_INT, 7, "ok integer 7"},
        {VT_UINT, 7, "ok integer 7"},        {VT_R4, 0.5, "ok number 0.500000"},
        {VT_R8, 2.5, "ok number 2.500000"},  {VT_BOOL, true, "ok integer -1"},
        {VT_BSTR, "text", "ok text text"},   {VT_BSTR, 12, "ok text 12"},
        {VT_VARIANT, "12", "ok text 12"},    {VT_VARIANT, 2.5, "ok number 2.500000"},
    };
    for (auto const& row : rows) {
        Wrapper const array = arrayOf({row.type, 2});
        EXPECT_EQ(array.text("", put, {1, row.value}), "ok empty") << row.type;
        EXPECT_EQ(array.text("", method, {1}), row.expected) << row.type;
    }
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
