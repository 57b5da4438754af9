#include "conformance/registry/registry_process.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

// Before the system's own, which has a macro of one of its names.
#include <objbase.h>

#include <fcntl.h>
#include <ktmw32.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <velk_registry.h>
#include <velk_transactions.h>

namespace velk::test {
namespace {

namespace files = std::filesystem;

/// Runs SQL on a file and gives the first column of the last row. With `log` the
/// file and its log are left as they are before the end tidies them up.
std::string runSql(files::path const& path, std::string const& text, bool log = false) {
    sqlite3* database = nullptr;
    std::string result;
    sqlite3_open(path.c_str(), &database);
    auto const keep = [](void* target, int, char** values, char**) {
        *static_cast<std::string*>(target) = values[0] == nullptr ? "" : values[0];
        return 0;
    };
    auto const sql = (log ? "PRAGMA journal_mode = WAL; " : "") + text;
    if (sqlite3_exec(database, sql.c_str(), keep, &result, nullptr) != SQLITE_OK) {
        result = sqlite3_errmsg(database);
    }
    auto const beside = path.string() + "-wal";
    auto const file = log ? contentOf(path) : "", own = log ? contentOf(beside) : "";
    sqlite3_close(database);
    if (!log) return result;
    std::ofstream(path, std::ios::binary) << file;
    std::ofstream(beside, std::ios::binary) << own;
    return "ok";
}

/// Sound pages, and neither keys without a parent nor values without a key.
std::string whole(files::path const& hive) {
    return runSql(hive, "PRAGMA integrity_check") + ' ' +
           runSql(hive,
                  "SELECT (SELECT count(*) FROM keys WHERE parent <> 0 AND parent NOT IN"
                  " (SELECT id FROM keys)) + (SELECT count(*) FROM data WHERE key NOT IN"
                  " (SELECT id FROM keys))");
}

std::string lastError(BOOL success) {
    auto const error = success ? ERROR_SUCCESS : static_cast<LSTATUS>(GetLastError());
    return error == ERROR_TRANSACTION_NOT_ACTIVE ? "ended" : statusWord(error);
}

/// Every lock that the rights of a reader give.
void lockAll(files::path const& folder) {
    for (auto const& entry : files::directory_iterator(folder)) {
        int const file = open(entry.path().c_str(), O_RDONLY);
        struct flock all {};
        all.l_type = F_RDLCK;
        fcntl(file, F_SETLK, &all);
        flock(file, LOCK_EX | LOCK_NB);
    }
}

/// The calls of one process.
class ProcessCalls {
  public:
    explicit ProcessCalls(RegistryFolder& folder) : folder_(folder) {}

    std::string answer(std::string const& call) {
        std::istringstream words(call);
        std::string verb, word, rest;
        words >> verb;
        std::getline(words >> std::ws, rest);
        words = std::istringstream(rest);
        words >> word;
        if (verb == "thread") return inThread(rest);
        if (verb == "fork") return inChild(rest);
        if (auto const answer = ofTransaction(verb, word); !answer.empty()) return answer;
        if (auto const answer = ofProcess(verb, word, rest); !answer.empty()) return answer;
        auto const answer = folder_.answer(call);
        return answer.empty() ? calls_.answer(call) : answer;
    }

  private:
    std::string ofTransaction(std::string const& verb, std::string const& word) {
        if (verb == "begin") {
            calls_.closeAll();
            transaction_ = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
        }
        if (verb == "begin" || verb == "enter") {
            return lastError(VelkSetThreadTransaction(transaction_));
        }
        if (verb == "take") {
            return statusWord(VelkTakeHive(word == "U"   ? HKEY_CURRENT_USER
                                           : word == "M" ? HKEY_LOCAL_MACHINE
                                                         : HKEY_CLASSES_ROOT));
        }
        if (verb == "inside") return VelkThreadTransaction() == nullptr ? "no" : "yes";
        bool const commits = verb == "commit", rollsBack = verb == "rollback";
        if (!commits && !rollsBack && verb != "end") return {};
        calls_.closeAll();
        return lastError(commits     ? CommitTransaction(transaction_)
                         : rollsBack ? RollbackTransaction(transaction_)
                                     : CloseHandle(transaction_));
    }

    std::string ofProcess(std::string const& verb, std::string const& word,
                          std::string const& rest) {
        if (verb == "problems") {
            char text[1000];
            VelkRegistryProblems(text, sizeof text);
            return text[0] == '\0' ? "none" : text;
        }
        if (verb == "clsid") {
            CLSID id;
            std::ostringstream code;
            code << std::hex << CLSIDFromProgID(wide(word).c_str(), &id);
            return code.str();
        }
        if (verb == "env") {
            auto const value = rest.substr(std::min(rest.size(), word.size() + 1));
            value.empty() ? unsetenv(word.c_str()) : setenv(word.c_str(), value.c_str(), 1);
        } else if (verb == "cd") {
            files::current_path(word);
        } else if (verb == "umask") {
            umask(static_cast<mode_t>(std::stoul(word, nullptr, 8)));
        } else if (verb == "lock") {
            lockAll(folder_.hives());
        } else {
            return {};
        }
        return "ok";
    }

    std::string inThread(std::string const& call) {
        std::string told;
        std::thread([&] { told = answer(call); }).join();
        return told;
    }

    std::string inChild(std::string const& call) {
        {
            RegistryProcess child(folder_,
                                  [&] { std::ofstream(folder_.base() / "child") << answer(call); });
        }
        return contentOf(folder_.base() / "child");
    }

    RegistryFolder& folder_;
    RegistryCalls calls_;
    HANDLE transaction_ = nullptr;
};

/// A line; nothing at the end. Ends of lines in it are semicolons.
bool readLine(int from, std::string& line) {
    line.clear();
    for (char sign = 0; read(from, &sign, 1) == 1; line += sign) {
        if (sign == '\n') return true;
    }
    return false;
}

void writeLine(int to, std::string line) {
    while (line.ends_with('\n')) line.pop_back();
    for (char& sign : line) sign = sign == '\n' ? ';' : sign;
    line += '\n';
    // Who has ended meanwhile is noticed by the answer that does not come.
    static_cast<void>(!write(to, line.data(), line.size()));
}

}  // namespace

std::string contentOf(files::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

RegistryFolder::RegistryFolder() {
    std::string pattern = (files::temp_directory_path() / "velkhiveXXXXXX").string();
    base_ = mkdtemp(pattern.data());
    files::permissions(base_, files::perms(0755));
}

RegistryFolder::~RegistryFolder() {
    std::error_code error;
    files::remove_all(base_, error);
}

std::string RegistryFolder::answer(std::string const& call) {
    std::istringstream words(call);
    std::string verb, name, rest;
    words >> verb >> name;
    std::getline(words >> std::ws, rest);
    auto const file = (hives() / name).lexically_normal();
    auto const put = [&](std::string const& content) {
        std::ofstream(file, std::ios::binary) << content;
        return "ok";
    };
    auto const number = [&](int base) { return std::stoul(rest, nullptr, base); };
    auto const done = [](int result) { return result == 0 ? "ok" : "failed"; };
    if (verb == "exists") return files::exists(file) ? "yes" : "no";
    if (verb == "mode") {
        std::ostringstream text;
        text << std::oct << static_cast<unsigned>(files::status(file).permissions());
        return text.str();
    }
    if (verb == "chmod") return done(chmod(file.c_str(), static_cast<mode_t>(number(8))));
    if (verb == "chown") {
        auto const user = static_cast<uid_t>(number(10));
        return done(chown(file.c_str(), user, user));
    }
    if (verb == "write") return put(rest);
    if (verb == "more") return put(contentOf(file) + std::string(number(10), 'x'));
    if (verb == "cut") return files::resize_file(file, files::file_size(file) / 2), "ok";
    if (verb == "fill") {
        auto content = contentOf(file);
        return put(content.replace(4096, content.npos, std::string(content.size() - 4096, 'Z')));
    }
    if (verb == "keep") return kept_[name] = contentOf(file), "ok";
    if (verb == "same") return contentOf(file) == kept_[name] ? "yes" : "no";
    if (verb == "link") {
        files::rename(file, base_ / name);
        return files::create_symlink(base_ / name, file), "ok";
    }
    if (verb == "pipe") return files::remove(file), done(mkfifo(file.c_str(), 0600));
    if (verb == "sql") return runSql(file, rest);
    if (verb == "log") return runSql(file, rest, true);
    if (verb == "whole") return whole(file);
    if (verb != "says") return {};
    auto const text = contentOf(file);
    auto const lines = std::to_string(std::count(text.begin(), text.end(), '\n'));
    return text.find(rest) == text.npos ? "no" : lines;
}

void RegistryProcess::start(RegistryFolder& folder, uid_t user, std::function<void()> const& body) {
    number_ = fork();
    if (number_ != 0) return;
    setenv("VELK_REGISTRY_DIR", folder.hives().c_str(), 1);
    if (user != 0 && setresuid(user, user, user) != 0) _exit(3);
    body();
    _exit(0);
}

RegistryProcess::RegistryProcess(RegistryFolder& folder, uid_t user) {
    signal(SIGPIPE, SIG_IGN);
    int calls[2], answers[2];
    if (pipe2(calls, O_CLOEXEC) != 0 || pipe2(answers, O_CLOEXEC) != 0) std::abort();
    start(folder, user, [&] {
        // Of who ends while it asks, the other end would stay open here.
        close(calls[1]);
        ProcessCalls own(folder);
        for (std::string call; readLine(calls[0], call) && call != "exit";) {
            writeLine(answers[1], own.answer(call));
        }
    });
    close(calls[0]);
    close(answers[1]);
    calls_ = calls[1];
    answers_ = answers[0];
}

RegistryProcess::RegistryProcess(RegistryFolder& folder, std::function<void()> const& body) {
    start(folder, 0, body);
}

RegistryProcess::~RegistryProcess() {
    if (calls_ >= 0 && number_ > 0) writeLine(calls_, "exit");
    if (number_ > 0) waitpid(number_, nullptr, 0);
    close(calls_);
    close(answers_);
}

std::string RegistryProcess::ask(std::string const& call) {
    writeLine(calls_, call);
    std::string answer;
    return readLine(answers_, answer) ? answer : "the process has ended";
}

bool RegistryProcess::kill() {
    ::kill(number_, SIGKILL);
    int outcome = 0;
    waitpid(std::exchange(number_, -1), &outcome, 0);
    return WIFSIGNALED(outcome) && WTERMSIG(outcome) == SIGKILL;
}

}  // namespace velk::test
