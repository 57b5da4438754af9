/// The operations on a registry that scripts need.
#pragma once

#include <span>
#include <string>

#include <windows.h>

namespace velk::com {

/// A key: one of the predefined keys, and the names below it joined by '\'.
struct KeyPath {
    HKEY root;
    std::basic_string<OLECHAR> names;
};

/// A registry to write to. Every operation gives a system error number; a key
/// that does not exist gives ERROR_FILE_NOT_FOUND.
class Registry {
  public:
    virtual ~Registry() = default;

    /// Makes the key and those above it; one that exists is left as it is.
    virtual LSTATUS createKey(KeyPath const& key) = 0;
    /// Writes a value of an existing key; the empty name is the default value.
    virtual LSTATUS setValue(KeyPath const& key, std::basic_string<OLECHAR> const& name, DWORD type,
                             std::span<BYTE const> data) = 0;
    virtual LSTATUS deleteValue(KeyPath const& key, std::basic_string<OLECHAR> const& name) = 0;
    /// Tells whether any key stands below this one.
    virtual LSTATUS hasSubkeys(KeyPath const& key, bool& result) = 0;
    /// Deletes a key that has no subkeys.
    virtual LSTATUS deleteKey(KeyPath const& key) = 0;
    /// Deletes a key with everything below it.
    virtual LSTATUS deleteTree(KeyPath const& key) = 0;
};

/// The system's registry.
class SystemRegistry final : public Registry {
  public:
    LSTATUS createKey(KeyPath const& key) override;
    LSTATUS setValue(KeyPath const& key, std::basic_string<OLECHAR> const& name, DWORD type,
                     std::span<BYTE const> data) override;
    LSTATUS deleteValue(KeyPath const& key, std::basic_string<OLECHAR> const& name) override;
    LSTATUS hasSubkeys(KeyPath const& key, bool& result) override;
    LSTATUS deleteKey(KeyPath const& key) override;
    LSTATUS deleteTree(KeyPath const& key) override;
};

}  // namespace velk::com
