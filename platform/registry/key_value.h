/// Reading one value, whatever the view.
#pragma once

#include <optional>
#include <string_view>

#include "platform/registry/open_key.h"

namespace velk::platform::registry {

/// The value that a view shows under this name. Fails with ERROR_KEY_DELETED
/// when the key is gone.
std::optional<ValueContent> valueOf(KeyView const& view, Name const& name);

/// Gives bytes to a caller in the published way: `size` is the room in bytes
/// and becomes what is needed; without `data` only that. ERROR_MORE_DATA when
/// the room is too small.
LSTATUS handOut(std::string_view bytes, void* data, LPDWORD size);

}  // namespace velk::platform::registry
