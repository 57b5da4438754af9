// How types, members and names are found, and what a library is loaded from.
// What they are is in the printed text of the library.

#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include <objbase.h>

#include "code_names.h"
#include "shapes.h"
#include "support/data_table.h"
#include "support/value_notation.h"

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
struct Lookup {
    explicit Lookup(DataRow const& row) : asked(words(row["asked"])) {
        auto const of = words(row["of"]);
        if (of.empty()) return;
        type = typeNamed(library.get(), wide(of[0]).c_str());
        if (of.size() > 1) type = otherView(type.get());
    }

    int number(std::size_t word = 0) const { return std::stoi(asked.at(word), nullptr, 0); }
    UINT index() const { return static_cast<UINT>(number()); }

    // A type by its name, with its place and kind as the library tells them.
    std::string described(HRESULT code, ITypeInfo* raw) {
        if (FAILED(code)) return codeName(code);
        Owned<ITypeInfo> const found(raw);
        ITypeLib* containing = nullptr;
        UINT place = 0;
        EXPECT_EQ(found->GetContainingTypeLib(&containing, &place), S_OK);
        EXPECT_EQ(Owned<ITypeLib>(containing), library);
        TYPEKIND kind = TKIND_MAX;
        EXPECT_EQ(library->GetTypeInfoType(place, &kind), S_OK);
        return narrowed(nameOf(raw)) + ' ' + std::to_string(place) + ' ' + kindText(kind);
    }

    std::vector<std::string> asked;
    Owned<ITypeLib> library = loadShapes();
    Owned<ITypeInfo> type;
};

std::string ids(Lookup const& lookup) {
    std::vector<Wide> texts;
    for (auto const& word : lookup.asked) texts.push_back(wide(word));
    std::vector<LPOLESTR> names;
    for (auto& text : texts) names.push_back(text.data());
    std::vector<MEMBERID> found(names.size(), 4711);
    auto answer = codeName(
        lookup.type->GetIDsOfNames(names.data(), static_cast<UINT>(names.size()), found.data()));
    for (auto const id : found) answer += ' ' + std::to_string(id);
    return answer;
}

std::string names(Lookup const& lookup) {
    BSTR found[8] = {};
    UINT count = 0;
    auto answer = codeName(
        lookup.type->GetNames(lookup.number(), found, static_cast<UINT>(lookup.number(1)), &count));
    for (UINT i = 0; i < count; ++i) answer += ' ' + narrowed(taken(found[i]));
    return answer;
}

// The spelling that is left in the caller's text follows a colon.
std::string find(Lookup const& lookup) {
    Wide name = lookup.asked.size() > 1 ? wide(lookup.asked[1]) : Wide();
    ITypeInfo* types[8] = {};
    MEMBERID members[8] = {};
    auto count = static_cast<USHORT>(lookup.number());
    auto answer = codeName(lookup.library->FindName(name.data(), 0, types, members, &count));
    for (USHORT i = 0; i < count; ++i) {
        answer += ' ' + narrowed(nameOf(Owned<ITypeInfo>(types[i]).get())) + ' ' +
                  std::to_string(members[i]);
    }
    for (USHORT i = count; i < 8; ++i) EXPECT_EQ(types[i], nullptr);
    return answer + ": " + narrowed(name);
}

std::string help(Lookup const& lookup) {
    BSTR text = nullptr;
    auto const ask = [&](auto& object, BSTR* out) {
        return object.GetDocumentation(lookup.number(), nullptr, out, nullptr, nullptr);
    };
    HRESULT const code = lookup.type ? ask(*lookup.type, &text) : ask(*lookup.library, &text);
    EXPECT_EQ(lookup.type ? ask(*lookup.type, nullptr) : ask(*lookup.library, nullptr), code);
    return codeName(code) + ' ' + narrowed(taken(text));
}

std::string place(Lookup const& lookup) {
    ITypeInfo2* extended = nullptr;
    EXPECT_EQ(lookup.type->QueryInterface(IID_ITypeInfo2, reinterpret_cast<void**>(&extended)),
              S_OK);
    UINT index = 4711;
    HRESULT const code = Owned<ITypeInfo2>(extended)->GetFuncIndexOfMemId(
        lookup.number(), static_cast<INVOKEKIND>(lookup.number(1)), &index);
    return codeName(code) + (code == S_OK ? ' ' + std::to_string(index) : "");
}

std::map<std::string, std::function<std::
                                        string(
                                            Lookup&)>> const questions = {{"ids", ids},
                                                                          {"names", names},
                                                                          {"find", find},
                                                                          {"help", help},
                                                                          {"place", place},
                                                                          {"identified",
                                                                           [](Lookup& lookup) {
                                                                               ITypeInfo* found =
                                                                                   nullptr;
                                                                               auto const id =
                                                                                   shapesId(static_cast<
                                                                                            BYTE>(
                                                                                       lookup
                                                                                           .number()));
                                                                               HRESULT const code =
                                                                                   lookup.library
                                                                                       ->GetTypeInfoOfGuid(
                                                                                           id,
                                                                                           &found);
                                                                               return lookup
                                                                                   .described(
                                                                                       code, found);
                                                                           }},
                                                                          {"at",
                                                                           [](Lookup& lookup) {
                                                                               ITypeInfo* found =
                                                                                   nullptr;
                                                                               HRESULT const code =
                                                                                   lookup.library
                                                                                       ->GetTypeInfo(
                                                                                           lookup
                                                                                               .index(),
                                                                                           &found);
                                                                               return lookup
                                                                                   .described(
                                                                                       code, found);
                                                                           }},
                                                                          {"entry",
                                                                           [](Lookup& lookup) {
                                                                               return codeName(
                                                                                   lookup.type->GetDllEntry(
                                                                                       lookup
                                                                                           .number(),
                                                                                       INVOKE_FUNC,
                                                                                       nullptr,
                                                                                       nullptr,
                                                                                       nullptr));
                                                                           }},
                                                                          {"variable",
                                                                           [](Lookup& lookup) {
                                                                               VARDESC* none =
                                                                                   nullptr;
                                                                               return codeName(
                                                                                   lookup.type
                                                                                       ->GetVarDesc(
                                                                                           lookup
                                                                                               .index(),
                                                                                           &none));
                                                                           }},
                                                                          {"function",
                                                                           [](Lookup& lookup) {
                                                                               FUNCDESC* none =
                                                                                   nullptr;
                                                                               return codeName(
                                                                                   lookup.type
                                                                                       ->GetFuncDesc(
                                                                                           lookup
                                                                                               .index(),
                                                                                           &none));
                                                                           }},
                                                                          {"implemented",
                                                                           [](Lookup& lookup) {
                                                                               HREFTYPE none = 0;
                                                                               return codeName(
                                                                                   lookup.type
                                                                                       ->GetRefTypeOfImplType(
                                                                                           lookup
                                                                                               .index(),
                                                                                           &none));
                                                                           }}};

TEST(Library, FindsWhatItHas) {
    expectTable("typelib/lookups.tsv", [](DataRow const& row) {
        Lookup lookup(row);
        return questions.at(row["question"])(lookup);
    });
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
