/// Values in arrays in values in arrays, as deep as their makers like.
#pragma once

#include "oleauto.h"

namespace velk::platform {

/// Gives up an array, which nobody has locked, and everything in it. One that
/// goes many levels inside the end of others waits until these are gone, so
/// that no depth exhausts the stack; whatever waits is gone before the outermost
/// call on the thread returns.
HRESULT destroyArrayInTurn(SAFEARRAY* array) noexcept;

/// Copies `source` over `target`, an element of a new array. Many levels deep
/// the element stays empty at first, and is filled before the outermost
/// copyArrayInTurn on the thread returns.
HRESULT copyElementInTurn(VARIANT& target, VARIANT const& source) noexcept;

/// Runs `copy`, which makes `*made` of an array, and the copies of elements that
/// waited meanwhile. After a failure nothing is left of what was made.
HRESULT copyArrayInTurn(HRESULT (*copy)(SAFEARRAY* source, SAFEARRAY** made), SAFEARRAY* source,
                        SAFEARRAY** made) noexcept;

}  // namespace velk::platform
