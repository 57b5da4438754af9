/// A registry in memory, for tests and fuzzing.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "com/registration/registry.h"
#include "registry_table.h"

namespace velk::com::test {

/// Keeps every key as "ROOT\path", compared without ASCII case, the machine's
/// classes as "HKCR", and can be told to refuse what is written from some point on.
class MemoryRegistry final : public Registry {
  public:
    LSTATUS createKey(KeyPath const& key) override;
    LSTATUS setValue(KeyPath const& key, std::basic_string<OLECHAR> const& name, DWORD type,
                     std::span<BYTE const> data) override;
    LSTATUS deleteValue(KeyPath const& key, std::basic_string<OLECHAR> const& name) override;
    LSTATUS hasSubkeys(KeyPath const& key, bool& result) override;
    LSTATUS deleteKey(KeyPath const& key) override;
    LSTATUS deleteTree(KeyPath const& key) override;

    RegistryTable table() const;

    /// After so many more, operations that write are refused with ERROR_ACCESS_DENIED.
    std::uint64_t allowed = UINT64_MAX;
    /// How many operations that write were asked for.
    std::uint64_t writes = 0;

  private:
    /// Without ASCII case; what belongs to a key, and what is below it, follow it.
    struct ByKey {
        bool operator()(std::string const& left, std::string const& right) const noexcept;
    };
    /// "ROOT\path" to nothing for keys, and with NUL and a name to what shown()
    /// makes of it for values.
    using Entries = std::map<std::string, std::string, ByKey>;

    LSTATUS permit();
    /// Permits a write to a key that is there.
    LSTATUS write(std::string const& path);
    bool hasSubkeys(std::string const& path) const;

    Entries entries_;
};

}  // namespace velk::com::test
