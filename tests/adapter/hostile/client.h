/// The hostile client: it uses all that the module shows to native and to host
/// code as a program of bytes says, in any order, on several threads.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "hostile/world.h"
#include "servers/automation/support/automation_server.h"

namespace velk::test::hostile {

/// The program of a seed.
Program drawn(unsigned seed);

/// The module, loaded, and the server of the tests. One for the process.
class Client {
  public:
    explicit Client(bool usesRecords);
    ~Client();
    Client(Client const&) = delete;
    Client& operator=(Client const&) = delete;

    /// Runs a program and releases all that it held. What is wrong then: things
    /// that are still alive, or a module that does not let itself be unloaded;
    /// empty where nothing is. Exceptions where none may come end the process.
    std::string run(std::span<std::uint8_t const> program);

  private:
    std::string alive() const;

    com::Module module_;
    std::optional<AutomationServer> server_;
    com::ComPtr<IClassFactory> sample_;
    com::ComPtr<IClassFactory> faulty_;
    std::string before_;
};

}  // namespace velk::test::hostile
