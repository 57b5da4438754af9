#include "VelkQXTProxy/dispatch_wrapper.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "VelkQXTProxy/exception_info.h"
#include "VelkQXTProxy/variant_wrapper.h"
#include "conversions.h"
#include "host/module_singleton.h"
#include "support/data_table.h"
#include "support/host_calls.h"
#include "support/native_values.h"
#include "support/scripted_dispatch.h"
#include "support/throwing_object.h"

namespace {

using namespace velk::test;
using velk::com::Variant;

class DispatchWrapper : public testing::Test {
  protected:
    // The object of this thread would count as a leak.
    ~DispatchWrapper() override { velk::adapter::setLastException({}); }
};

mzComPtrT<mzIDispatch> wrap(ScriptedDispatch& native) {
    return mzComPtrT<mzIDispatch>(new vbsComDispatchWrapperC(&native));
}

HostOutcome callMember(ScriptedDispatch& native,
                       std::initializer_list<mzComVariantC> arguments = {},
                       unsigned kind = mzCallMethod, char const* name = "Member") {
    return callHost(wrap(native).iface(), name, kind, arguments);
}

mzComVariantC variable(mzComVariantC const& value) {
    return mzComVariantC::createSymbolRef(value);
}

mzComVariantC wrapped(VARIANT value) {
    mzComVariantC result;
    result.set(vbsComVariantWrapperC::make(Variant(value)));
    return result;
}

void setFlags(mzComVariantC const& wrapper, int flags) {
    ASSERT_EQ(callHost(dispatchIn(wrapper).iface(), "flags", mzCallPropertyPut, {flags}).code,
              mzSuccess);
}

void fillException(EXCEPINFO& info, SCODE code) {
    info.wCode = 7;
    info.bstrSource = velk::com::makeBstr(OLESTR("Source")).release();
    info.bstrDescription = velk::com::makeBstr(OLESTR("Description")).release();
    info.dwHelpContext = 0xffffffff;
    info.scode = code;
}

unsigned long numberOf(std::string const& cell) {
    return cell.empty() ? 0 : std::stoul(cell, nullptr, 0);
}

TEST_F(DispatchWrapper, EachFailureHasItsText) {
    expectTable("bridge/dispatch_failures.tsv", [](DataRow const& row) {
        ScriptedDispatch native([&row](NativeCallArguments& call) {
            if (!row["filled"].empty())
                fillException(*call.exception, static_cast<SCODE>(numberOf(row["filled"])));
            *call.wrongArgument = static_cast<UINT>(numberOf(row["argument"]));
            call.result->vt = VT_I4;
            return static_cast<HRESULT>(numberOf(row["status"]));
        });
        auto const outcome = callMember(native);
        EXPECT_EQ(outcome.code, mzFailure);
        EXPECT_EQ(outcome.result.getType(), mzTypeEmpty);
        EXPECT_EQ(native.references(), 0U);
        return outcome.text();
    });
}

TEST_F(DispatchWrapper, KeepsWhatTheFailureTold) {
    ScriptedDispatch native([](NativeCallArguments& call) {
        fillException(*call.exception, E_FAIL);
        return DISP_E_EXCEPTION;
    });
    callMember(native);
    mzComPtrT<mzIDispatch> const info{velk::adapter::takeLastException()};
    ASSERT_TRUE(info.isValid());
    struct {
        char const* member;
        char const* expected;
    } const rows[] = {
        {"WCode", "ok integer 7"},          {"WReserved", "ok integer 0"},
        {"BstrSource", "ok text Source"},   {"BstrDescription", "ok text Description"},
        {"BstrHelpFile", "ok text "},       {"DwHelpContext", "ok number 4294967295.000000"},
        {"Scode", "ok integer -2147467259"}};
    for (auto const& row : rows) {
        EXPECT_EQ(callHost(info.iface(), row.member, mzCallPropertyGet).text(), row.expected);
    }
    mzComPtrT<mzIDispatch> const next{velk::adapter::takeLastException()};
    ASSERT_TRUE(next.isValid()) << "an empty one takes its place";
    EXPECT_EQ(callHost(next.iface(), "Scode", mzCallPropertyGet).text(), "ok integer 0");
}

TEST_F(DispatchWrapper, ServersThatThrowFailLikeOthers) {
    ScriptedDispatch native(
        [](NativeCallArguments&) -> HRESULT { throw std::runtime_error("oh"); });
    auto const number = variable(5);
    EXPECT_EQ(callMember(native, {number}).text(), "Invoke DSP: Unhandled exception");
    EXPECT_EQ(describe(number.skipVariable()), "integer 5");
    mzComPtrT<mzIDispatch> const info{velk::adapter::takeLastException()};
    EXPECT_EQ(callHost(info.iface(), "Scode", mzCallPropertyGet).text(), "ok integer 574");
    EXPECT_EQ(callHost(info.iface(), "BstrSource", mzCallPropertyGet).text(), "ok text Member");
    EXPECT_EQ(callHost(info.iface(), "BstrDescription", mzCallPropertyGet).text(),
              "ok text unknown exception");
}

// The native call, or how the host call ended without one.
TEST_F(DispatchWrapper, CallKinds) {
    expectTable("bridge/dispatch_kinds.tsv", [](DataRow const& row) {
        ScriptedDispatch native;
        auto const outcome = callMember(native, {8}, static_cast<unsigned>(numberOf(row["kind"])),
                                        row["member"].c_str());
        return native.lastCall().empty() ? outcome.text() : native.lastCall();
    });
}

TEST_F(DispatchWrapper, PassesArgumentsLastFirst) {
    ScriptedDispatch native;
    ScriptedDispatch passed;
    callMember(native, {1, 2.5, "text", mzComVariantC()});
    EXPECT_EQ(native.lastCall(), "member 1 flags 3 (type 0, type 8, R8 2.500000, I4 1)");
    callMember(native, {variable(1), 2, variable("text"), variable(mzComVariantC())});
    EXPECT_EQ(native.lastCall(),
              "member 1 flags 3 (ref to type 0, ref to type 8, I4 2, ref to I4 1)");
    callMember(native, {variable(1), variable(2)}, mzCallPropertyPut);
    EXPECT_EQ(native.lastCall(), "member 1 flags 4 (I4 2, ref to I4 1) named -3");
    callMember(native, {variable(valueOf(wrap(passed))), wrapped(integerValue(3)),
                        variable(wrapped(integerValue(4)))});
    EXPECT_EQ(native.lastCall(), "member 1 flags 3 (ref I4 4, I4 3, type 16393)");
    EXPECT_EQ(passed.references(), 0U);
    auto const byValue = wrapped(integerValue(6));
    setFlags(byValue, 1);
    callMember(native, {variable(byValue)});
    EXPECT_EQ(native.lastCall(), "member 1 flags 3 (I4 6)");
}

TEST_F(DispatchWrapper, ManyArguments) {
    ScriptedDispatch native([](NativeCallArguments& call) {
        call.result->vt = VT_I4;
        for (UINT i = 0; i < call.parameters.cArgs; ++i) {
            call.result->lVal = call.result->lVal * 3 + call.parameters.rgvarg[i].lVal;
        }
        return S_OK;
    });
    EXPECT_EQ(callMember(native, {1, 2, 0, 1, 2, 0, 1, 2}).text(), "ok integer 5299");
}

TEST_F(DispatchWrapper, VariablesReceiveWhatTheCallLeft) {
    for (HRESULT const status : {S_OK, E_FAIL}) {
        ScriptedDispatch native([status](NativeCallArguments& call) {
            VARIANT& target = *call.parameters.rgvarg[0].pvarVal;
            VariantClear(&target);
            target.vt = VT_BSTR;
            target.bstrVal = velk::com::makeBstr(OLESTR("new")).release();
            return status;
        });
        auto const target = variable(5);
        callMember(native, {target});
        EXPECT_EQ(describe(target.skipVariable()), "text new") << status;
    }
}

/// A wrapper of the empty value of a type, as a script makes one.
mzComVariantC created(int type) {
    mzComVariantC const wrapper = wrapped({});
    EXPECT_EQ(callHost(dispatchIn(wrapper).iface(), "vt", mzCallPropertyPut, {type}).code,
              mzSuccess);
    return wrapper;
}

VARIANT decimalValue(ULONGLONG number, USHORT firstWord) {
    VARIANT value{};
    value.decVal.Lo64 = number;
    value.vt = firstWord;
    return value;
}

/// The type of what a wrapper holds, and the value as text where it has one.
std::string heldBy(mzComVariantC const& value) {
    mzComPtrT<mzIComVariantWrapper> const wrapper{mzComPtrC(objectIn(value))};
    Variant held;
    Variant text;
    wrapper->getVariant(*held.address());
    std::string const type = std::to_string(held.get().vt);
    if (FAILED(velk::com::changeType(held.get(), VT_BSTR, text))) return type;
    return type + " " + mzComStringC::fromBSTR(text.get().bstrVal).toUtf8();
}

void giveText(VARIANT& target) {
    target.vt = VT_BSTR;
    target.bstrVal = velk::com::makeBstr(OLESTR("new")).release();
}

struct VariableRow {
    char const* name;
    mzComVariantC wrapper;
    int flags;
    int passedAs;
    /// What the native object does with its argument.
    void (*change)(VARIANT& argument);
    char const* after;
};

TEST_F(DispatchWrapper, WrapperInAVariableStaysAndTakesTheValue) {
    constexpr int anyType = VT_BYREF | VT_VARIANT;
    auto const leave = [](VARIANT&) {};
    auto const fill = [](VARIANT& argument) {
        EXPECT_EQ(argument.pvarVal->vt, VT_EMPTY);
        giveText(*argument.pvarVal);
    };
    VariableRow const rows[] = {
        {"integer", wrapped(integerValue(4)), 0, VT_BYREF | VT_I4,
         [](VARIANT& argument) { *argument.plVal = 9; }, "3 9"},
        {"integer by value", wrapped(integerValue(4)), 1, VT_I4,
         [](VARIANT& argument) { argument.lVal = 9; }, "3 4"},
        {"decimal", wrapped(decimalValue(5, VT_DECIMAL)), 0, VT_BYREF | VT_DECIMAL,
         [](VARIANT& argument) { *argument.pdecVal = decimalValue(7, 0).decVal; }, "14 7"},
        {"decimal with a first word", wrapped(decimalValue(5, VT_DECIMAL)), 0,
         VT_BYREF | VT_DECIMAL,
         [](VARIANT& argument) { *argument.pdecVal = decimalValue(7, VT_DISPATCH).decVal; },
         "14 7"},
        {"decimal left alone", wrapped(decimalValue(5, VT_DECIMAL)), 0, VT_BYREF | VT_DECIMAL,
         leave, "14 5"},
        {"decimal by value", wrapped(decimalValue(5, VT_DECIMAL)), 1, VT_DECIMAL, leave, "14 5"},
        {"new", wrapped({}), 0, anyType, fill, "8 new"},
        {"new left alone", wrapped({}), 0, anyType, leave, "0 "},
        {"null", created(VT_NULL), 0, anyType, fill, "8 new"},
        {"any type", created(VT_VARIANT), 0, anyType, fill, "8 new"},
        {"any type left alone", created(VT_VARIANT), 0, anyType, leave, "0 "},
        {"text", created(VT_BSTR), 0, VT_BYREF | VT_BSTR,
         [](VARIANT& argument) {
             SysFreeString(*argument.pbstrVal);
             *argument.pbstrVal = velk::com::makeBstr(OLESTR("new")).release();
         },
         "8 new"},
        {"argument list overwritten", wrapped(integerValue(4)), 0, VT_BYREF | VT_I4,
         [](VARIANT& argument) { argument = decimalValue(7, VT_BYREF | VT_DECIMAL); }, "3 4"},
    };
    for (auto const& row : rows) {
        ScriptedDispatch native([&row](NativeCallArguments& call) {
            // Both lists of arguments, the short and the long one.
            for (UINT i = 0; i < call.parameters.cArgs; ++i) {
                VARIANT& argument = call.parameters.rgvarg[i];
                if (argument.vt == VT_I2) continue;
                EXPECT_EQ(argument.vt, row.passedAs) << row.name;
                row.change(argument);
            }
            return S_OK;
        });
        setFlags(row.wrapper, row.flags);
        auto const holder = variable(row.wrapper);
        auto const filler = wrapped(makeValue(VT_I2, [](VARIANT& value) { value.iVal = 1; }));
        for (bool const many : {false, true}) {
            auto const copy =
                variable(callHost(dispatchIn(row.wrapper).iface(), "Copy", mzCallMethod).result);
            setFlags(copy.skipVariable(), row.flags);
            auto const& value = many ? holder : copy;
            auto const* const before = objectIn(value.skipVariable());
            auto const outcome =
                many ? callMember(native, {filler, filler, filler, filler, filler, filler, value})
                     : callMember(native, {value});
            EXPECT_EQ(outcome.text(), "ok empty") << row.name;
            EXPECT_EQ(objectIn(value.skipVariable()), before) << row.name;
            EXPECT_EQ(heldBy(value.skipVariable()), row.after) << row.name;
        }
    }
}

TEST_F(DispatchWrapper, ValuesWithoutNativeFormReachNobody) {
    struct {
        int type;
        bool asVariable;
    } const rows[] = {
        {VT_VARIANT, false},
        {VT_BYREF | VT_I4, false},
        {VT_BYREF | VT_I4, true},
        {VT_BYREF, true},
        {VT_BYREF | VT_VARIANT, true},
        {VT_BYREF | VT_DISPATCH, true},
        {VT_BYREF | VT_RECORD, true},
        {VT_BYREF | VT_DECIMAL, true},
        {VT_BYREF | VT_ARRAY | VT_I4, true},
        {0x0fff, false},
        {0x0fff, true},
    };
    for (auto const& row : rows) {
        ScriptedDispatch native;
        auto const value = created(row.type);
        auto const outcome = callMember(native, {row.asVariable ? variable(value) : value});
        EXPECT_EQ(outcome.text(), "failed") << row.type;
        EXPECT_EQ(native.lastCall(), "") << row.type;
        EXPECT_EQ(callHost(dispatchIn(value).iface(), "vt", mzCallPropertyGet).result.getInt(),
                  row.type);
    }
    ScriptedDispatch native;
    EXPECT_EQ(callMember(native, {}, mzCallPropertyPut).text(),
              "Invoke DSP: wrong number of arguments");
    EXPECT_EQ(native.lastCall(), "");
}

TEST_F(DispatchWrapper, HostObjectsThatThrowFailTheCall) {
    struct {
        void (*throwOne)();
        char const* expected;
    } const rows[] = {
        {[] { proxyObjectC::throwExecuteException("told", "Member", 1); }, "Invoke DSP: told"},
        {[] { proxyObjectC::throwAutoTypeCastException(); },
         "Invoke DSP: Argument cannot be converted to the type that is expected"},
        {[] { throw std::runtime_error("oh"); }, "Invoke DSP: Unhandled exception"},
        {[] { throw 5; }, "Invoke DSP: Unhandled exception"},
    };
    for (auto const& row : rows) {
        mzComPtrT<mzIDispatch> const object(new ThrowingObject(row.throwOne));
        ScriptedDispatch native;
        EXPECT_EQ(callMember(native, {valueOf(object)}).text(), row.expected);
        EXPECT_EQ(native.lastCall(), "");
        auto const holder = dispatchIn(wrapped(integerValue(4)));
        EXPECT_EQ(callHost(holder.iface(), "val", mzCallPropertyPut, {valueOf(object)}).text(),
                  row.expected);
        EXPECT_EQ(callHost(holder.iface(), "val", mzCallPropertyGet).text(), "ok integer 4");
    }
}

TEST_F(DispatchWrapper, ObjectsKeepTheirIdentity) {
    ScriptedDispatch other;
    ScriptedDispatch native([&other](NativeCallArguments& call) {
        VARIANT& argument = call.parameters.rgvarg[0];
        if (argument.vt == (VT_BYREF | VT_DISPATCH)) {
            EXPECT_EQ(*argument.ppdispVal, static_cast<IDispatch*>(&other));
        } else if (argument.vt == VT_DISPATCH) {
            // Handed back inside nested references.
            static VARIANT inner;
            inner = argument;
            *call.result = referenceTo(inner);
        }
        return S_OK;
    });
    RecordingHolder const host;
    auto const back = callMember(native, {host.asValue()});
    EXPECT_EQ(objectIn(back.result), static_cast<mzIUnknown*>(host.dispatch()));
    auto const holder = variable(valueOf(wrap(other)));
    callMember(native, {holder});
    velk::com::ComPtr<IDispatch> found;
    mzComPtrT<mzIComDispatchWrapper> const wrapper{mzComPtrC(objectIn(holder.skipVariable()))};
    ASSERT_TRUE(wrapper.isValid());
    ASSERT_EQ(wrapper->getDispatch(found.put()), mzSuccess);
    EXPECT_EQ(found.get(), &other);
}

TEST_F(DispatchWrapper, UnusableResults) {
    VARIANT circle{};
    circle = referenceTo(circle);
    ScriptedDispatch circling([&](NativeCallArguments& call) {
        *call.result = circle;
        return S_OK;
    });
    EXPECT_EQ(callMember(circling).text(), "failed");
    ScriptedDispatch nonsense([](NativeCallArguments& call) {
        call.result->vt = 0x0fff;
        return S_OK;
    });
    EXPECT_EQ(callMember(nonsense).text(), "Invoke DSP: unknown exception :0x80020008");
    ScriptedDispatch array([](NativeCallArguments& call) {
        call.result->vt = VT_ARRAY | VT_I4;
        return S_OK;
    });
    EXPECT_TRUE(dispatchIn(callMember(array).result).isValid());
}

TEST_F(DispatchWrapper, HoldsItsObjectUntilItIsBoundAnew) {
    ScriptedDispatch first;
    ScriptedDispatch second;
    {
        auto* const object = new vbsComDispatchWrapperC(&first);
        mzComPtrT<mzIDispatch> const keeper(object);
        EXPECT_GT(first.references(), 0U);
        object->setDispatch(&second);
        EXPECT_EQ(first.references(), 0U);
        EXPECT_GT(second.references(), 0U);
        object->setDispatch(nullptr);
        EXPECT_EQ(second.references(), 0U);
        EXPECT_EQ(callHost(object, "Member", mzCallMethod).text(), "failed");
        IDispatch* none = &first;
        EXPECT_EQ(object->getDispatch(&none), mzFailure);
        EXPECT_EQ(none, nullptr);
        object->setDispatch(&first);
        EXPECT_EQ(callHost(object, "Member", mzCallMethod).text(), "ok empty");
    }
    EXPECT_EQ(first.references(), 0U);
}

TEST_F(DispatchWrapper, IsEmptyOnceTheRegistryHasEnded) {
    ScriptedDispatch native;
    auto const before = wrap(native);
    mzModuleSingletonT<VelkComAdapterGlobal, VelkComAdapterGlobal::cleanupPriority>::cleanup();
    EXPECT_EQ(native.references(), 0U);
    EXPECT_EQ(callHost(before.iface(), "Member", mzCallMethod).text(), "failed");
    // Cookies of the next registry can have the same numbers.
    auto const after = wrap(native);
    EXPECT_EQ(callHost(after.iface(), "Member", mzCallMethod).text(), "ok empty");
    EXPECT_EQ(callHost(before.iface(), "Member", mzCallMethod).text(), "failed");
}

}  // namespace
