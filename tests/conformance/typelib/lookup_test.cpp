// How types, members and names are found, and what a library is loaded from.
// What they are is in the printed text of the library.

#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <vector>

#include "code_names.h"
#include "shapes.h"
#include "support/data_table.h"

namespace velk::test {
namespace {

// One question to the library of shapes or to one of its types.
struct Lookup {
    explicit Lookup(DataRow const& row) {
        std::istringstream stream(row["asked"]);
        asked.assign(std::istream_iterator<std::string>(stream), {});
        if (!row["of"].empty()) type = typeNamed(*library, row["of"]);
    }

    int number(std::size_t word = 0) const { return std::stoi(asked.at(word), nullptr, 0); }
    UINT index() const { return static_cast<UINT>(number()); }

    std::vector<std::string> asked;
    ComPtr<ITypeLib> library = loadShapes();
    ComPtr<ITypeInfo> type;
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
    for (UINT i = 0; i < count; ++i) {
        answer += ' ' + textOf(found[i]);
        SysFreeString(found[i]);
    }
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
        ComPtr<ITypeInfo> const type(types[i], com::adopt);
        answer += ' ' + nameOf(*type) + ' ' + std::to_string(members[i]);
    }
    for (USHORT i = count; i < 8; ++i) EXPECT_EQ(types[i], nullptr);
    return answer + ": " + narrow(name.data(), name.size());
}

std::string help(Lookup const& lookup) {
    Value text;
    text->vt = VT_BSTR;
    auto const ask = [&](auto& object, BSTR* out) {
        return object.GetDocumentation(lookup.number(), nullptr, out, nullptr, nullptr);
    };
    auto* const out = &text->bstrVal;
    HRESULT const code = lookup.type ? ask(*lookup.type, out) : ask(*lookup.library, out);
    EXPECT_EQ(lookup.type ? ask(*lookup.type, nullptr) : ask(*lookup.library, nullptr), code);
    return codeName(code) + (code == S_OK ? ' ' + textOf(text->bstrVal) : "");
}

// A type by its name, with its place and kind as the library tells them.
std::string identified(Lookup const& lookup) {
    ComPtr<ITypeInfo> found;
    auto const id = shapesId(static_cast<BYTE>(lookup.number()));
    HRESULT const code = lookup.library->GetTypeInfoOfGuid(id, found.put());
    if (FAILED(code)) return codeName(code);
    ComPtr<ITypeLib> containing;
    UINT place = 0;
    EXPECT_EQ(found->GetContainingTypeLib(containing.put(), &place), S_OK);
    EXPECT_EQ(containing.get(), lookup.library.get());
    TYPEKIND kind = TKIND_MAX;
    EXPECT_EQ(lookup.library->GetTypeInfoType(place, &kind), S_OK);
    return nameOf(*found) + ' ' + std::to_string(place) + ' ' + std::to_string(kind);
}

std::string place(Lookup const& lookup) {
    auto const extended = lookup.type.query<ITypeInfo2>(IID_ITypeInfo2);
    UINT index = 4711;
    HRESULT const code = extended->GetFuncIndexOfMemId(
        lookup.number(), static_cast<INVOKEKIND>(lookup.number(1)), &index);
    return codeName(code) + (code == S_OK ? ' ' + std::to_string(index) : "");
}

// Of something that is not there.
std::string refusal(Lookup const& lookup) {
    std::string const what = lookup.asked.at(1);
    UINT const index = lookup.index();
    ComPtr<ITypeInfo> type;
    VARDESC* variable = nullptr;
    FUNCDESC* function = nullptr;
    HREFTYPE reference = 0;
    if (what == "type") return codeName(lookup.library->GetTypeInfo(index, type.put()));
    if (what == "variable") return codeName(lookup.type->GetVarDesc(index, &variable));
    if (what == "function") return codeName(lookup.type->GetFuncDesc(index, &function));
    if (what == "base") return codeName(lookup.type->GetRefTypeOfImplType(index, &reference));
    return codeName(
        lookup.type->GetDllEntry(lookup.number(), INVOKE_FUNC, nullptr, nullptr, nullptr));
}

TEST(Library, FindsWhatItHas) {
    std::map<std::string, std::function<std::string(Lookup const&)>> const questions = {
        {"ids", ids},     {"names", names},           {"find", find},      {"help", help},
        {"place", place}, {"identified", identified}, {"refusal", refusal}};
    expectTable("typelib/lookups.tsv",
                [&](DataRow const& row) { return questions.at(row["question"])(Lookup(row)); });
}

TEST(Library, IsReadOnceAndLivesAsLongAsItsTypes) {
    auto first = loadShapes();
    EXPECT_EQ(first.get(), loadShapes().get());
    auto const type = typeNamed(*first, "Color");
    first.reset();
    EXPECT_EQ(nameOf(*type), "Color");
}

TEST(Library, RefusesWhatIsNoLibraryAndNullPointers) {
    ComPtr<ITypeLib> none;
    auto const file = std::filesystem::temp_directory_path() / "velk_no_library.tlb";
    std::ofstream(file) << "this is a text";
    for (auto const& path : {Wide(OLESTR("/no/such/file.tlb")), file.string<OLECHAR>()}) {
        EXPECT_EQ(LoadTypeLibEx(path.c_str(), REGKIND_NONE, none.put()), TYPE_E_CANTLOADLIBRARY);
    }
    std::filesystem::remove(file);
    EXPECT_EQ(LoadTypeLibEx(nullptr, REGKIND_NONE, none.put()), E_INVALIDARG);
    EXPECT_EQ(LoadTypeLibEx(shapesPath().c_str(), REGKIND_NONE, nullptr), E_INVALIDARG);
    EXPECT_FALSE(none);
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
