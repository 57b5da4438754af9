/// Changes of the hives: together in one transaction, in turn, and whatever
/// readers and broken files there are.
// Before the system's own, which has a macro of one of its names.
#include <objbase.h>

#include <array>
#include <fstream>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <ktmw32.h>
#include <sys/file.h>
#include <velk_registry.h>
#include <velk_transactions.h>

#include "conformance/registry/hive_process.h"
#include "conformance/registry/hive_sql.h"

namespace {

using namespace velk::test;
namespace files = std::filesystem;

constexpr auto const* classes = OLESTR("Software\\Classes\\");

LSTATUS write(HKEY root, OLECHAR const* name, OLECHAR const* text = OLESTR("text")) {
    Key key;
    LSTATUS const status = RegCreateKeyExW(root, (Text(classes) + name).c_str(), 0, nullptr, 0,
                                           KEY_ALL_ACCESS, nullptr, key.target(), nullptr);
    return status == ERROR_SUCCESS ? setText(key, nullptr, text) : status;
}

LSTATUS has(HKEY root, OLECHAR const* name) {
    return openStatus(root, (Text(classes) + name).c_str()) == ERROR_SUCCESS;
}

HANDLE begin() {
    HANDLE const transaction = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
    VelkSetThreadTransaction(transaction);
    return transaction;
}

LSTATUS lastError(BOOL success) {
    return success ? ERROR_SUCCESS : static_cast<LSTATUS>(GetLastError());
}

LSTATUS inAnotherThread(std::function<LSTATUS()> const& body) {
    LSTATUS status = -1;
    std::thread([&] { status = body(); }).join();
    return status;
}

std::string problems() {
    char text[1000];
    VelkRegistryProblems(text, sizeof text);
    return text;
}

/// What is there after a transaction that ended in some way.
Statuses afterwards(BOOL (*end)(HANDLE)) {
    write(HKEY_CURRENT_USER, OLESTR("Velk.Before"));
    HANDLE const transaction = begin();
    Statuses all = {write(HKEY_CURRENT_USER, OLESTR("Velk.In")),
                    write(HKEY_LOCAL_MACHINE, OLESTR("Velk.In")),
                    RegDeleteTreeW(HKEY_CURRENT_USER, OLESTR("Software\\Classes\\Velk.Before")),
                    // A step that fails takes back its own work alone.
                    RegDeleteKeyW(HKEY_CURRENT_USER, OLESTR("Software\\Classes")),
                    has(HKEY_CURRENT_USER, OLESTR("Velk.In")),
                    static_cast<LSTATUS>(keyNames(HKEY_CLASSES_ROOT).size()),
                    inAnotherThread([] { return has(HKEY_CURRENT_USER, OLESTR("Velk.In")); }),
                    VelkThreadTransaction() == transaction};
    all.push_back(lastError(end(transaction)));
    all.push_back(VelkThreadTransaction() == nullptr);
    for (HKEY const root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        all.push_back(has(root, OLESTR("Velk.In")));
    }
    all.push_back(has(HKEY_CURRENT_USER, OLESTR("Velk.Before")));
    all.push_back(lastError(CommitTransaction(transaction)));
    all.push_back(lastError(VelkSetThreadTransaction(transaction)));
    CloseHandle(transaction);
    return all;
}

TEST(HiveTransactions, ChangeAllOrNothing) {
    constexpr LSTATUS ended = ERROR_TRANSACTION_NOT_ACTIVE, closed = ERROR_INVALID_HANDLE;
    Statuses const inside = {0, 0, 0, ERROR_ACCESS_DENIED, 1, 1, 0, 1, 0, 1};
    struct Case {
        BOOL (*end)(HANDLE);
        Statuses left;
    };
    for (auto const& entry : {Case{CommitTransaction, {1, 1, 0, ended, ended}},
                              Case{RollbackTransaction, {0, 0, 1, ended, ended}},
                              Case{CloseHandle, {0, 0, 1, closed, closed}}}) {
        HiveFolder const folder;
        auto expected = inside;
        expected.insert(expected.end(), entry.left.begin(), entry.left.end());
        EXPECT_EQ(inProcess(folder.path, [&] { return afterwards(entry.end); }), expected);
        expectWholeHive(folder.path / "user.db");
    }
}

TEST(HiveTransactions, AreTheThreadsAndTheProcesssAlone) {
    HiveFolder const folder;
    auto const body = [&] {
        HANDLE const transaction = begin();
        write(HKEY_CURRENT_USER, OLESTR("Velk.In"));
        Statuses all = {
            VelkTakeHive(HKEY_CLASSES_ROOT),
            inAnotherThread([] { return VelkTakeHive(HKEY_CURRENT_USER); }),
            inAnotherThread([&] { return lastError(CommitTransaction(transaction)); }),
            inAnotherThread([&] { return lastError(VelkSetThreadTransaction(transaction)); })};
        pid_t const child = fork();
        if (child == 0) _exit(CommitTransaction(transaction) ? 1 : 0);
        int outcome = 0;
        waitpid(child, &outcome, 0);
        all.push_back(outcome);
        all.push_back(files::exists(folder.path / "user.db"));
        all.push_back(lastError(CommitTransaction(transaction)));
        CloseHandle(transaction);
        all.push_back(lastError(CommitTransaction(nullptr)));
        GUID id{};
        all.push_back(CreateTransaction(nullptr, &id, 0, 0, 0, 0, nullptr) == INVALID_HANDLE_VALUE);
        return all;
    };
    EXPECT_EQ(inProcess(folder.path, body),
              (Statuses{ERROR_INVALID_PARAMETER, ERROR_INVALID_HANDLE, ERROR_INVALID_HANDLE,
                        ERROR_INVALID_HANDLE, 0, 0, 0, ERROR_INVALID_HANDLE, 1}));
}

/// Waits for a file to be there.
void await(files::path const& file) {
    for (int time = 0; time < 1000 && !files::exists(file); ++time) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

TEST(HiveChanges, ComeInTurnAndTellWhoseItIs) {
    HiveFolder const folder;
    auto const begun = folder.path / "begun";
    HiveProcess holder(folder.path, [&] {
        begin();
        write(HKEY_CURRENT_USER, OLESTR("Velk.Held"));
        std::ofstream(begun) << getpid();
        std::this_thread::sleep_for(std::chrono::seconds(60));
        return Statuses{};
    });
    await(begun);
    std::string process;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    std::ifstream(begun) >> process;
    auto const wait = [&] {
        auto const start = std::chrono::steady_clock::now();
        Statuses all = {write(HKEY_LOCAL_MACHINE, OLESTR("Velk.Free")),
                        write(HKEY_CURRENT_USER, OLESTR("Velk.Late")),
                        has(HKEY_CURRENT_USER, OLESTR("Velk.Held"))};
        all.push_back(std::chrono::steady_clock::now() - start < std::chrono::seconds(25));
        all.push_back(problems().find("is being changed by process " + process) !=
                      std::string::npos);
        return all;
    };
    EXPECT_EQ(inProcess(folder.path, wait), (Statuses{0, ERROR_BUSY, 0, 1, 1}));
    holder.kill();
    holder.statuses();
    // What the one that was killed has begun is nobody's hindrance.
    EXPECT_EQ(inProcess(folder.path,
                        [] {
                            return Statuses{write(HKEY_CURRENT_USER, OLESTR("Velk.Late")),
                                            has(HKEY_CURRENT_USER, OLESTR("Velk.Held"))};
                        }),
              (Statuses{0, 0}));
}

TEST(HiveChanges, NeedNoReadersConsent) {
    if (getuid() != 0) GTEST_SKIP() << "becoming another user needs root";
    HiveFolder const folder;
    files::permissions(folder.path, files::perms(0755));
    auto const writeBoth = [] {
        return Statuses{write(HKEY_LOCAL_MACHINE, OLESTR("Velk.A"), OLESTR("text")),
                        RegDeleteTreeW(HKEY_LOCAL_MACHINE, OLESTR("Software\\Classes\\Velk.A"))};
    };
    EXPECT_EQ(inProcess(folder.path, writeBoth), (Statuses{0, 0}));
    auto const locked = folder.path.parent_path() / ("velklocked" + std::to_string(getpid()));
    HiveProcess reader(
        folder.path,
        [&] {
            // Every lock that the rights of a reader give, on everything there is.
            for (auto const& entry : files::directory_iterator(folder.path)) {
                int const file = open(entry.path().c_str(), O_RDONLY);
                struct flock whole {};
                whole.l_type = F_RDLCK;
                fcntl(file, F_SETLK, &whole);
                flock(file, LOCK_EX | LOCK_NB);
            }
            std::ofstream(locked) << "";
            std::this_thread::sleep_for(std::chrono::seconds(60));
            return Statuses{};
        },
        nobody);
    await(locked);
    EXPECT_EQ(inProcess(folder.path, writeBoth), (Statuses{0, 0}));
    reader.kill();
    files::remove(locked);
}

constexpr int workers = 4, keysOfEach = 5;

Text nameOf(int worker, int key) {
    return OLESTR("Velk.Worker") + Text(1, static_cast<OLECHAR>('0' + worker)) +
           Text(1, static_cast<OLECHAR>('a' + key));
}

/// Makes the worker's keys, and takes them away, again and again.
Statuses work(int worker) {
    for (bool isThere = has(HKEY_CURRENT_USER, nameOf(worker, 0).c_str());; isThere = !isThere) {
        HANDLE const transaction = begin();
        for (int key = 0; key < keysOfEach; ++key) {
            auto const name = nameOf(worker, key);
            LSTATUS const status = isThere
                                       ? RegDeleteTreeW(HKEY_CURRENT_USER, (classes + name).c_str())
                                       : write(HKEY_CURRENT_USER, name.c_str());
            if (status != ERROR_SUCCESS) return {status};
        }
        if (!CommitTransaction(transaction)) return {lastError(FALSE)};
        CloseHandle(transaction);
    }
}

/// How many of its keys each worker has, while none changes them.
Statuses counts() {
    begin();
    Statuses all;
    if (write(HKEY_CURRENT_USER, OLESTR("Velk.Pause")) != ERROR_SUCCESS) return all;
    for (int worker = 0; worker < workers; ++worker) {
        all.push_back(0);
        for (int key = 0; key < keysOfEach; ++key) {
            all.back() += has(HKEY_CURRENT_USER, nameOf(worker, key).c_str());
        }
    }
    return all;
}

/// VELK_HIVE_KILLS is how often one of four at work is killed.
TEST(HiveChanges, AreWholeWhoeverIsKilled) {
    HiveFolder const folder;
    char const* const wanted = std::getenv("VELK_HIVE_KILLS");
    int const kills = wanted == nullptr ? 60 : std::atoi(wanted);
    std::array<std::unique_ptr<HiveProcess>, workers> all;
    for (int time = 0; time < kills && !HasFailure(); ++time) {
        int const victim = time % workers;
        for (int worker = 0; worker < workers; ++worker) {
            if (all[worker]) continue;
            all[worker] =
                std::make_unique<HiveProcess>(folder.path, [worker] { return work(worker); });
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500 + 997 * (time * 37 % 60)));
        all[victim]->kill();
        EXPECT_TRUE(all[victim]->statuses().empty()) << "a change failed";
        all[victim].reset();
        auto const now = inProcess(folder.path, counts);
        ASSERT_EQ(now.size(), std::size_t{workers}) << "the hive does not open";
        for (LSTATUS const count : now) EXPECT_TRUE(count == 0 || count == keysOfEach) << count;
    }
    for (auto const& process : all) {
        if (process) process->kill();
    }
    all = {};
    expectWholeHive(folder.path / "user.db");
}

constexpr auto const* machinesClass = OLESTR("{6E1F2A90-4C3B-4D7E-A1F2-0B9C8D7E6F01}");
constexpr auto const* machinesName = OLESTR("Velk.Machines");
constexpr auto const* usersName = OLESTR("Velk.Users");

LSTATUS writeName(HKEY root, OLECHAR const* name) {
    return write(root, (Text(name) + OLESTR("\\CLSID")).c_str(), machinesClass);
}

TEST(BrokenUserHive, HidesNoneOfTheMachinesClasses) {
    HiveFolder const folder;
    inProcess(folder.path, [] {
        return Statuses{writeName(HKEY_LOCAL_MACHINE, machinesName),
                        writeName(HKEY_CURRENT_USER, usersName)};
    });
    files::resize_file(folder.path / "user.db", files::file_size(folder.path / "user.db") / 2);
    auto const body = [&] {
        CLSID id;
        LPOLESTR name = nullptr;
        return Statuses{
            CLSIDFromProgID(machinesName, &id), CLSIDFromProgID(usersName, &id),
            ProgIDFromCLSID(id, &name), openStatus(HKEY_CURRENT_USER, OLESTR("Software")),
            openStatus(HKEY_CLASSES_ROOT, machinesName), openStatus(HKEY_CLASSES_ROOT, usersName),
            static_cast<LSTATUS>(keyNames(HKEY_CLASSES_ROOT).size()),
            problems() == (folder.path / "user.db").string() + " is damaged\n",
            // New classes are the machine's, old ones can be taken away.
            setText(created(HKEY_CLASSES_ROOT, OLESTR("Velk.New")), nullptr, OLESTR("new")),
            RegDeleteTreeW(HKEY_CLASSES_ROOT, machinesName), write(HKEY_CURRENT_USER, usersName)};
    };
    EXPECT_EQ(inProcess(folder.path, body),
              (Statuses{S_OK, REGDB_E_READREGDB, REGDB_E_READREGDB, ERROR_REGISTRY_CORRUPT, 0,
                        ERROR_REGISTRY_CORRUPT, 1, 1, 0, 0, ERROR_REGISTRY_CORRUPT}));
}

}  // namespace
