// Owners, errors and texts.

#include <functional>
#include <stdexcept>

#include "com/error.h"
#include "com/owners.h"
#include "com/utf.h"
#include "support/data_table.h"
#include "test_module.h"

namespace velk::com::test {
namespace {

TEST(ComPtr, CountsEveryCopyOnce) {
    CountingUnknown object;
    {
        ComPtr<IUnknown> shared(&object);
        ComPtr<IUnknown> copy = shared;
        EXPECT_EQ(object.references, 2U);
        ComPtr<IUnknown> moved = std::move(copy);
        EXPECT_EQ(object.references, 2U);
        EXPECT_FALSE(copy);
        moved = moved;
        EXPECT_EQ(object.references, 2U);
        moved = nullptr;
        EXPECT_EQ(object.references, 1U);
        EXPECT_EQ(*shared.put(), nullptr);
        EXPECT_EQ(object.references, 0U);
    }
    object.references = 1;
    ComPtr<IUnknown> adopted(&object, adopt);
    EXPECT_EQ(object.references, 1U);
    EXPECT_EQ(adopted.copy(), &object);
    EXPECT_EQ(object.references, 2U);
    EXPECT_EQ(adopted.detach(), &object);
    EXPECT_EQ(object.references, 2U);
    EXPECT_EQ(adopted.get(), nullptr);
}

/// Answers with this code, and leaves something that is no reference.
struct OddUnknown final : IUnknown {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
        *out = FAILED(code) ? this : nullptr;
        if (code == E_UNEXPECTED) throw 7;
        return code;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { throw 7; }
    HRESULT code = S_OK;
};

TEST(ComPtr, QueriesOtherInterfaces) {
    CountingUnknown object;
    ComPtr<IUnknown> pointer(&object);
    HRESULT code = E_FAIL;
    EXPECT_TRUE(pointer.query<IUnknown>(IID_IUnknown, &code));
    EXPECT_EQ(code, S_OK);
    EXPECT_FALSE(pointer.query<IDispatch>(IID_IDispatch, &code));
    EXPECT_EQ(code, E_NOINTERFACE);
    EXPECT_EQ(object.references, 1U);
    EXPECT_FALSE(ComPtr<IUnknown>().query<IUnknown>(IID_IUnknown, &code));
    EXPECT_EQ(code, E_POINTER);
    OddUnknown odd;
    for (HRESULT const answered : {S_OK, E_FAIL, E_UNEXPECTED}) {
        odd.code = answered;
        EXPECT_FALSE(ComPtr<IUnknown>(&odd).query<IUnknown>(IID_IUnknown, &code));
        EXPECT_EQ(code, answered == S_OK ? E_NOINTERFACE : answered);
    }
}

TEST(Owners, TextsKeepNulsAndLengths) {
    TextView const raw(OLESTR("a\0b"), 3);
    Bstr const text = makeBstr(raw);
    EXPECT_EQ(SysStringLen(text.get()), 3U);
    EXPECT_EQ(viewBstr(text), raw);
    EXPECT_NE(makeBstr({}).get(), nullptr);
    EXPECT_TRUE(viewBstr(BSTR{}).empty());
    // Never read: the length alone is refused.
    try {
        makeBstr(TextView(raw.data(), (std::size_t{1} << 31) + 1));
        FAIL() << "no error";
    } catch (Error const& error) {
        EXPECT_EQ(error.code(), E_OUTOFMEMORY);
    }
}

// What is left alive here fails the run at its end.
TEST(Owners, GiveBackWhatTheyHold) {
    CountingUnknown object;
    {
        Variant value;
        value.address()->vt = VT_UNKNOWN;
        value.address()->punkVal = ComPtr<IUnknown>(&object).copy();
        Variant const copy = copyVariant(value.get());
        EXPECT_EQ(object.references, 2U);
        Variant moved = std::move(value);
        EXPECT_EQ(object.references, 2U);
        EXPECT_EQ(value.get().vt, VT_EMPTY);
        EXPECT_EQ(moved.put()->vt, VT_EMPTY);
        EXPECT_EQ(object.references, 1U);
    }
    EXPECT_EQ(object.references, 0U);
    ExceptionInfo info;
    info.address()->bstrSource = SysAllocString(OLESTR("source"));
    info.address()->bstrDescription = SysAllocString(OLESTR("description"));
    info.address()->bstrHelpFile = SysAllocString(OLESTR("help"));
    ExceptionInfo const moved = std::move(info);
    EXPECT_EQ(viewBstr(moved.get().bstrHelpFile), OLESTR("help"));
    EXPECT_EQ(info.get().bstrSource, nullptr);
    SafeArray const array(SafeArrayCreateVector(VT_BSTR, 0, 3));
    EXPECT_NE(array.get(), nullptr);
    TaskMemory block(CoTaskMemAlloc(16));
    block = TaskMemory(CoTaskMemAlloc(32));
    EXPECT_NE(block.get(), nullptr);
}

HRESULT atBoundary(std::function<void()> const& action) noexcept {
    try {
        action();
        return S_OK;
    }
    VELK_COM_CATCH
}

TEST(Error, BecomesAnHresultAtTheBoundary) {
    std::pair<HRESULT, std::function<void()>> const cases[] = {
        {S_OK, [] {}},
        {DISP_E_BADINDEX, [] { throw Error(DISP_E_BADINDEX); }},
        // A success code thrown as an error must not read as success.
        {E_UNEXPECTED, [] { throw Error(S_FALSE); }},
        {E_OUTOFMEMORY, [] { throw std::bad_alloc(); }},
        {E_FAIL, [] { throw std::out_of_range("x"); }},
        {E_UNEXPECTED, [] { throw 7; }},
        {E_ACCESSDENIED, [] { throwIfFailed(E_ACCESSDENIED); }},
        {S_OK, [] { throwIfFailed(S_FALSE); }},
        {E_ACCESSDENIED, [] { throwIfError(ERROR_ACCESS_DENIED, "x"); }},
        {S_OK, [] { throwIfError(ERROR_SUCCESS, "x"); }},
    };
    for (auto const& [expected, action] : cases) {
        EXPECT_EQ(atBoundary(action), expected) << &expected - &cases[0].first;
    }
    EXPECT_STREQ(Error(E_POINTER).what(), "0x80004003");
    try {
        throwIfFailed(E_FAIL, "open the thing");
        FAIL() << "no error";
    } catch (Error const& error) {
        EXPECT_STREQ(error.what(), "open the thing: 0x80004005");
    }
}

/// Of two bytes, or four digits, a character.
template <typename Character>
std::basic_string<Character> unitsOf(std::string const& digits) {
    std::basic_string<Character> units;
    constexpr std::size_t width = 2 * sizeof(Character);
    for (std::size_t i = 0; i < digits.size(); i += width)
        units += static_cast<Character>(std::stoul(digits.substr(i, width), nullptr, 16));
    return units;
}
template <typename Character>
std::string digitsOf(std::basic_string<Character> const& units) {
    std::string digits;
    for (auto const unit : units) {
        auto const value = static_cast<std::make_unsigned_t<Character>>(unit);
        digits += hexadecimal(value).substr(10 - 2 * sizeof(Character));
    }
    return digits;
}

TEST(Utf, TakesEachFormToTheOther) {
    velk::test::expectTable("com/utf.tsv", [](auto const& row) {
        if (row["form"] == "16") return digitsOf(toUtf8(unitsOf<OLECHAR>(row["units"])));
        auto const bytes = unitsOf<char>(row["units"]);
        auto const read = fromUtf8(bytes);
        auto const lenient = digitsOf(fromUtf8Leniently(bytes));
        EXPECT_EQ(read ? digitsOf(*read) : lenient, lenient);
        return (read ? "" : "refused, or ") + lenient;
    });
}

TEST(Utf, ComparesAsciiLettersWithoutCase) {
    EXPECT_TRUE(equalIgnoringCase(OLESTR("ModuleZ9"), OLESTR("mODULEz9")));
    EXPECT_FALSE(equalIgnoringCase(OLESTR("module"), OLESTR("modul")));
    EXPECT_FALSE(equalIgnoringCase(OLESTR("@["), OLESTR("`{")));
    EXPECT_FALSE(equalIgnoringCase(OLESTR("\u00C4"), OLESTR("\u00E4")));
}

}  // namespace
}  // namespace velk::com::test
