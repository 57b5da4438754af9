// How types, members and names are found, and what a library is loaded from.
// What they are is in the printed text of the library.

#include <fstream>
#include <map>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include <objbase.h>

#include "code_names.h"
#include "conformance/automation/value_notation.h"
#include "shapes.h"
#include "support/data_table.h"

namespace velk::test {
namespace {

std::vector<std::string> words(std::string const& cell) {
    std::istringstream stream(cell);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string narrowed(Wide const& text) {
    return narrow(text.data(), text.size());
}

std::string kindText(TYPEKIND kind) {
    static constexpr char const* names[] = {"enum",     "record",  "module", "interface",
                                            "dispatch", "coclass", "alias",  "union"};
    return kind < TKIND_MAX ? names[kind] : "?";
}

// One question to the library of shapes or to one of its types.
class Lookup {
  public:
    explicit Lookup(DataRow const& row) : asked_(row["asked"]) {
        auto const of = words(row["of"]);
        if (of.empty()) return;
        type_ = typeNamed(library_.get(), wide(of[0]).c_str());
        if (of.size() > 1) type_ = otherView(type_.get());
    }

    std::string ids() {
        std::vector<Wide> texts;
        for (auto const& word : words(asked_)) texts.push_back(wide(word));
        std::vector<LPOLESTR> names;
        for (auto& text : texts) names.push_back(text.data());
        std::vector<MEMBERID> found(names.size(), 4711);
        auto answer = codeName(
            type_->GetIDsOfNames(names.data(), static_cast<UINT>(names.size()), found.data()));
        for (auto const id : found) answer += ' ' + std::to_string(id);
        return answer;
    }
    std::string names() {
        BSTR found[8] = {};
        UINT count = 0;
        auto answer = codeName(type_->GetNames(number(0), found, number(1), &count));
        for (UINT i = 0; i < count; ++i) answer += ' ' + narrowed(taken(found[i]));
        return answer;
    }
    // The spelling that is left in the caller's text follows a colon.
    std::string find() {
        Wide name = words(asked_).size() > 1 ? wide(words(asked_)[1]) : Wide();
        ITypeInfo* types[8] = {};
        MEMBERID members[8] = {};
        auto const room = static_cast<USHORT>(number(0));
        USHORT count = room;
        auto answer = codeName(library_->FindName(name.data(), 0, types, members, &count));
        for (USHORT i = 0; i < count; ++i) {
            answer += ' ' + narrowed(nameOf(Owned<ITypeInfo>(types[i]).get())) + ' ' +
                      std::to_string(members[i]);
        }
        for (USHORT i = count; i < 8; ++i) EXPECT_EQ(types[i], nullptr);
        return answer + ": " + narrowed(name);
    }
    std::string identified() {
        ITypeInfo* found = nullptr;
        HRESULT const code =
            library_->GetTypeInfoOfGuid(shapesId(static_cast<BYTE>(number(0))), &found);
        return described(code, found);
    }
    std::string at() {
        ITypeInfo* found = nullptr;
        HRESULT const code = library_->GetTypeInfo(static_cast<UINT>(number(0)), &found);
        return described(code, found);
    }
    std::string help() {
        BSTR text = nullptr;
        HRESULT const code =
            type_ ? type_->GetDocumentation(number(0), nullptr, &text, nullptr, nullptr)
                  : library_->GetDocumentation(number(0), nullptr, &text, nullptr, nullptr);
        return codeName(code) + ' ' + narrowed(taken(text));
    }
    std::string nothing() {
        return codeName(
            type_ ? type_->GetDocumentation(number(0), nullptr, nullptr, nullptr, nullptr)
                  : library_->GetDocumentation(number(0), nullptr, nullptr, nullptr, nullptr));
    }
    std::string entry() {
        return codeName(type_->GetDllEntry(number(0), INVOKE_FUNC, nullptr, nullptr, nullptr));
    }
    std::string variable() {
        VARDESC* none = nullptr;
        return codeName(type_->GetVarDesc(static_cast<UINT>(number(0)), &none));
    }
    std::string function() {
        FUNCDESC* none = nullptr;
        return codeName(type_->GetFuncDesc(static_cast<UINT>(number(0)), &none));
    }
    std::string implemented() {
        HREFTYPE none = 0;
        return codeName(type_->GetRefTypeOfImplType(static_cast<UINT>(number(0)), &none));
    }
    std::string place() {
        ITypeInfo2* extended = nullptr;
        EXPECT_EQ(type_->QueryInterface(IID_ITypeInfo2, reinterpret_cast<void**>(&extended)), S_OK);
        UINT index = 4711;
        HRESULT const code = Owned<ITypeInfo2>(extended)->GetFuncIndexOfMemId(
            number(0), static_cast<INVOKEKIND>(number(1)), &index);
        return codeName(code) + (code == S_OK ? ' ' + std::to_string(index) : "");
    }

  private:
    int number(std::size_t word) const { return std::stoi(words(asked_).at(word), nullptr, 0); }

    // A type by its name, with its place and kind as the library tells them.
    std::string described(HRESULT code, ITypeInfo* found) {
        if (FAILED(code)) return codeName(code);
        Owned<ITypeInfo> const type(found);
        ITypeLib* containing = nullptr;
        UINT index = 0;
        EXPECT_EQ(type->GetContainingTypeLib(&containing, &index), S_OK);
        EXPECT_EQ(Owned<ITypeLib>(containing), library_);
        TYPEKIND kind = TKIND_MAX;
        EXPECT_EQ(library_->GetTypeInfoType(index, &kind), S_OK);
        return narrowed(nameOf(found)) + ' ' + std::to_string(index) + ' ' + kindText(kind);
    }

    std::string asked_;
    Owned<ITypeLib> library_ = loadShapes();
    Owned<ITypeInfo> type_;
};

TEST(Library, FindsWhatItHas) {
    std::map<std::string, std::string (Lookup::*)()> const questions = {
        {"ids", &Lookup::ids},
        {"names", &Lookup::names},
        {"find", &Lookup::find},
        {"identified", &Lookup::identified},
        {"at", &Lookup::at},
        {"help", &Lookup::help},
        {"nothing", &Lookup::nothing},
        {"entry", &Lookup::entry},
        {"variable", &Lookup::variable},
        {"function", &Lookup::function},
        {"place", &Lookup::place},
        {"implemented", &Lookup::implemented}};
    expectTable("typelib/lookups.tsv",
                [&](DataRow const& row) { return (Lookup(row).*questions.at(row["question"]))(); });
}

// By their places, by which other libraries name those without an identifier.
TEST(StandardTypes, StandInThePublishedOrder) {
    constexpr GUID id = {0x00020430, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    ITypeLib* raw = nullptr;
    ASSERT_EQ(LoadRegTypeLib(id, 2, 0, 0, &raw), S_OK);
    Owned<ITypeLib> const library(raw);
    EXPECT_EQ(library->GetTypeInfoCount(), rowsOf("typelib/standard_types.tsv").size());
    expectTable("typelib/standard_types.tsv", [&](DataRow const& row) {
        ITypeInfo* type = nullptr;
        EXPECT_EQ(library->GetTypeInfo(static_cast<UINT>(std::stoi(row["place"])), &type), S_OK);
        Owned<ITypeInfo> const owned(type);
        auto const attributes = attributesOf(type);
        OLECHAR guid[39] = {};
        EXPECT_EQ(StringFromGUID2(attributes->guid, guid, 39), 39);
        return narrowed(nameOf(type)) + ' ' + kindText(attributes->typekind) + ' ' +
               narrow(guid, 38);
    });
}

TEST(Library, IsReadOnceAndLivesAsLongAsItsTypes) {
    auto first = loadShapes();
    auto second = loadShapes();
    EXPECT_EQ(first, second);
    auto const type = typeNamed(first.get(), OLESTR("Color"));
    first.reset();
    second.reset();
    EXPECT_EQ(nameOf(type.get()), OLESTR("Color"));
}

TEST(Library, RefusesWhatIsNoLibraryAndNullPointers) {
    ITypeLib* none = nullptr;
    EXPECT_EQ(LoadTypeLibEx(OLESTR("/no/such/file.tlb"), REGKIND_NONE, &none),
              TYPE_E_CANTLOADLIBRARY);
    EXPECT_EQ(LoadTypeLibEx(nullptr, REGKIND_NONE, &none), E_INVALIDARG);
    EXPECT_EQ(LoadTypeLibEx(shapesPath().c_str(), REGKIND_NONE, nullptr), E_INVALIDARG);
    auto const file = std::filesystem::temp_directory_path() / "velk_no_library.tlb";
    std::ofstream(file) << "this is a text";
    EXPECT_EQ(LoadTypeLibEx(file.string<OLECHAR>().c_str(), REGKIND_NONE, &none),
              TYPE_E_CANTLOADLIBRARY);
    std::filesystem::remove(file);
    EXPECT_EQ(none, nullptr);

    auto const library = loadShapes();
    Wide name = OLESTR("Count");
    ITypeInfo* types[1] = {};
    MEMBERID members[1] = {};
    USHORT count = 1;
    EXPECT_EQ(library->FindName(nullptr, 0, types, members, &count), E_INVALIDARG);
    EXPECT_EQ(library->FindName(name.data(), 0, nullptr, members, &count), E_INVALIDARG);
    EXPECT_EQ(library->FindName(name.data(), 0, types, nullptr, &count), E_INVALIDARG);
    EXPECT_EQ(library->FindName(name.data(), 0, types, members, nullptr), E_INVALIDARG);
}

}  // namespace
}  // namespace velk::test
