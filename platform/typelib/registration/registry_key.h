/// Keys of the registry, as the registration of libraries uses them.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "winreg.h"

namespace velk::typelib {

/// One open key; closed at the end. An absent key is null.
class RegistryKey {
  public:
    RegistryKey() = default;
    RegistryKey(RegistryKey&& other) noexcept : key_(std::exchange(other.key_, nullptr)) {}
    RegistryKey& operator=(RegistryKey other) noexcept {
        std::swap(key_, other.key_);
        return *this;
    }
    ~RegistryKey();

    /// Null where there is no such key, or it may not be read.
    static RegistryKey open(HKEY parent, std::u16string const& name);
    /// Fails with a Failure, TYPE_E_REGISTRYACCESS.
    static RegistryKey create(HKEY parent, std::u16string const& name);

    HKEY get() const { return key_; }
    explicit operator bool() const { return key_ != nullptr; }

    std::vector<std::u16string> subKeys() const;
    /// Whether the key is there and has neither keys nor values.
    bool isEmpty() const;
    std::optional<std::u16string> text(LPCWSTR name = nullptr) const;
    /// Fails with a Failure, TYPE_E_REGISTRYACCESS.
    void setText(LPCWSTR name, std::u16string const& text) const;

  private:
    HKEY key_ = nullptr;
};

/// Removes a value if it has this text.
void deleteText(HKEY parent, std::u16string const& name, LPCWSTR value, std::u16string const& text);

/// Several changes of a hive as one: dropped unless they are committed. No other
/// process changes the hive meanwhile. Inside another such change of the thread
/// they are a part of that one.
class RegistryChange {
  public:
    explicit RegistryChange(HKEY hive);
    RegistryChange(RegistryChange const&) = delete;
    RegistryChange& operator=(RegistryChange const&) = delete;
    ~RegistryChange();
    /// Fails with a Failure, TYPE_E_REGISTRYACCESS.
    void commit();

  private:
    HANDLE transaction_ = nullptr;
};

/// Removes a key with all below it; whether there was one that could be removed.
bool deleteKeyTree(HKEY parent, std::u16string const& name);

}  // namespace velk::typelib
