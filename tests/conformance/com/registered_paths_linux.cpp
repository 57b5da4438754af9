/// What stands in InprocServer32, and what comes of it: the code of the very
/// file that is registered, or none.
#include <functional>
#include <map>
#include <sstream>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <velk_paths.h>

#include "conformance/com/test_classes.h"
#include "support/data_table.h"
#include "support/odd_files_linux.h"

namespace {

using namespace velk::test;
namespace files = std::filesystem;

/// Run before the dynamic loader opens anything.
std::function<void()> beforeLoading;

files::path serverFile() {
    return serverPath(OLESTR("velktest_needy"));
}

/// The server, and beside it the library that it finds by its own folder.
files::path server(OddFiles const& made, std::string const& name) {
    auto const path = made.copy(serverFile(), name);
    auto const neighbour = files::path("libvelktest_neighbour.so");
    files::copy_file(serverFile().parent_path() / neighbour, path.parent_path() / neighbour,
                     files::copy_options::skip_existing);
    return path;
}

/// What a row's steps make, each a word and names: server:x.so; link:x.so:y.so
void make(OddFiles const& made, std::string const& steps) {
    std::istringstream all(steps);
    for (std::string step; std::getline(all >> std::ws, step, ';');) {
        std::istringstream words(step);
        std::string what, name, rest;
        std::getline(words, what, ':');
        std::getline(words, name, ':');
        std::getline(words, rest);
        if (what == "server") server(made, name);
        // By a byte that is no UTF-8.
        if (what == "latin") server(made, "\xE4.so");
        if (what == "folder") made.folder(name);
        if (what == "link") made.link(name, rest);
        if (what == "pipe") made.pipe(name);
        if (what == "text") made.written(name, rest);
        if (what == "cut") made.cut(serverFile(), name, std::stol(rest));
        if (what == "byte") {
            // For one number in its header the server is no shared object.
            auto const number = static_cast<char>(std::stol(rest.substr(rest.find(':') + 1)));
            made.changed(serverFile(), name, std::stoul(rest), {number});
        }
        if (what == "exchange") {
            auto const path = made.at(name), other = made.at(rest);
            beforeLoading = [=] { files::rename(other, path); };
        }
    }
}

/// A cell in UTF-16, halves of characters too.
Text unitsOf(std::string const& cell) {
    Text units;
    for (std::size_t at = 0; at < cell.size();) {
        auto const lead = static_cast<unsigned char>(cell[at]);
        int const more = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        char32_t unit = more == 0 ? lead : lead & (0x3F >> more);
        for (int next = 1; next <= more; ++next) unit = unit << 6 | (cell[at + next] & 0x3F);
        if (unit > 0xFFFF) units.push_back(static_cast<char16_t>(0xD7C0 + (unit >> 10)));
        units.push_back(static_cast<char16_t>(unit > 0xFFFF ? 0xDC00 | (unit & 0x3FF) : unit));
        at += 1 + static_cast<std::size_t>(more);
    }
    return units;
}

/// A row's path: {} is the folder of what is made, < that of the servers, and
/// a{9} is nine times a.
Text pathOf(OddFiles const& made, std::string path) {
    auto const put = [&](std::string const& what, std::string const& by) {
        if (auto const at = path.find(what); at != path.npos) path.replace(at, what.size(), by);
    };
    put("{}", made.at("").parent_path());
    put("<", serverFile().parent_path());
    put("(program)", files::canonical("/proc/self/exe"));
    put("x{300}", std::string(300, 'x'));
    put("/{5000}", std::string(5000, '/'));
    return unitsOf(path);
}

std::string told(HRESULT code) {
    static std::map<HRESULT, char const*> const names = {
        {S_OK, "made"},
        {HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT), "bad format"},
        {HRESULT_FROM_WIN32(ERROR_BAD_PATHNAME), "bad path"},
        {HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND), "not there"},
        {HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE), "too long"},
        {REGDB_E_CLASSNOTREG, "not registered"},
        {CO_E_ERRORINDLL, "no classes"}};
    return names.contains(code) ? names.at(code) : std::to_string(code);
}

/// The object's code is the registered file's, and that is known by this path.
void expectFrom(Text const& path, IUnknown& object) {
    void* const code = **reinterpret_cast<void***>(&object);
    HMODULE const module = moduleOf(code);
    ASSERT_NE(module, nullptr);
    OLECHAR name[1024];
    EXPECT_EQ(Text(name, GetModuleFileNameW(module, name, 1024)), path);
    EXPECT_EQ(GetModuleHandleW(path.c_str()), module);
    Dl_info known{};
    ASSERT_NE(dladdr(code, &known), 0);
    char file[1024];
    ASSERT_LT(VelkFileOfPath(path.c_str(), file, sizeof file), sizeof file);
    EXPECT_TRUE(files::equivalent(known.dli_fname, file)) << known.dli_fname;
}

TEST(RegisteredPaths, LoadTheRegisteredFileOrNothing) {
    expectTable("com/registered_paths.tsv", [](DataRow const& row) {
        ApartmentStay const stay(COINIT_MULTITHREADED);
        OddFiles const made;
        make(made, row["made"]);
        Text const path = pathOf(made, row["path"]);
        RegisteredClass const registered(plainClass, path);
        HRESULT code = S_OK;
        {
            Found object;
            code = create(plainClass, object);
            EXPECT_EQ(object.get() != nullptr, code == S_OK);
            if (object.get() != nullptr) expectFrom(path, *object.as<IUnknown>());
        }
        CoFreeUnusedLibraries();
        EXPECT_EQ(GetModuleHandleW(OLESTR("x")), nullptr);
        beforeLoading = nullptr;
        return told(code);
    });
}

}  // namespace

/// Stands before the C library's for the layer too.
extern "C" __attribute__((visibility("default"))) void* dlopen(char const* name, int flags) {
    auto const next = reinterpret_cast<decltype(&dlopen)>(dlsym(RTLD_NEXT, "dlopen"));
    if (beforeLoading) std::exchange(beforeLoading, nullptr)();
    return next(name, flags);
}
