/// Streams of property sets in a notation of their own, as bytes.
#pragma once

#include <string>

namespace velk::test {

/// The bytes of sections, damaged where the text says so:
///
///     S{1:page 1252; 2:text A title}D{15:lpstr 5573} @52=ffffff7f cut 40
///
/// S, D, U and O are sections of the summary, the document, the user's and of
/// other properties; each property is its number and a value: `page` and `i4`
/// a number, `text` an ASCII text and `lpstr` its bytes, `pad` a text of so
/// many letters, `names` a dictionary of one entry (2=kept), `hex` all bytes
/// from the type on. `@`: bytes in place of those at an offset.
std::string setBytes(std::string const& notation);

/// Bytes written as numbers, spaces between them or not.
std::string bytesOfHex(std::string const& digits);

/// A number, its lowest byte first.
std::string numberBytes(unsigned long long number, std::size_t size = 4);

}  // namespace velk::test
