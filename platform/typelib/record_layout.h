/// Sizes, alignments and offsets of this process.
#pragma once

#include <functional>

#include "platform/typelib/model.h"

namespace velk::typelib {

/// Computes the sizes, alignments and field offsets of all records, unions
/// and aliases of `model` anew. A record that contains itself gets no size.
void layOutRecords(LibraryModel& model);

struct Extent {
    ULONG size = 0;
    ULONG alignment = 1;
};

/// Computes the same for one type and those that it is made of.
///
/// @param foreign  what a type of another library takes
///
/// Fails with a ResultError: TYPE_E_CIRCULARTYPE for a record that contains
/// itself, TYPE_E_SIZETOOBIG for one of two gigabytes or more,
/// TYPE_E_UNDEFINEDTYPE for one that contains a deleted type.
void layOutRecord(LibraryModel& model, std::size_t place,
                  std::function<Extent(HREFTYPE)> const& foreign);

}  // namespace velk::typelib
