/// What stands in InprocServer32, and what comes of it: the code of the very
/// file that is registered, or none.
#include <cctype>
#include <functional>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <velk_paths.h>

#include "conformance/com/test_classes.h"
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

/// A path, with a server where somebody might look instead.
Text beside(OddFiles const& made, std::string const& decoy, Text const& name) {
    server(made, decoy);
    return made.at("").u16string() + name;
}

/// A server that is no shared object for one number in its header.
Text otherKind(OddFiles const& made, std::size_t offset, char number) {
    return made.changed(serverFile(), "x.so", offset, {number}).u16string();
}

HRESULT const badFormat = HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT);
HRESULT const badPath = HRESULT_FROM_WIN32(ERROR_BAD_PATHNAME);
HRESULT const notThere = HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND);
HRESULT const tooLong = HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE);

struct Row {
    char const* what;
    std::function<Text(OddFiles const&)> make;
    HRESULT expected;

    friend std::ostream& operator<<(std::ostream& out, Row const& row) { return out << row.what; }
};

Row const rows[] = {
    {"a path", [](auto& made) { return server(made, "x.so").u16string(); }, S_OK},
    {"a link",
     [](auto& made) {
         server(made, "real.so");
         return made.link("real.so", "link.so").u16string();
     },
     S_OK},
    {"up behind a link",
     [](auto& made) {
         server(made, "there/x.so");
         made.folder("there/deep");
         made.link("there/deep", "link");
         return beside(made, "x.so", u"link/../x.so");
     },
     S_OK},
    {"quotes, percent signs and letters",
     [](auto& made) {
         return server(made, "it's \xC3\xA4\xE2\x82\xAC/\"100%\" \xF0\x9F\x98\x80 %PATH%.so")
             .u16string();
     },
     S_OK},
    {"a byte that is no UTF-8", [](auto& made) { return beside(made, "\xE4.so", u"\xDCE4.so"); },
     S_OK},
    {"a dollar", [](auto& made) { return server(made, "$1/a$b.so").u16string(); }, S_OK},
    {"folders with the loader's words",
     [](auto& made) { return server(made, "$LIB/${ORIGIN}$PLATFORM/x.so").u16string(); }, S_OK},
    {"a word of the loader, a server at its meaning",
     [](auto& made) { return beside(made, "lib/x86_64-linux-gnu/x.so", u"$LIB/x.so"); }, notThere},
    {"a file with the loader's word",
     [](auto& made) { return server(made, "$LIB.so").u16string(); }, badPath},
    {"the loader's origin",
     [](auto&) { return Text(u"$ORIGIN/tests/servers/velktest_classes.so"); }, badPath},
    {"a file name in the current folder", [](auto& made) { return server(made, "x.so"), u"x.so"; },
     badPath},
    {"a path from the current folder", [](auto& made) { return server(made, "x.so"), u"./x.so"; },
     badPath},
    {"a path up from the current folder",
     [](auto& made) { return server(made, "x.so"), made.folder("y"), u"y/../x.so"; }, badPath},
    // Found in LD_LIBRARY_PATH, which the build sets for this program.
    {"a bare name", [](auto&) { return Text(u"velktest_classes.so"); }, badPath},
    {"the layer", [](auto&) { return Text(u"ole32.dll"); }, badPath},
    {"a path in quotes",
     [](auto& made) { return u"\"" + server(made, "x.so").u16string() + u"\""; }, badPath},
    {"nothing", [](auto&) { return Text(); }, REGDB_E_CLASSNOTREG},
    {"blanks", [](auto&) { return Text(u"  "); }, badPath},
    {"a missing file", [](auto& made) { return made.at("x.so").u16string(); }, notThere},
    {"a missing folder", [](auto& made) { return made.at("").u16string() + u"y/x.so"; }, notThere},
    {"below a file", [](auto& made) { return server(made, "y").u16string() + u"/x.so"; }, notThere},
    {"half a character", [](auto& made) { return beside(made, "\xEF\xBF\xBD.so", u"\xD800.so"); },
     notThere},
    {"two halves of a byte's form",
     [](auto& made) { return beside(made, "\xC3\xA4.so", u"\xDCC3\xDCA4.so"); }, notThere},
    {"too long a name", [](auto& made) { return made.at("").u16string() + Text(300, u'x'); },
     tooLong},
    {"too long a path", [](auto&) { return Text(5000, u'/') + u"x.so"; }, REGDB_E_CLASSNOTREG},
    {"a folder", [](auto& made) { return made.folder("x.so").u16string(); }, badFormat},
    {"a pipe", [](auto& made) { return made.pipe("x.so").u16string(); }, badFormat},
    {"a link to a pipe",
     [](auto& made) { return made.link(made.pipe("pipe"), "x.so").u16string(); }, badFormat},
    {"a device", [](auto&) { return Text(u"/dev/zero"); }, badFormat},
    {"an empty file", [](auto& made) { return made.written("x.so", "").u16string(); }, badFormat},
    {"a text", [](auto& made) { return made.written("x.so", std::string(500, 'x')).u16string(); },
     badFormat},
    {"a text for the linker",
     [](auto& made) { return made.written("x.so", "INPUT(libc.so.6)").u16string(); }, badFormat},
    {"its mark alone", [](auto& made) { return made.cut(serverFile(), "x.so", 4).u16string(); },
     badFormat},
    {"its header alone", [](auto& made) { return made.cut(serverFile(), "x.so", 64).u16string(); },
     badFormat},
    {"its first page", [](auto& made) { return made.cut(serverFile(), "x.so", 4096).u16string(); },
     badFormat},
    {"its first two pages",
     [](auto& made) { return made.cut(serverFile(), "x.so", 8192).u16string(); }, badFormat},
    {"without its last table",
     [](auto& made) {
         server(made, "other.so");
         return made.cut(serverFile(), "x.so", -64).u16string();
     },
     S_OK},
    {"of 32 bits", [](auto& made) { return otherKind(made, 4, 1); }, badFormat},
    {"of the other byte order", [](auto& made) { return otherKind(made, 5, 2); }, badFormat},
    {"an object file", [](auto& made) { return otherKind(made, 16, 1); }, badFormat},
    {"of another machine", [](auto& made) { return otherKind(made, 18, 40); }, badFormat},
    {"a program", [](auto&) { return files::canonical("/proc/self/exe").u16string(); }, badFormat},
    {"no class module", [](auto&) { return serverPath(OLESTR("velktest_no_entry_points")); },
     CO_E_ERRORINDLL},
    {"exchanged while it is loaded",
     [](auto& made) {
         auto const path = server(made, "x.so");
         auto const other = server(made, "other.so");
         beforeLoading = [=] { files::rename(other, path); };
         return path.u16string();
     },
     badFormat},
};

class RegisteredPaths : public testing::TestWithParam<Row> {
  protected:
    ~RegisteredPaths() override {
        beforeLoading = nullptr;
        CoFreeUnusedLibrariesEx(0, 0);
    }
    ApartmentStay stay_{COINIT_MULTITHREADED};
    OddFiles made_;
};

TEST_P(RegisteredPaths, LoadTheRegisteredFileOrNothing) {
    Text const path = GetParam().make(made_);
    RegisteredClass const registered(plainClass, path);
    IUnknown* object = nullptr;
    EXPECT_EQ(CoCreateInstance(plainClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                               reinterpret_cast<void**>(&object)),
              GetParam().expected);
    ASSERT_EQ(object != nullptr, GetParam().expected == S_OK);
    if (object == nullptr) {
        CoFreeUnusedLibrariesEx(0, 0);
        EXPECT_EQ(GetModuleHandleW(OLESTR("x")), nullptr);
        return;
    }
    void* const code = **reinterpret_cast<void***>(object);
    HMODULE module = nullptr;
    ASSERT_TRUE(GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(code), &module));
    OLECHAR name[1024];
    EXPECT_EQ(Text(name, GetModuleFileNameW(module, name, 1024)), path);
    EXPECT_EQ(GetModuleHandleW(path.c_str()), module);
    Dl_info known{};
    ASSERT_NE(dladdr(code, &known), 0);
    char file[1024];
    ASSERT_LT(VelkFileOfPath(path.c_str(), file, sizeof file), sizeof file);
    EXPECT_TRUE(files::equivalent(known.dli_fname, file)) << known.dli_fname;
    EXPECT_EQ(object->Release(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Here, RegisteredPaths, testing::ValuesIn(rows), [](auto const& row) {
    std::string name = row.param.what;
    for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    return name;
});

}  // namespace

/// Stands before the C library's for the layer too.
extern "C" __attribute__((visibility("default"))) void* dlopen(char const* name, int flags) {
    auto const next = reinterpret_cast<decltype(&dlopen)>(dlsym(RTLD_NEXT, "dlopen"));
    if (beforeLoading) std::exchange(beforeLoading, nullptr)();
    return next(name, flags);
}
