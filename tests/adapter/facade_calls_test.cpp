// Calls of a facade, as the table tells them: what reaches the host object, and
// what comes back.

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <map>

#include "native_to_host/facade.h"
#include "support/crossings.h"
#include "support/data_table.h"
#include "support/native_values.h"

namespace {

using namespace velk::test;

/// The answer of a host object: a value, `code NUMBER`, `throw`, or `fail` and the
/// texts of exceptions, each the cause of the one before.
Answer answerOf(std::string const& cell) {
    if (cell.empty()) return {};
    if (cell == "throw memory") throw std::bad_alloc();
    if (cell == "throw") throw 5;
    if (cell.starts_with("code ")) return {static_cast<unsigned>(std::stoi(cell.substr(5)))};
    if (!cell.starts_with("fail ")) return {mzSuccess, hostValue(cell)};
    mzComPtrT<mzIException> exception;
    auto const texts = partsOf(cell.substr(5));
    for (auto text = texts.rbegin(); text != texts.rend(); ++text)
        exception = mzComCreateException("source", text->c_str(), exception);
    return {mzFailure, {}, exception};
}

WORD flagsOf(std::string const& cell) {
    static std::map<std::string, WORD> const flags = {{"method", DISPATCH_METHOD},
                                                      {"get", DISPATCH_PROPERTYGET},
                                                      {"put", DISPATCH_PROPERTYPUT},
                                                      {"putref", DISPATCH_PROPERTYPUTREF},
                                                      {"others", 0xfff0}};
    WORD all = 0;
    for (auto const& name : partsOf(cell, " ")) all |= flags.at(name);
    return all;
}

/// A name that the table of names gets to know, `id` and a number, or `()` for the
/// default member.
DISPID memberOf(IDispatch& facade, std::string const& cell) {
    if (cell == "()") return DISPID_VALUE;
    return cell.starts_with("id ") ? std::stoi(cell.substr(3)) : idOf(facade, wide(cell));
}

/// Values, with `&` references to them; `&` alone is a reference to nothing.
struct NativeArguments {
    explicit NativeArguments(std::string const& cell) {
        for (auto const& text : partsOf(cell)) {
            VARIANT nothing{};
            nothing.vt = VT_BYREF | VT_I4;
            if (text == "&") {
                passed.insert(passed.begin(), nothing);
                continue;
            }
            auto& value = values.emplace_back(text.substr(text[0] == '&'));
            passed.insert(passed.begin(), text[0] == '&' ? referenceTo(*value) : *value);
        }
        parameters = {passed.data(), nullptr, static_cast<UINT>(passed.size()), 0};
    }
    std::string notation() const {
        std::string text;
        for (auto const& value : values) text += value.notation() + ' ';
        return text;
    }

    std::deque<Value> values;
    std::vector<VARIANT> passed;
    DISPPARAMS parameters{};
};

std::string told(EXCEPINFO const& info) {
    EXPECT_EQ(info.bstrHelpFile, nullptr);
    EXPECT_TRUE(info.dwHelpContext == 0 && !info.pfnDeferredFillIn && info.scode == 0);
    auto const text = [](BSTR from) { return narrow(from, SysStringLen(from)); };
    return std::to_string(info.wCode) + ' ' + text(info.bstrSource) + ": " +
           text(info.bstrDescription);
}

std::string callsOf(RecordingObject const& host) {
    std::string text;
    for (auto const& call : host.calls()) {
        text += " <- kind " + std::to_string(call.callKind) + ' ' + call.name + '(';
        for (std::size_t i = 0; i < call.arguments.size(); ++i)
            text += (i ? ", " : "") + described(call.arguments[i]);
        text += ')';
    }
    return text;
}

// No result and no record are written unless the answer tells so, and none is needed.
TEST(FacadeCalls, AnswerAsTheTableSays) {
    expectTable("bridge/facade.tsv", [](DataRow const& row) {
        mzRunGlobalCleanup();
        RecordingHolder const host;
        host->respond = [&](RecordedCall const&) { return answerOf(row["host"]); };
        velk::com::ComPtr<Ivelkdspwrap> facade;
        EXPECT_EQ(velk::adapter::createBoundFacade(host.dispatch(), facade), S_OK);
        DISPID const member = memberOf(*facade.get(), row["member"]);
        NativeArguments arguments(row["arguments"]);
        std::string const before = arguments.notation();
        Value result("I4:3");
        EXCEPINFO info;
        std::memset(&info, 0xee, sizeof info);
        EXCEPINFO const untouched = info;
        UINT wrong = 77;
        auto const call = [&](VARIANT* value, EXCEPINFO* record) {
            host->forgetCalls();
            return facade->Invoke(member, IID_NULL, 0, flagsOf(row["flags"]), &arguments.parameters,
                                  value, record, &wrong);
        };
        HRESULT const code = call(&result, &info);
        std::string text = code == DISP_E_MEMBERNOTFOUND ? "not found" : resultName(code);
        if (code == DISP_E_EXCEPTION) {
            text = "exception " + told(velk::com::ExceptionInfo(info).get());
        } else {
            EXPECT_TRUE(info.wCode == untouched.wCode && info.bstrSource == untouched.bstrSource)
                << "a record without failure";
        }
        text += result.notation() == "I4:3" ? "" : ' ' + result.notation();
        text += callsOf(*host.get());
        EXPECT_EQ(call(nullptr, nullptr), code);
        EXPECT_EQ(arguments.notation(), before) << "an argument was written";
        EXPECT_EQ(wrong, 77U) << "the place of a wrong argument is never written";
        host->forgetCalls();
        EXPECT_EQ(host->references(), 2U);
        return text;
    });
}

}  // namespace
