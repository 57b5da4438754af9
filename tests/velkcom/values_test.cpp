#include <algorithm>
#include <functional>

#include <gtest/gtest.h>

#include "com/utf.h"
#include "scratch_folder.h"
#include "support/data_table.h"
#include "text/result_text.h"
#include "text/typed_value.h"

namespace velk::velkcom::test {
namespace {

using velk::test::DataRow;
using velk::test::expectTable;

/// What `read` gives, or the mistake that it tells of.
std::string outcomeOf(std::function<std::string()> const& read) {
    try {
        return read();
    } catch (UsageError const& error) {
        return error.what();
    }
}

TEST(Values, AreReadAndPrinted) {
    expectTable("velkcom/arguments.tsv", [](DataRow const& row) {
        return outcomeOf([&] { return resultText(readValue({row["written"]}).get()); });
    });
    EXPECT_EQ(resultText(readValue({"5", true}).get()), "string:5");
}

TEST(MemberPath, IsReadAsSteps) {
    expectTable("velkcom/members.tsv", [](DataRow const& row) {
        return outcomeOf([&] {
            std::string text;
            for (auto const& step : parseMemberPath(row["member"])) {
                text += (text.empty() ? "" : " | ") + step.name;
                for (auto const& argument : step.arguments)
                    text +=
                        argument.quoted ? " \"" + argument.text + "\"" : " <" + argument.text + ">";
            }
            return text;
        });
    });
}

TEST(Values, OfEveryTypeAreShownWhateverTheyPointTo) {
    // Nothing, room for any value, and an array without data.
    BYTE zeroes[2 * sizeof(VARIANT)]{};
    SAFEARRAY* array = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptorEx(VT_UI1, 1, &array), S_OK);
    array->rgsabound[0] = {3, 0};
    for (unsigned code = 0; code <= 0xffff; ++code) {
        bool const reference = (code & VT_BYREF) != 0;
        bool const holdsArray = !reference && (code & VT_ARRAY) != 0;
        for (void* const content :
             {static_cast<void*>(nullptr), static_cast<void*>(zeroes), static_cast<void*>(array)}) {
            if (content == zeroes && !reference) continue;
            if (content == array && !holdsArray) continue;
            VARIANT value{};
            value.vt = static_cast<VARTYPE>(code);
            value.byref = content;
            EXPECT_FALSE(resultText(value).empty()) << code;
        }
    }
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(Values, OfTypesThatDoNotExistAreNotFollowed) {
    for (VARTYPE const type : {0xffff, 0x9000 | VT_VARIANT, VT_BYREF | VT_VECTOR | VT_BSTR}) {
        VARIANT value{};
        value.vt = type;
        value.llVal = 8;
        EXPECT_EQ(resultText(value), "value of type " + std::to_string(type));
    }
}

TEST(Values, ArraysOfOtherElementsThanTheySayAreNotRead) {
    struct {
        VARTYPE made;
        VARTYPE said;
        char const* shown;
    } const rows[] = {
        {VT_UI1, VT_VARIANT, "array(0..0):[...]"}, {VT_I8, VT_BSTR, "array(0..0):[...]"},
        {VT_BSTR, VT_I8, "array(0..0):[...]"},     {VT_BSTR, VT_DISPATCH, "array(0..0):[...]"},
        {VT_UI1, VT_EMPTY, "array(0..0):[...]"},   {VT_I4, VT_INT, "array(0..0):[int:-1]"},
        {VT_I8, VT_UI1, "array(0..0):[...]"},
    };
    for (auto const& row : rows) {
        com::SafeArray array(SafeArrayCreateVector(row.made, 0, 1));
        auto* const data = static_cast<BYTE*>(array.get()->pvData);
        ULONG const size = SafeArrayGetElemsize(array.get());
        if (row.made != VT_BSTR) std::fill_n(data, size, BYTE{0xff});
        VARIANT value{};
        value.vt = static_cast<VARTYPE>(VT_ARRAY | row.said);
        value.parray = array.get();
        EXPECT_EQ(resultText(value), row.shown) << row.made << " as " << row.said;
    }
}

TEST(Values, ThatLieInThemselvesAreShownInPart) {
    com::SafeArray array(SafeArrayCreateVector(VT_VARIANT, 0, 100));
    VARIANT value{};
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = array.get();
    auto* const elements = static_cast<VARIANT*>(array.get()->pvData);
    for (int i = 0; i < 100; ++i) {
        elements[i].vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
        elements[i].pparray = &value.parray;
    }
    EXPECT_LT(resultText(value).size(), 10'000'000U);
}

TEST(Values, OfManyLevelsAreShownInPart) {
    VARIANT value{};
    for (int level = 0; level < 1000; ++level) {
        SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 1);
        static_cast<VARIANT*>(array->pvData)[0] = value;
        value.vt = VT_ARRAY | VT_VARIANT;
        value.parray = array;
    }
    com::Variant const owned(value);
    std::string const text = resultText(value);
    EXPECT_NE(text.find("[...]"), std::string::npos) << text;
    EXPECT_LT(text.size(), 1000U);
}

TEST(Values, ShowArraysAndReferences) {
    com::SafeArray numbers(SafeArrayCreateVector(VT_I2, -1, 2));
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(numbers.get(), &data), S_OK);
    static_cast<SHORT*>(data)[0] = 7;
    static_cast<SHORT*>(data)[1] = -8;
    SafeArrayUnaccessData(numbers.get());
    VARIANT value{};
    value.vt = VT_ARRAY | VT_I2;
    value.parray = numbers.get();
    EXPECT_EQ(resultText(value), "array(-1..0):[short:7, short:-8]");

    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &value;
    EXPECT_EQ(resultText(reference), "array(-1..0):[short:7, short:-8]");

    com::Bstr const text = com::makeBstr(OLESTR("by reference"));
    BSTR place = text.get();
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &place;
    EXPECT_EQ(resultText(reference), "string:by reference");

    SAFEARRAYBOUND bounds[] = {{2, 0}, {0, 1}};
    com::SafeArray empty(SafeArrayCreate(VT_VARIANT, 2, bounds));
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = empty.get();
    EXPECT_EQ(resultText(value), "array(0..1, 1..0):[]");
    value.parray = nullptr;
    EXPECT_EQ(resultText(value), "array:none");
}

/// An object of the type that a library holds first, which counts for nothing.
struct ObjectOf final : IDispatch {
    explicit ObjectOf(OLECHAR const* file) { LoadTypeLibEx(file, REGKIND_NONE, library.put()); }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** out) override {
        return library ? library->GetTypeInfo(0, out) : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }
    com::ComPtr<ITypeLib> library;
};

// What a terminal would take for an order does not reach it.
TEST(Values, OfObjectsShowTheNameOfTheirType) {
    ScratchFolder const folder;
    auto bytes = folder.bytesOf(VELKCOM_SMALL_LIBRARY);
    std::string const name = "IDispatch";
    ASSERT_NE(bytes.find(name), bytes.npos);
    for (char const sign : {'D', '\x1b'}) {
        bytes[bytes.find(name) + 1] = sign;
        std::ofstream("odd.tlb", std::ios::binary) << bytes;
        ObjectOf object(OLESTR("odd.tlb"));
        VARIANT value{};
        value.vt = VT_DISPATCH;
        value.pdispVal = &object;
        EXPECT_EQ(resultText(value), sign == 'D' ? "object:IDispatch" : "object:I?ispatch");
    }
    VARIANT value{};
    value.vt = VT_DISPATCH;
    ObjectOf unknown(OLESTR("none.tlb"));
    EXPECT_EQ(resultText(value), "nothing");
    value.pdispVal = &unknown;
    EXPECT_EQ(resultText(value), "object");
}

TEST(Libraries, OfAModuleArePrintedByTheirNumbers) {
    for (auto const& [number, name] : {std::pair("", "VelkComTestsLib"),
                                       {"/1", "VelkComTestsLib"},
                                       {"/2", "Shapes"},
                                       {"\\2", "Shapes"}}) {
        auto const printed = run({"typelib", VELKCOM_TWO_LIBRARIES + std::string(number)});
        EXPECT_EQ(printed.code, 0) << number << printed.errors;
        EXPECT_NE(printed.out.find(std::string("library ") + name), std::string::npos) << number;
    }
}

}  // namespace
}  // namespace velk::velkcom::test
