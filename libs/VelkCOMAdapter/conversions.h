/// One value at a time between the two object models.
///
/// Plain functions without state or locks; they run on the caller's thread.
/// Numbers, truth values, dates, text and empty values cross by value. A host
/// object goes out as a new facade on every crossing, and a facade of this
/// module comes back as the very object that it stands for.
///
/// Native objects that are no facades, and native values that no host type
/// can hold (records, arrays, decimals, error codes, nulls, bare interfaces),
/// would cross inside a wrapper object. The module has no wrapper classes yet:
/// such values have no host form.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "host/variant.h"

/// Host to native.
///
/// \param src           the value to convert
/// \param dst           receives the value; what it held before is not
///                      released. The caller clears it with VariantClear.
/// \param typedByRef    1 for the empty object reference, else 0: whether a
///                      by-reference argument is passed as a reference to its
///                      own type and not as one to a VARIANT
/// \param wrapperFlags  0; the flags of the wrapper that held the value
/// \return false, `dst` then being empty, when the host type has no native
///         form or when no facade could be made
///
/// Throws what carries E_OUTOFMEMORY when a text cannot be copied.
bool convertMZCOMVariant2MSCOMVariant(mzComVariantC const& src, VARIANT& dst, unsigned& typedByRef,
                                      unsigned& wrapperFlags);

/// Native to host.
///
/// \param src                the value to convert, not changed
/// \param dst                receives the value in place of the one it holds
/// \param followVariantRefs  first follow references to VARIANTs to the value
///                           that they end at
/// \param wrapUnsupported    wrap a value without host form instead of
///                           refusing it; without effect as long as there is
///                           nothing to wrap it in
/// \return false, `dst` then being empty, for a value without host form. A
///         value that cannot be coerced, a null reference and a circle of
///         references have none either.
bool convertMSCOMVariant2MZCOMVariant(VARIANT const& src, mzComVariantC& dst,
                                      bool followVariantRefs, bool wrapUnsupported);
