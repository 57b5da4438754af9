/// Values as readable text.
#pragma once

#include <string>

#include <windows.h>

#include <oleauto.h>

namespace velk::test::server {

using Text = std::basic_string<OLECHAR>;

/// The type as its published name and the value after it:
/// `VT_I4 3`, `VT_BYREF|VT_I4 7`, `VT_BSTR "text"`, `VT_BOOL True`,
/// `VT_ERROR 0x80020004`, `VT_DISPATCH object`, `VT_ARRAY|VT_R8 [0..2, 0..1]`,
/// `VT_BYREF|VT_VARIANT (VT_I4 3)`, `VT_RECORD Point`. Null pointers read
/// `null`, types without a name as a hexadecimal number.
Text describeValue(VARIANT const& value);

/// What reached Invoke, in the order of rgvarg, which is the last argument
/// first: `flags=1 args=[VT_I4 3, VT_BYREF|VT_I4 7] named=0`. Named arguments
/// follow their number: `named=1 (-3)`.
Text describeCall(WORD flags, DISPPARAMS const* parameters);

/// Plain ASCII as text.
Text textOf(char const* ascii);

}  // namespace velk::test::server
