/// Hives and values that were damaged in every way: whatever becomes of a look
/// into them, it ends soon, needs little, and loads nothing but the module that
/// is registered.
///
/// VELK_DAMAGES is how many there are; each has the number that made it.
#include <algorithm>
#include <fstream>
#include <random>
#include <set>

#include <gtest/gtest.h>
// Before the system's own, which has a macro of one of its names.
#include <objbase.h>

#include <ktmw32.h>
#include <link.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <velk_transactions.h>

#include "conformance/com/test_classes.h"
#include "conformance/registry/registry_process.h"
#include "support/data_table.h"

namespace {

using namespace velk::test;
namespace files = std::filesystem;

constexpr auto const* progId = OLESTR("Velk.Damaged");
constexpr int longestSeconds = 2;
constexpr rlim_t mostMemory = 256 << 20;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool hasOwnMemory = false;
#else
constexpr bool hasOwnMemory = true;
#endif

using Random = std::mt19937;

std::size_t below(Random& random, std::size_t limit) {
    return limit == 0 ? 0 : random() % limit;
}

/// A hive with a class, and branches enough to fill some pages.
void fill(HKEY root, Text const& module) {
    setClassesText(Text(progId) + OLESTR("\\CLSID"), nullptr, idText(plainClass), root);
    auto const key = OLESTR("CLSID\\") + idText(plainClass);
    setClassesText(key + OLESTR("\\ProgID"), nullptr, progId, root);
    setClassesText(key + OLESTR("\\InprocServer32"), nullptr, module, root);
    setClassesText(key + OLESTR("\\InprocServer32"), OLESTR("ThreadingModel"), OLESTR("Both"),
                   root);
    for (OLECHAR name = 'a'; name <= 'z'; ++name) {
        setClassesText(Text(3, name) + OLESTR("\\below"), nullptr, Text(200, name), root);
    }
}

/// Bytes of the file become others.
void damageBytes(std::string& content, Random& random) {
    constexpr std::size_t page = 4096;
    auto const someByte = [&] { return static_cast<char>(random()); };
    auto const at = [&] {
        return content.begin() + static_cast<long>(below(random, content.size()));
    };
    switch (random() % 6) {
        case 0:
            for (auto count = 1 + below(random, 8); count > 0; --count) *at() = someByte();
            break;
        case 1:
            std::fill_n(at(), 1, someByte());
            content.resize(below(random, content.size() + page));
            break;
        case 2: {
            auto const from = below(random, content.size() / page) * page;
            auto const to = below(random, content.size() / page) * page;
            std::copy_n(content.begin() + static_cast<long>(from), page,
                        content.begin() + static_cast<long>(to));
            break;
        }
        case 3:
            content[16 + below(random, 84)] = someByte();
            break;
        case 4:
            // What the pages' heads and the places of their cells say.
            content[below(random, content.size() / page) * page + below(random, 64)] = someByte();
            break;
        default: {
            auto const begin = at();
            auto const room = static_cast<std::size_t>(content.end() - begin);
            std::fill_n(begin, std::min<std::size_t>(below(random, 600), room), someByte());
        }
    }
}

std::set<std::string> loadedModules() {
    std::set<std::string> names;
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* target) {
            static_cast<std::set<std::string>*>(target)->insert(info->dlpi_name);
            return 0;
        },
        &names);
    return names;
}

/// Looks at everything below a key. A damaged tree may run in a circle.
void lookBelow(HKEY key, int depth) {
    DWORD index = 0, size = 0;
    OLECHAR name[300];
    std::vector<BYTE> data(4096);
    for (DWORD length = 300; RegEnumValueW(key, index, name, &length, nullptr, nullptr, nullptr,
                                           &size) == ERROR_SUCCESS &&
                             index < 200;
         length = 300, ++index) {
        size = 4096;
        RegQueryValueExW(key, name, nullptr, nullptr, data.data(), &size);
        size = 4096;
        RegGetValueW(key, nullptr, name, RRF_RT_REG_SZ, nullptr, data.data(), &size);
    }
    index = 0;
    for (DWORD length = 300; RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr,
                                           nullptr) == ERROR_SUCCESS &&
                             index < 200;
         length = 300, ++index) {
        Key below;
        if (depth > 0 && RegOpenKeyExW(key, name, 0, KEY_READ, below.target()) == ERROR_SUCCESS) {
            lookBelow(below, depth - 1);
        }
    }
}

/// All that a process may do with a hive.
void use() {
    for (HKEY const root : {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        lookBelow(root, 40);
    }
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    CLSID id;
    CLSIDFromProgID(progId, &id);
    IUnknown* object = nullptr;
    if (SUCCEEDED(CoCreateInstance(plainClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                                   reinterpret_cast<void**>(&object)))) {
        object->Release();
    }
    for (HKEY const root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        HANDLE const transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
        VelkSetThreadTransaction(transaction);
        fill(root, OLESTR("/nonexistent"));
        RegDeleteTreeW(root, OLESTR("Software\\Classes\\CLSID"));
        RegDeleteTreeW(root, OLESTR("Software\\Classes"));
        CommitTransaction(transaction);
        CloseHandle(transaction);
    }
}

/// 0 when only the module, or none, was loaded.
int useAndTell(files::path const& module) {
    auto const before = loadedModules();
    use();
    for (auto const& name : loadedModules()) {
        if (!before.contains(name) && !files::equivalent(name, module)) return 1;
    }
    return 0;
}

int outcomeOf(files::path const& folder, files::path const& module) {
    pid_t const child = fork();
    if (child == 0) {
        setenv("VELK_REGISTRY_DIR", folder.c_str(), 1);
        rlimit const time{longestSeconds, longestSeconds}, memory{mostMemory, mostMemory};
        setrlimit(RLIMIT_CPU, &time);
        if (hasOwnMemory) setrlimit(RLIMIT_AS, &memory);
        // A process that waits uses no time.
        alarm(120);
        _exit(useAndTell(module));
    }
    int outcome = -1;
    waitpid(child, &outcome, 0);
    return outcome;
}

TEST(DamagedHives, EndNoProcessAndLoadNothing) {
    files::path const module = serverPath(OLESTR("velktest_classes"));
    RegistryFolder folder;
    auto const sql = rowsOf("registry/damages.tsv");
    std::string const names[] = {"user.db", "machine.db"};
    {
        RegistryProcess const process(folder, [&] {
            fill(HKEY_CURRENT_USER, module.u16string());
            fill(HKEY_LOCAL_MACHINE, module.u16string());
        });
    }
    std::string const good[] = {contentOf(folder.hives() / names[0]),
                                contentOf(folder.hives() / names[1])};
    // What a path that is not absolute would lead to.
    files::copy_file(module, folder.base() / "v.s");
    files::current_path(folder.base());
    ASSERT_EQ(outcomeOf(folder.hives(), module), 0) << "undamaged";

    char const* const wanted = std::getenv("VELK_DAMAGES");
    int const damages = wanted == nullptr ? 150 : std::atoi(wanted);
    for (int number = 0; number < damages && !HasFailure(); ++number) {
        Random random(static_cast<unsigned>(number));
        for (int hive : {0, 1}) {
            auto content = good[hive];
            if (number % 3 != 0) damageBytes(content, random);
            std::ofstream(folder.hives() / names[hive], std::ios::binary) << content;
            if (number % 3 != 0) continue;
            folder.answer("sql " + names[hive] + " PRAGMA writable_schema = ON; " +
                          sql[below(random, sql.size())]["sql"]);
        }
        EXPECT_EQ(outcomeOf(folder.hives(), module), 0) << "number " << number;
    }
    files::current_path("/");
}

}  // namespace
