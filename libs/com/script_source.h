/// Where the text of a registry script comes from.
#pragma once

#include <string>
#include <string_view>

#include <windows.h>

namespace velk::com {

/// Script text from bytes: UTF-16, little-endian, when they begin with its
/// byte-order mark, else UTF-8 with or without one. Throws Error with
/// HRESULT_FROM_WIN32(ERROR_INVALID_DATA) for bytes that are neither.
std::basic_string<OLECHAR> decodeScript(std::string_view bytes);

/// The text of resource `id` of type "REGISTRY". Throws Error with the
/// system's code when `module` has no such resource, or as decodeScript.
std::basic_string<OLECHAR> loadScript(HMODULE module, WORD id);

}  // namespace velk::com
