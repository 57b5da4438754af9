/// Values of OLE Automation as short texts, so that expectations fit tables.
///
/// A value is written as its type, a colon and its content: "I4:-5", "R8:2.5",
/// "BSTR:abc" (UTF-8), "BOOL:-1", "ERROR:80020004" (hexadecimal), "CY:1.5",
/// "DECIMAL:-1.50" (as many decimal places as its scale), "DATE:2.25",
/// "EMPTY", "NULL", "DISPATCH:null". "R8:inf", "R8:-inf" and "R8:nan" are what
/// is no finite number, "BSTR" is a null text. Only written, never read:
/// "DISPATCH:object", arrays with the elements in the order in which they stand,
/// "[0..1]{I4:1, I4:2}", and records by their fields, "Spot{x=I4:1, y=R4:2}".
#pragma once

#include <string>
#include <string_view>

#include <ole2.h>

namespace velk::test {

/// Owns a VARIANT and clears it at its end.
class Value {
  public:
    Value() { VariantInit(&content); }
    /// From the notation above. An unknown one ends the program.
    explicit Value(std::string_view notation);
    Value(Value const&) = delete;
    Value& operator=(Value const&) = delete;
    ~Value() { VariantClear(&content); }

    VARIANT* operator&() { return &content; }
    VARIANT& operator*() { return content; }
    VARIANT* operator->() { return &content; }

    std::string notation() const;

  private:
    VARIANT content;
};

/// A value in the notation above, floating-point numbers with as many digits as
/// tell them from their neighbours.
std::string notationOf(VARIANT const& value);

/// The code of a type by its name, such as "I4"; a name unknown ends the
/// program.
VARTYPE typeCalled(std::string_view name);

/// UTF-8 as UTF-16 of the basic plane, and back.
std::basic_string<OLECHAR> wide(std::string_view utf8);
std::string narrow(OLECHAR const* text, std::size_t length);

/// "OK", the name of a result code that many functions give, or its digits.
std::string resultName(HRESULT result);

}  // namespace velk::test
