/// What the elements of an array are, and how they are copied and released.
#pragma once

#include <cstddef>

#include "oleauto.h"

namespace velk::platform {

/// The FADF_ flags that an array of `type` is made with.
USHORT elementFeaturesOf(VARTYPE type) noexcept;

/// The number of elements of all dimensions together. False when the count or
/// the bytes of that many elements do not fit an array (2 GB).
bool countElements(SAFEARRAY const& array, std::size_t& count) noexcept;

/// Releases what `count` elements from `start` on own and leaves zeroes there.
void clearElements(SAFEARRAY const& array, void* start, std::size_t count) noexcept;

/// Copies `count` elements over the elements at `target`, which must hold
/// values or zeroes; what they owned before is released. On failure the
/// elements up to the one that failed are copied.
HRESULT copyElements(SAFEARRAY const& array, void const* source, void* target,
                     std::size_t count) noexcept;

/// Record information of an array of records, borrowed; null for others.
IRecordInfo* recordInfoOf(SAFEARRAY const& array) noexcept;

}  // namespace velk::platform
