/// Late-bound calls as tests write them.
#pragma once

#include <string>
#include <vector>

#include "com/owners.h"

namespace velk::test {

/// What Invoke answered.
struct NativeAnswer {
    HRESULT code = E_FAIL;
    com::Variant result;
    com::ExceptionInfo exception;
    /// 77 where the object did not set it.
    UINT argumentError = untouched;

    static constexpr UINT untouched = 77;

    /// The result as describeValue writes it, in ASCII; for a failed call its
    /// code in hexadecimal.
    std::string text() const;
};

/// Calls `member` with arguments in the order in which a caller writes them.
/// They stay the caller's. A failing GetIDsOfNames is the answer's code.
NativeAnswer callByName(IDispatch& object, char const* member, std::vector<VARIANT> arguments = {},
                        WORD flags = DISPATCH_METHOD);

/// Reads, and writes by value or by reference (`flags`), a property, whose new
/// value is the last argument.
NativeAnswer getByName(IDispatch& object, char const* member, std::vector<VARIANT> indexes = {});
NativeAnswer putByName(IDispatch& object, char const* member, std::vector<VARIANT> arguments,
                       WORD flags = DISPATCH_PROPERTYPUT);

/// The elements of a vector of texts, in ASCII.
std::vector<std::string> textsIn(com::Variant const& vector);

/// describeValue in ASCII.
std::string describe(VARIANT const& value);

/// A text as ASCII; other characters become '?', zero characters '.'.
std::string asciiOf(BSTR text);

}  // namespace velk::test
