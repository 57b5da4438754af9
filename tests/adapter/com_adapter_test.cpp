#include <vector>

#include "com/owners.h"
#include "support/script_test.h"

namespace {

using namespace velk::test;
using velk::com::ComPtr;

class ComAdapter : public ScriptTest {};

constexpr char const* extraId = "{7E0B5A10-3C64-4D2F-9B18-52D6A1C40E06}";
constexpr char const* strangeId = "{7E0B5A10-3C64-4D2F-9B18-52D6A1C40EFF}";

TEST_F(ComAdapter, CreatesObjectsThatAreCalledByName) {
    auto const object = sample();
    EXPECT_EQ(callText(object, "Add", {20, 22}), "ok integer 42");
    EXPECT_EQ(callText(object, "ADD", {20, 22}), "ok integer 42");
    EXPECT_EQ(server_->liveObjects(), 1);
}

TEST_F(ComAdapter, CallsAnInterfaceThroughItsDescription) {
    auto const made = callHost(adapter_.iface(), "CreateObject", mzCallMethod,
                               {"VelkTest.Sample", extraId, serverPath()});
    ASSERT_EQ(made.code, mzSuccess) << made.text();
    auto const extra = dispatchIn(made.result);
    EXPECT_EQ(callText(extra, "Twice", {21}), "ok integer 42");
    EXPECT_EQ(callText(extra, "Add", {20, 22}), "Invoke DSP: Member 'Add' not found");
}

TEST_F(ComAdapter, AsksForOtherInterfaces) {
    auto const object = sample();
    EXPECT_EQ(callText(object, "Twice", {21}), "Invoke DSP: Member 'Twice' not found");
    auto const cast =
        callHost(adapter_.iface(), "QueryInterface", mzCallMethod, {extraId, valueOf(object)});
    ASSERT_EQ(cast.code, mzSuccess) << cast.text();
    // An object has one IDispatch, whichever interface is asked for it.
    EXPECT_EQ(callText(dispatchIn(cast.result), "Add", {20, 22}), "ok integer 42");
    EXPECT_EQ(callText(object, "Same", {valueOf(object), cast.result}), "ok integer -1");
}

TEST_F(ComAdapter, FindsActiveObjects) {
    EXPECT_EQ(callText(adapter_, "GetObject", {"VelkTest.Sample"}),
              "GetObject: Could not get object 'VelkTest.Sample'");
    auto const object = sample();
    mzComPtrT<mzIDispatch> found;
    {
        // What a server does to be found.
        CLSID id{};
        ASSERT_EQ(CLSIDFromProgID(OLESTR("VelkTest.Sample"), &id), S_OK);
        ComPtr<IDispatch> running;
        ASSERT_EQ(createByProgId("VelkTest.Sample", IID_IDispatch, running.putVoid()), S_OK);
        DWORD registration = 0;
        ASSERT_EQ(RegisterActiveObject(running.get(), id, 0, &registration), S_OK);
        auto const outcome =
            callHost(adapter_.iface(), "GetObject", mzCallMethod, {"VelkTest.Sample"});
        EXPECT_EQ(outcome.code, mzSuccess) << outcome.text();
        found = dispatchIn(outcome.result);
        ASSERT_EQ(RevokeActiveObject(registration, nullptr), S_OK);
    }
    ASSERT_TRUE(found.isValid());
    EXPECT_EQ(callText(found, "Add", {1, 2}), "ok integer 3");
    EXPECT_EQ(callText(object, "Same", {valueOf(object), valueOf(found)}), "ok integer 0");
}

TEST_F(ComAdapter, EachFailureHasItsText) {
    auto const object = valueOf(sample());
    auto const plain = valueOf(create("scripting.dictionary"));
    auto const library = serverPath();
    struct {
        char const* member;
        std::vector<mzComVariantC> arguments;
        char const* expected;
    } const rows[] = {
        {"CreateObject", {"No.Such"}, "CreateObject: Could not create object 'No.Such'"},
        {"CreateObject", {""}, "CreateObject: Could not create object ''"},
        {"CreateObject",
         {"VelkTest.NoDispatch"},
         "CreateObject: Could not create object 'VelkTest.NoDispatch'"},
        {"CreateObject",
         {"VelkTest.NoInstance"},
         "CreateObject: Could not create object 'VelkTest.NoInstance'"},
        {"CreateObject",
         {"No.Such", extraId, library},
         "CreateObject: Could not create object 'No.Such'"},
        {"CreateObject",
         {"VelkTest.Sample", "no id", library},
         "QueryInterface: IID at pos 1 is invalid"},
        {"CreateObject",
         {"VelkTest.Sample", strangeId, library},
         "QueryInterface: Failed to create instance with given IID"},
        {"CreateObject",
         {"VelkTest.Sample", extraId, "/no/such.tlb"},
         "QueryInterface: Failed to load type library from path at pos 2"},
        {"CreateObject",
         {"VelkTest.Sample", extraId, "."},
         "QueryInterface: Failed to load type library from path at pos 2"},
        {"CreateObject",
         {"VelkTest.NoDispatch", "{7E0B5A10-3C64-4D2F-9B18-52D6A1C40E07}", library},
         "QueryInterface: Failed to find type info for the given guid in the given type lib"},
        {"GetObject", {"No.Such"}, "GetObject: Could not get object 'No.Such'"},
        {"QueryInterface",
         {"no id", object},
         "QueryInterface: invalid Object ident 'no id' for MS-COM-VB object"},
        {"QueryInterface", {extraId, plain}, "QueryInterface: invalid MS-COM-VB object"},
        {"QueryInterface",
         {strangeId, object},
         "QueryInterface: invalid query interface on MS-COM-VB object"},
    };
    for (auto const& row : rows) {
        mzComVariantArrayC arguments;
        for (auto const& argument : row.arguments) arguments << argument;
        HostOutcome outcome;
        outcome.code = adapter_->invokeByName(row.member, mzCallMethod, arguments, outcome.result,
                                              outcome.exception);
        EXPECT_EQ(outcome.text(), row.expected);
        EXPECT_EQ(outcome.code, mzFailure);
    }
    EXPECT_EQ(callHost(adapter_.iface(), "QueryInterface", mzCallMethod, {extraId, 5}).code,
              mzFailure);
}

TEST_F(ComAdapter, EnumConstants) {
    auto const object = valueOf(sample());
    struct {
        mzComVariantC source;
        char const* enumeration;
        char const* constant;
        char const* expected;
    } const rows[] = {
        {serverPath(), "Color", "Red", "ok integer 1"},
        {serverPath(), "Color", "Blue", "ok integer 70000"},
        {serverPath(), "color", "Red", "ok empty"},
        {serverPath(), "Color", "red", "ok empty"},
        {serverPath(), "Point", "x", "ok empty"},
        {serverPath(), "", "", "ok empty"},
        {"/no/such.tlb", "Color", "Red", "ok empty"},
        {".", "Color", "Red", "ok empty"},
        {"", "Color", "Red", "ok empty"},
        {object, "Color", "Green", "ok integer 2"},
        {object, "Color", "Grey", "ok empty"},
        {valueOf(create("scripting.dictionary")), "Color", "Green", "ok empty"},
        {valueOf(native("VelkTest.Faulty")), "Color", "Green", "ok empty"},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(
            callText(adapter_, "GetEnumConstant", {row.source, row.enumeration, row.constant}),
            row.expected)
            << row.enumeration << "." << row.constant;
    }
}

TEST_F(ComAdapter, TellsOfTheLastFailureOnce) {
    auto const object = sample();
    callText(object, "Fail", {-2147467259, "Source", "Description", "help.chm", 77});
    auto const take = [this] {
        return dispatchIn(callHost(adapter_.iface(), "getLastExceptionInfo", mzCallMethod).result);
    };
    auto const info = take();
    ASSERT_TRUE(info.isValid());
    struct {
        char const* member;
        char const* told;
        char const* empty;
    } const rows[] = {
        {"Scode", "ok integer -2147467259", "ok integer 0"},
        {"BstrSource", "ok text Source", "ok text "},
        {"BstrDescription", "ok text Description", "ok text "},
        {"BstrHelpFile", "ok text help.chm", "ok text "},
        // Qt's 32-bit numbers are wide where the system's long is.
        {"DwHelpContext", "ok integer 77", "ok integer 0"},
    };
    auto const next = take();
    ASSERT_TRUE(next.isValid());
    for (auto const& row : rows) {
        EXPECT_EQ(callHost(info.iface(), row.member, mzCallPropertyGet).text(), row.told);
        EXPECT_EQ(callHost(next.iface(), row.member, mzCallPropertyGet).text(), row.empty);
    }
}

}  // namespace
