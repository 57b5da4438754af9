/// Texts as arrays of bytes, and back.
#pragma once

#include "oleauto.h"

namespace velk::platform {

/// The bytes of a one-dimensional VT_UI1 array as a text of that byte length.
/// DISP_E_TYPEMISMATCH for any other array, null included.
HRESULT bytesToText(SAFEARRAY* array, BSTR& text) noexcept;

/// A new array, counted from 0, with the bytes of a text.
HRESULT textToBytes(BSTR text, SAFEARRAY*& array) noexcept;

}  // namespace velk::platform
