/// Compiled resources: a row of entries, each a header with type and name
/// followed by its data.
///
/// Each entry begins at a multiple of four bytes:
///   data size (4), header size (4), type, name, padding to four bytes,
///   data version (4), memory flags (2), language (2), version (4),
///   characteristics (4), data.
/// Type and name are either 0xFFFF and a number of two bytes, or a text in
/// UTF-16 with its terminating zero. The first entry is empty.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include <windef.h>

namespace velk::platform {

/// A resource's type or name: a number or a text.
struct ResourceName {
    std::uint16_t number = 0;
    std::u16string text;

    ResourceName() = default;
    explicit ResourceName(std::uint16_t value) : number(value) {}
    explicit ResourceName(std::u16string_view value) : text(value) {}

    /// From the published form: MAKEINTRESOURCEW, "#123" or a text. Nothing
    /// for a null text, which as a number would be 0.
    static ResourceName fromPublished(LPCWSTR published);

    bool operator==(ResourceName const& other) const noexcept;
};

/// Why a resource was not found, or where it is.
struct ResourceSearch {
    enum class Outcome { found, noSuchType, noSuchName };
    Outcome outcome = Outcome::noSuchType;
    /// The whole entry, header and data; empty unless found.
    std::span<std::byte const> entry;
};

/// The first entry of this type and name. Stops at the first entry that does
/// not fit into `list`; never reads beyond it.
ResourceSearch findResource(std::span<std::byte const> list, ResourceName const& type,
                            ResourceName const& name);

/// The data of an entry whose first bytes are `entry`; nothing when the sizes
/// that it states do not fit into `entry`.
std::optional<std::span<std::byte const>> dataOfEntry(std::span<std::byte const> entry);

}  // namespace velk::platform
