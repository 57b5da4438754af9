/// Values of properties, as property sets keep them.
#pragma once

#include <string_view>
#include <vector>

#include <propidl.h>

#include "platform/storage/properties/bytes.h"
#include "platform/system/code_page.h"

namespace velk::platform::storage {

/// A text that the page of the set has no characters for.
inline HRESULT const noSuchCharacter = HRESULT_FROM_WIN32(ERROR_NO_UNICODE_TRANSLATION);

/// A value with its type and its padding.
///
/// \param page  of the set: byte texts, which come as UTF-8, and BSTRs are kept
///              in it
///
/// Fails with noSuchCharacter; ERROR_NOT_SUPPORTED as an HRESULT for types that
/// only a storage could keep, and that no value can have;
/// STG_E_INVALIDPARAMETER for a value that is broken in itself.
std::vector<std::byte> writeValue(PROPVARIANT const& value, CodePage const& page);

/// A text with its zero in the page's characters.
std::string pageText(std::u16string_view text, CodePage const& page);

}  // namespace velk::platform::storage
