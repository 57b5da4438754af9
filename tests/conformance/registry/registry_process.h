/// Processes that use a registry of their own folder, and what is done to its files.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>

#include <sys/types.h>

#include "conformance/registry/registry_calls.h"

namespace velk::test {

/// Users without any rights of their own.
inline constexpr uid_t nobody = 65534, alice = 12001, bob = 12002;

std::string contentOf(std::filesystem::path const& file);

/// A folder for hives below a new one that any user can reach; gone with this.
class RegistryFolder {
  public:
    RegistryFolder();
    RegistryFolder(RegistryFolder const&) = delete;
    RegistryFolder& operator=(RegistryFolder const&) = delete;
    ~RegistryFolder();

    std::filesystem::path const& base() const { return base_; }
    /// Made by the first change.
    std::filesystem::path hives() const { return base_ / "hives"; }

    /// Does something to a file in hives():
    ///   exists F; mode F; chmod F OCTAL; chown F USER
    ///   write F TEXT; more F COUNT; cut F (in the middle); fill F (but for a page)
    ///   keep F; same F: whether it is as it was kept
    ///   link F; pipe F: in the place of the file
    ///   sql F SQL: the first column of the last row; log F SQL: leaves the change
    ///   in a log beside the file; whole F: that nothing in it is loose
    ///   says F TEXT: how many lines, where one has the text
    std::string answer(std::string const& call);

  private:
    std::filesystem::path base_;
    std::map<std::string, std::string> kept_;
};

/// A process that uses the registry of a folder. This one itself never uses a
/// registry: the folder is chosen at the first use.
class RegistryProcess {
  public:
    /// One that answers calls: those of RegistryCalls and of the folder, and
    ///   begin, commit, rollback, end, enter: a transaction; take ROOT
    ///   problems; clsid NAME: the result of CLSIDFromProgID; inside: a transaction?
    ///   env NAME VALUE, cd FOLDER, umask OCTAL; lock (all files there are)
    ///   thread CALL, fork CALL: by another thread or a child
    RegistryProcess(RegistryFolder& folder, uid_t user = 0);
    /// One that does something else, and ends.
    RegistryProcess(RegistryFolder& folder, std::function<void()> const& body);
    RegistryProcess(RegistryProcess const&) = delete;
    RegistryProcess& operator=(RegistryProcess const&) = delete;
    ~RegistryProcess();

    std::string ask(std::string const& call);
    pid_t number() const { return number_; }
    /// Whether it was still there.
    bool kill();

  private:
    void start(RegistryFolder& folder, uid_t user, std::function<void()> const& body);

    pid_t number_ = -1;
    int calls_ = -1, answers_ = -1;
};

}  // namespace velk::test
