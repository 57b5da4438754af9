/// Values of properties, from the bytes that property sets keep them in.
#pragma once

#include "platform/storage/properties/bytes.h"
#include "platform/storage/properties/held_value.h"
#include "platform/system/code_page.h"

namespace velk::platform::storage {

/// Reads a value with its type. Texts of bytes come as UTF-8, this system's
/// narrow encoding, whatever the page of the set.
///
/// \param bytes  where the value begins; it may end before they do
/// \param page   of the set
/// \param own    how many of the bytes are no other property's
/// \return the value; a vector may be one whose texts are padded or not, as
///     different programs have it
///
/// Fails with malformedSet, and with ERROR_NOT_SUPPORTED as an HRESULT for
/// types that are unknown, or that tell of another stream.
HeldValue readValue(Bytes bytes, std::size_t own, CodePage const& page);

/// How many of the bytes the value is, with its type and without its padding: some
/// programs have the next value there.
std::size_t valueSize(Bytes bytes, std::size_t own, CodePage const& page);

/// A text as byte texts come out of values. Ends at the first zero.
std::string narrowText(Bytes bytes, CodePage const& page);

}  // namespace velk::platform::storage
