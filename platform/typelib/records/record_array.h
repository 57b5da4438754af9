/// SAFEARRAYs that stand for the fixed arrays of a record.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "platform/typelib/owners.h"

namespace velk::typelib {

/// One SAFEARRAY, destroyed at the end.
class OwnedArray {
  public:
    /// A new array of empty elements.
    ///
    /// @param bounds  the leftmost dimension first
    /// @param record  of the elements when they are records
    OwnedArray(VARTYPE type, std::vector<SAFEARRAYBOUND> bounds, IRecordInfo* record)
        : array_(SafeArrayCreateEx(type, static_cast<UINT>(bounds.size()), bounds.data(), record)) {
        require(array_, E_OUTOFMEMORY);
    }
    /// A copy of `source`.
    explicit OwnedArray(SAFEARRAY& source) { check(SafeArrayCopy(&source, &array_)); }
    OwnedArray(OwnedArray const&) = delete;
    OwnedArray& operator=(OwnedArray const&) = delete;
    ~OwnedArray() { SafeArrayDestroy(array_); }

    SAFEARRAY* get() const { return array_; }
    SAFEARRAY* release() { return std::exchange(array_, nullptr); }

  private:
    SAFEARRAY* array_ = nullptr;
};

/// Whether the elements of an array are the records of an identifier.
bool hasElementsOf(SAFEARRAY& array, GUID const& record);

/// The array in `value`, or behind the reference that it is. Fails with
/// DISP_E_TYPEMISMATCH when there is none of this type of elements.
SAFEARRAY& arrayIn(VARIANT const& value, VARTYPE element);

/// Whether an array has as many elements in each dimension as a fixed array.
bool sameBounds(SAFEARRAY const& array, std::vector<SAFEARRAYBOUND> const& bounds);

/// Where in an array of data the element stands that a fixed array has at
/// `index`: of the one the first dimension changes fastest, of the other the
/// last.
std::size_t arrayPosition(SAFEARRAY const& array, std::size_t index);

/// Calls `action` with each index of the fixed array that an array stands for,
/// and the address of that element in the array.
template <typename Action>
void forEachElement(SAFEARRAY& array, Action const& action) {
    std::size_t count = 1;
    for (USHORT i = 0; i < array.cDims; ++i) count *= array.rgsabound[i].cElements;
    auto* const data = static_cast<std::byte*>(array.pvData);
    for (std::size_t index = 0; index < count; ++index) {
        action(index, data + arrayPosition(array, index) * array.cbElements);
    }
}

}  // namespace velk::typelib
