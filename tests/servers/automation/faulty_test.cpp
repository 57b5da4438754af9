// Every fault does what its name says.
#include <stdexcept>

#include "servers/automation/support/server_test.h"

namespace {

using namespace velk::test;

struct FaultyObject : ServerTest {
    void SetUp() override {
        ServerTest::SetUp();
        create("VelkTest.Faulty");
    }
    NativeAnswer call(char const* member, std::vector<VARIANT> arguments = {}) {
        return callByName(*object_, member, std::move(arguments));
    }
};

TEST_F(FaultyObject, HasWrongResults) {
    struct Case {
        char const* member;
        HRESULT code;
        VARTYPE type;
    };
    Case const cases[] = {
        {"SuccessWithoutResult", S_OK, VT_EMPTY},
        {"AnswersFalse", S_FALSE, VT_I4},
        {"BadType", S_OK, 0x0FFE},
        {"BadTypeAllBits", S_OK, 0x7FFF},
        {"NullRecord", S_OK, VT_RECORD},
        {"NullArray", S_OK, VT_ARRAY | VT_I4},
        {"NullByRef", S_OK, VT_BYREF | VT_I4},
        {"SelfReference", S_OK, VT_BYREF | VT_VARIANT},
        {"NullDispatch", S_OK, VT_DISPATCH},
        {"EmbeddedNull", S_OK, VT_BSTR},
    };
    for (auto const& entry : cases) {
        auto answer = call(entry.member);
        EXPECT_EQ(answer.code, entry.code) << entry.member;
        EXPECT_EQ(answer.result.get().vt, entry.type) << entry.member;
        // Nothing of a wrong result may be touched.
        bool const sound = entry.type == VT_BSTR || entry.type == VT_I4;
        if (!sound) static_cast<void>(answer.result.release());
    }
    EXPECT_EQ(asciiOf(call("EmbeddedNull").result.get().bstrVal), "before.after");
    EXPECT_EQ(call("PositiveCode", {number(300)}).code, 300);
    auto circle = call("SelfReference");
    VARIANT const* const inner = circle.result.release().pvarVal;
    EXPECT_EQ(inner->pvarVal, inner);
}

TEST_F(FaultyObject, HasWrongFailures) {
    constexpr UINT garbage = 0xDEADBEEF;
    struct Case {
        char const* member;
        HRESULT code;
        UINT argument;
        WORD exceptionCode;
    };
    Case const cases[] = {
        {"Throws", E_UNEXPECTED, NativeAnswer::untouched, 0},
        {"GarbageArgumentIndex", DISP_E_TYPEMISMATCH, garbage, 0},
        {"UnsetArgumentIndex", DISP_E_TYPEMISMATCH, NativeAnswer::untouched, 0},
        {"ParamNotFoundGarbage", DISP_E_PARAMNOTFOUND, garbage, 0},
        {"ExceptionWithoutInfo", DISP_E_EXCEPTION, NativeAnswer::untouched, 0},
        {"ExceptionSuccessCode", DISP_E_EXCEPTION, NativeAnswer::untouched, 1001},
    };
    for (auto const& entry : cases) {
        auto const answer = call(entry.member);
        EXPECT_EQ(answer.code, entry.code) << entry.member;
        EXPECT_EQ(answer.argumentError, entry.argument) << entry.member;
        EXPECT_EQ(answer.exception.get().wCode, entry.exceptionCode) << entry.member;
        EXPECT_EQ(answer.exception.get().scode, 0) << entry.member;
    }
    EXPECT_EQ(SysStringLen(call("LongText").exception.get().bstrDescription), 1000000u);
    EXPECT_THROW(call("ThrowsAcross"), std::runtime_error);
}

TEST_F(FaultyObject, FillsInLaterOrNot) {
    auto good = call("DeferredFillIn");
    ASSERT_NE(good.exception.get().pfnDeferredFillIn, nullptr);
    EXPECT_EQ(good.exception.get().pfnDeferredFillIn(good.exception.address()), S_OK);
    EXPECT_EQ(asciiOf(good.exception.get().bstrDescription), "filled in later");
    auto failing = call("DeferredFails");
    EXPECT_EQ(failing.exception.get().pfnDeferredFillIn(failing.exception.address()), E_FAIL);
    auto throwing = call("DeferredThrows");
    EXPECT_THROW(throwing.exception.get().pfnDeferredFillIn(throwing.exception.address()),
                 std::runtime_error);
}

TEST_F(FaultyObject, HasWrongNames) {
    EXPECT_EQ(call("WrongDispId").code, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(call("NamesFail").code, E_OUTOFMEMORY);
    EXPECT_EQ(call("NamesUnknown").code, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(call("Nothing").code, DISP_E_UNKNOWNNAME);
    UINT count = 1;
    EXPECT_EQ(object_->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0u);
}

/// Answers every call with the depth that calls inside reached, up to a limit.
class Bouncer final : public IDispatch {
  public:
    int depth = 0;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID* id) override {
        *id = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*,
                                     EXCEPINFO*, UINT*) override {
        constexpr int deepest = 20;
        if (++depth == deepest) return E_ABORT;
        auto& arguments = parameters->rgvarg;
        return callByName(*faulty, "Recurse", {arguments[1], arguments[0]}).code;
    }
    IDispatch* faulty = nullptr;
};

TEST_F(FaultyObject, RecursesUntilSomeoneFails) {
    Bouncer bouncer;
    bouncer.faulty = object_.get();
    auto const method = text("again");
    EXPECT_EQ(call("Recurse", {object(&bouncer), method.get()}).code, E_ABORT);
    EXPECT_EQ(bouncer.depth, 20);
}

TEST_F(FaultyObject, ChangesArgumentsAndRecordsCalls) {
    velk::com::Variant value(number(3));
    auto const place = reference(VT_VARIANT, value.address());
    EXPECT_EQ(call("ChangesTypeOfByRef", {place}).code, S_OK);
    EXPECT_EQ(describe(value.get()), "VT_BSTR \"changed\"");
    EXPECT_EQ(call("ChangesTypeOfByRef", {number(3)}).code, DISP_E_TYPEMISMATCH);
    std::vector<std::string> const expected = {
        "flags=1 args=[VT_BYREF|VT_VARIANT (VT_I4 3)] named=0", "flags=1 args=[VT_I4 3] named=0"};
    EXPECT_EQ(textsIn(call("RecordedCalls").result), expected);
}

TEST_F(FaultyObject, VanishesForGood) {
    EXPECT_EQ(call("Vanish").code, S_OK);
    EXPECT_EQ(call("AnswersFalse").code, RPC_E_DISCONNECTED);
    UINT count = 1;
    EXPECT_EQ(object_->GetTypeInfoCount(&count), RPC_E_DISCONNECTED);
}

}  // namespace
