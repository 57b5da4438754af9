/// One value at a time between the two object models.
///
/// Plain functions without state or locks; they run on the caller's thread.
/// Numbers, truth values, dates, text and empty values cross by value. A host
/// object goes out as a new facade on every crossing, and a facade of this
/// module comes back as the very object that it stands for.
///
/// Every other native object arrives inside a `vbsComDispatchWrapperC`, and a
/// native value that no host type can hold (records, arrays, decimals, error
/// codes, nulls, bare interfaces, numbers beyond the host's) as a copy inside a
/// `vbsComVariantWrapperC`. Both give back what they hold when they cross again.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "host/variant.h"

/// Host to native.
///
/// \param src           the value to convert
/// \param dst           receives the value; what it held before is not
///                      released. The caller clears it with VariantClear.
/// \param typedByRef    1 for the empty object reference and for what a wrapper
///                      gave back, else 0: whether a by-reference argument is
///                      passed as a reference to its own type and not as one
///                      to a VARIANT
/// \param wrapperFlags  the flags of the value wrapper that held the value, else 0
/// \return false, `dst` then being empty, when the host type has no native
///         form, when no facade could be made, for a wrapped value that cannot be
///         copied or is a reference to nothing, and while another thread is in
///         the value wrapper
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
///                           refusing it; a value behind a reference that is
///                           not followed is always wrapped
/// \return false, `dst` then being empty, for a value without host form that
///         is not wrapped, for a null reference and for a circle of references
///
/// Throws com::Error with the failure of copying a value that is to be wrapped.
bool convertMSCOMVariant2MZCOMVariant(VARIANT const& src, mzComVariantC& dst,
                                      bool followVariantRefs, bool wrapUnsupported);
