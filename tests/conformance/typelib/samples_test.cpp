// Libraries made by others, where a folder with some is given.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include "shapes.h"
#include "support/data_table.h"
#include "support/expected_difference.h"
#include "typelib_printer.h"

namespace velk::test {
namespace {

std::vector<std::filesystem::path> filesIn(char const* variable) {
    std::vector<std::filesystem::path> files;
    char const* const folder = std::getenv(variable);
    if (!folder) return files;
    for (auto const& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    return files;
}

// The text of a library, all of whose references lead to a type.
std::string printed(std::filesystem::path const& file) {
    std::ostringstream out;
    std::ostringstream errors;
    EXPECT_EQ(tools::printTypeLibrary(file, out, errors), 0) << errors.str();
    EXPECT_EQ(out.str().find("<0x"), std::string::npos) << file << " refers to nothing";
    return out.str();
}

// A dump that is independent of us lists every name in the library's table.
std::vector<std::string> namesIn(std::filesystem::path const& dump) {
    std::ifstream stream(dump, std::ios::binary);
    std::string const text{std::istreambuf_iterator<char>(stream), {}};
    std::regex const entry(R"(name = "([A-Za-z_][A-Za-z0-9_]*)\")");
    std::vector<std::string> names;
    for (std::sregex_iterator at(text.begin(), text.end(), entry), end; at != end; ++at) {
        names.push_back((*at)[1]);
    }
    return names;
}

TEST(Samples, AreReadWithEveryNameOfTheirDumps) {
    auto const files = filesIn("VELK_TYPELIBS");
    if (files.empty()) GTEST_SKIP() << "VELK_TYPELIBS names no folder with libraries";
    int compared = 0;
    for (auto const& file : files) {
        if (file.extension() != ".tlb") continue;
        auto const dump =
            file.parent_path() / "expected" / (file.filename().string() + ".winedump.txt");
        std::string const text = printed(file);
        auto const names = namesIn(dump);
        EXPECT_FALSE(names.empty()) << dump;
        for (auto const& name : names) {
            EXPECT_NE(text.find(name), std::string::npos) << file << " lacks " << name;
        }
        EXPECT_EQ(text.find("unreadable"), std::string::npos) << file;
        expectDifference("library-of-32-bits",
                         [&] { expectApproved("typelib/" + file.stem().string() + ".txt", text); });
        ++compared;
    }
    EXPECT_GT(compared, 0);
}

TEST(Samples, InModulesAreReadWhole) {
    auto const files = filesIn("VELK_WINE_MODULES");
    if (files.empty()) GTEST_SKIP() << "VELK_WINE_MODULES names no folder with modules";
    int libraries = 0;
    for (auto const& file : files) {
        auto const native = file.string<OLECHAR>();
        ITypeLib* library = nullptr;
        HRESULT const result = LoadTypeLibEx(native.c_str(), REGKIND_NONE, &library);
        EXPECT_TRUE(result == S_OK || result == TYPE_E_CANTLOADLIBRARY) << file;
        if (FAILED(result)) continue;
        Owned<ITypeLib> const owned(library);
        EXPECT_GT(library->GetTypeInfoCount(), 0u) << file;
        EXPECT_EQ(printed(file).find("unreadable"), std::string::npos) << file;
        ++libraries;
    }
    EXPECT_GT(libraries, 0);
}

}  // namespace
}  // namespace velk::test
