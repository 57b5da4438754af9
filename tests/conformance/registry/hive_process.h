/// Running parts of a test in processes with a registry folder of their own.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "conformance/registry/test_key.h"

namespace velk::test {

/// A folder for hives, empty at first and gone with this.
struct HiveFolder {
    std::filesystem::path path;
    HiveFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "velkhiveXXXXXX").string();
        path = mkdtemp(pattern.data());
    }
    HiveFolder(HiveFolder const&) = delete;
    HiveFolder& operator=(HiveFolder const&) = delete;
    ~HiveFolder() {
        std::error_code error;
        std::filesystem::remove_all(path, error);
    }
};

using Statuses = std::vector<LSTATUS>;

/// A user without any rights of their own.
inline constexpr uid_t nobody = 65534;

/// A process that uses the registry of a folder, and tells the statuses that
/// it got. This process itself never uses a registry: the folder is chosen at
/// the first use.
class HiveProcess {
  public:
    HiveProcess(std::filesystem::path const& folder, std::function<Statuses()> const& body,
                uid_t user = 0) {
        int ends[2];
        if (pipe(ends) != 0) std::abort();
        child_ = fork();
        if (child_ == 0) {
            setenv("VELK_REGISTRY_DIR", folder.c_str(), 1);
            if (user != 0 && setuid(user) != 0) _exit(3);
            Statuses const statuses = body();
            auto const size = statuses.size() * sizeof(LSTATUS);
            _exit(write(ends[1], statuses.data(), size) == static_cast<ssize_t>(size) ? 0 : 2);
        }
        close(ends[1]);
        result_ = ends[0];
    }
    HiveProcess(HiveProcess const&) = delete;
    HiveProcess& operator=(HiveProcess const&) = delete;
    ~HiveProcess() {
        if (child_ > 0) statuses();
    }

    void kill() { ::kill(child_, SIGKILL); }

    /// Waits for the end. Empty when the process did not end by itself.
    Statuses statuses() {
        Statuses all(1024);
        ssize_t const got = read(result_, all.data(), all.size() * sizeof(LSTATUS));
        close(result_);
        int outcome = 0;
        waitpid(std::exchange(child_, -1), &outcome, 0);
        bool const good = WIFEXITED(outcome) && WEXITSTATUS(outcome) == 0 && got >= 0;
        all.resize(good ? static_cast<std::size_t>(got) / sizeof(LSTATUS) : 0);
        return all;
    }

  private:
    pid_t child_ = -1;
    int result_ = -1;
};

inline Statuses inProcess(std::filesystem::path const& folder,
                          std::function<Statuses()> const& body, uid_t user = 0) {
    return HiveProcess(folder, body, user).statuses();
}

}  // namespace velk::test
