/// Hives and values that were damaged in every way: whatever becomes of a look
/// into them, it ends soon, needs little, and loads nothing but the module that
/// is registered.
///
/// VELK_DAMAGES is how many there are; each has the number that made it.
#include <algorithm>
#include <fstream>
#include <random>
#include <set>

#include <ktmw32.h>
#include <link.h>
#include <objbase.h>
#include <sys/resource.h>
#include <velk_transactions.h>

#include "conformance/com/test_classes.h"
#include "conformance/registry/hive_process.h"
#include "conformance/registry/hive_sql.h"

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

std::string contentOf(files::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
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

// Much work for who reads the values of a small file.
constexpr char const* computedColumn =
    "UPDATE sqlite_schema SET sql = replace(sql, 'bytes BLOB NOT NULL',"
    " 'bytes BLOB AS (replace(hex(zeroblob(9000000)), ''0'', ''xy''))')";

/// Rows of the file become others, as SQL writes them.
std::string damagingSql(Random& random) {
    static char const* const changes[] = {
        "UPDATE data SET bytes = zeroblob(3000000)",
        "UPDATE data SET bytes = randomblob(abs(random() % 90))",
        "UPDATE data SET bytes = bytes || bytes || X'00'",
        "UPDATE data SET bytes = substr(bytes, 1, length(bytes) - 3)",
        "UPDATE data SET type = abs(random() % 14)",
        "UPDATE data SET type = 2, bytes = CAST(replace(hex(zeroblob(16000)), '0', '%') AS BLOB)",
        "UPDATE data SET type = 'text', bytes = 'text'",
        // "./v.s"
        "UPDATE data SET bytes = X'2E002F0076002E0073000000' WHERE length(bytes) > 60",
        computedColumn,
        "CREATE VIRTUAL TABLE more USING fts5(x)",
        "UPDATE data SET name = randomblob(40000), folded = randomblob(20)",
        "UPDATE keys SET parent = id",
        "UPDATE keys SET parent = (SELECT max(id) FROM keys) WHERE id = 3",
        "UPDATE keys SET depth = -9223372036854775807",
        "UPDATE keys SET name = zeroblob(70000), class = zeroblob(70000)",
        "UPDATE keys SET id = id + 9223372036854770000 WHERE id > 9",
        "UPDATE sqlite_sequence SET seq = 9223372036854775807",
        "DELETE FROM keys WHERE random() % 3 = 0",
        "DELETE FROM keys",
        "CREATE TABLE more(x)",
        "PRAGMA page_size = 65536; VACUUM",
        "PRAGMA auto_vacuum = FULL; VACUUM",
        "PRAGMA user_version = 2",
    };
    return std::string("PRAGMA writable_schema = ON; ") +
           changes[below(random, std::size(changes))];
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
        RegGetValueW(key, nullptr, name, RRF_RT_ANY, nullptr, data.data(), &size);
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
    LPOLESTR name = nullptr;
    if (ProgIDFromCLSID(plainClass, &name) == S_OK) CoTaskMemFree(name);
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
    HiveFolder const folder;
    inProcess(folder.path, [&] {
        fill(HKEY_CURRENT_USER, module.u16string());
        fill(HKEY_LOCAL_MACHINE, module.u16string());
        return Statuses{};
    });
    std::string const user = contentOf(folder.path / "user.db");
    std::string const machine = contentOf(folder.path / "machine.db");
    // What a path that is not absolute would lead to.
    files::copy_file(module, folder.path / "v.s");
    files::current_path(folder.path);
    ASSERT_EQ(outcomeOf(folder.path, module), 0) << "undamaged";

    char const* const wanted = std::getenv("VELK_DAMAGES");
    int const damages = wanted == nullptr ? 150 : std::atoi(wanted);
    for (int number = 0; number < damages && !HasFailure(); ++number) {
        Random random(static_cast<unsigned>(number));
        for (auto const& [name, good] : {std::pair{"user.db", &user}, {"machine.db", &machine}}) {
            auto const file = folder.path / name;
            auto content = *good;
            if (number % 3 != 0) damageBytes(content, random);
            std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
            if (number % 3 == 0) runSql(file, damagingSql(random).c_str());
        }
        EXPECT_EQ(outcomeOf(folder.path, module), 0) << "number " << number;
    }
    files::current_path("/");
}

}  // namespace
