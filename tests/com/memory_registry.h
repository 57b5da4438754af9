/// A registry in memory, for tests and fuzzing.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "com/registry.h"

namespace velk::com::test {

/// Keeps every key as "ROOT\path", compared without ASCII case, the machine's
/// classes as "HKCR", and can be told to refuse one operation after a number of
/// them.
class MemoryRegistry final : public Registry {
  public:
    using Text = std::basic_string<OLECHAR>;
    struct IgnoringCase {
        bool operator()(Text const& left, Text const& right) const noexcept;
    };
    struct Value {
        DWORD type;
        std::vector<BYTE> data;
    };
    using Values = std::map<Text, Value, IgnoringCase>;

    LSTATUS createKey(KeyPath const& key) override;
    LSTATUS setValue(KeyPath const& key, Text const& name, DWORD type,
                     std::span<BYTE const> data) override;
    LSTATUS deleteValue(KeyPath const& key, Text const& name) override;
    LSTATUS hasSubkeys(KeyPath const& key, bool& result) override;
    LSTATUS deleteKey(KeyPath const& key) override;
    LSTATUS deleteTree(KeyPath const& key) override;

    /// What is there, one line a key or value, sorted: "HKCR\A", then
    /// "HKCR\A @ = 1:text" for its default value, "HKCR\A name = 4:01000000"
    /// for a number (the type's number, text or else bytes).
    std::vector<std::string> lines() const;

    /// The value at a path such as "HKCR\A", or null.
    Value const* value(std::string const& path, std::string const& name) const;

    /// The operation after this many more is refused with ERROR_ACCESS_DENIED.
    std::uint64_t allowed = UINT64_MAX;
    /// How many operations that write were asked for.
    std::uint64_t writes = 0;

  private:
    LSTATUS permit();
    static Text fullPath(KeyPath const& key);

    std::map<Text, Values, IgnoringCase> keys_;
};

}  // namespace velk::com::test
