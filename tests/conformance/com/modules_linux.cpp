/// Names of modules and files as this system has them.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "conformance/com/test_classes.h"
#include "support/odd_files_linux.h"

namespace {

using namespace velk::test;
namespace files = std::filesystem;

files::path serverFile() {
    return serverPath(OLESTR("velktest_classes"));
}

TEST(ModulesHere, ARelativePathStaysRightWhenTheFolderChanges) {
    auto const before = files::current_path();
    files::current_path(serverFile().parent_path());
    HMODULE const module = LoadLibraryW(OLESTR("./velktest_classes.so"));
    files::current_path("/");
    ASSERT_NE(module, nullptr);
    OLECHAR path[1024];
    GetModuleFileNameW(module, path, 1024);
    EXPECT_TRUE(files::equivalent(files::path(path), serverFile()));
    EXPECT_NE(GetProcAddress(module, "DllCanUnloadNow"), nullptr);
    // The server is linked with the layer, which has this symbol.
    EXPECT_EQ(GetProcAddress(module, "CoCreateGuid"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PROC_NOT_FOUND});
    FreeLibrary(module);
    files::current_path(before);
}

TEST(ModulesHere, ACutPathEndsInAZero) {
    OLECHAR path[4] = {u'#', u'#', u'#', u'#'};
    EXPECT_EQ(GetModuleFileNameW(nullptr, path, 3), 3u);
    EXPECT_EQ(path[2], 0);
    EXPECT_EQ(path[3], u'#');
}

TEST(ModulesHere, TheLayerStandsForTheSystemsLibraries) {
    HMODULE const layer = moduleOf(reinterpret_cast<void const*>(&CoTaskMemAlloc));
    ASSERT_NE(layer, nullptr);
    for (auto const* name : {OLESTR("OLEAUT32.DLL"), OLESTR("oleaut32"), OLESTR("Ole32.dll"),
                             OLESTR("ADVAPI32"), OLESTR("kernel32.dll")}) {
        EXPECT_EQ(GetModuleHandleW(name), layer);
    }
    EXPECT_EQ(GetModuleHandleW(OLESTR("ole32.so")), nullptr);
    EXPECT_NE(GetProcAddress(layer, "CoCreateGuid"), nullptr);
}

/// Loads a file as data and looks for a resource in it; must not crash.
void lookInto(files::path const& path) {
    HMODULE const module =
        LoadLibraryExW(path.u16string().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    if (module == nullptr) return;
    HRSRC const found = FindResourceW(module, MAKEINTRESOURCEW(102), OLESTR("REGISTRY"));
    if (found != nullptr) {
        DWORD const size = SizeofResource(module, found);
        auto const* data = static_cast<char const*>(LoadResource(module, found));
        ASSERT_TRUE(size == 0 || data != nullptr);
        EXPECT_EQ(std::string(data, size).size(), size);
    }
    FreeLibrary(module);
}

TEST(ModulesHere, APipeIsNoData) {
    OddFiles const made;
    auto const pipe = made.pipe("x.so").u16string();
    EXPECT_EQ(LoadLibraryExW(pipe.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_EXE_FORMAT});
}

TEST(ModulesHere, DamagedFilesAreReadWithoutHarm) {
    std::ifstream stream(serverFile(), std::ios::binary);
    std::vector<char> const whole{std::istreambuf_iterator<char>(stream), {}};
    OddFiles const made;
    auto const damaged = made.at("damaged.so");
    auto const write = [&](std::vector<char> const& bytes) {
        std::ofstream(damaged, std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    };
    for (std::size_t size = 0; size < whole.size(); size += whole.size() / 41 + 1) {
        write({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
        lookInto(damaged);
    }
    // The header of the file, the table of its sections, and its resources.
    std::minstd_rand random(20240607);
    std::uint64_t sections = 0;
    std::memcpy(&sections, whole.data() + 0x28, sizeof sections);
    char const marker[] = "first resource";
    auto const found = std::search(whole.begin(), whole.end(), marker, marker + sizeof marker - 1);
    ASSERT_NE(found, whole.end());
    auto const resources = static_cast<std::size_t>(found - whole.begin()) - 80;
    struct Range {
        std::size_t begin, size;
    };
    Range const ranges[] = {{0, 64}, {sections, whole.size() - sections}, {resources, 400}};
    for (auto const& range : ranges) {
        for (int time = 0; time < 80; ++time) {
            auto bytes = whole;
            for (int hit = 0; hit < 3; ++hit) {
                bytes[range.begin + random() % range.size] = static_cast<char>(random());
            }
            write(bytes);
            lookInto(damaged);
        }
    }
}

}  // namespace
