/// Sizes, alignments and offsets of this process.
#pragma once

#include "platform/typelib/model/model.h"

namespace velk::typelib {

/// Computes the sizes, alignments and field offsets of all records, unions
/// and aliases of `model` anew. A record that contains itself gets no size.
void layOutRecords(LibraryModel& model);

}  // namespace velk::typelib
