/// Property sets in an IStream.
#pragma once

#include <objidl_storage.h>

#include "platform/storage/properties/set_stream.h"

namespace velk::platform::storage {

/// Reads a stream from its beginning; an empty one has no sets. Fails with what
/// the stream answers, STG_E_INVALIDHEADER for a stream of something else, and
/// STG_E_INSUFFICIENTMEMORY beyond 64 MiB, which no set of a document comes near.
SetStream readSets(IStream& stream);

/// Writes the stream anew. Fails with what the stream answers.
void writeSets(IStream& stream, SetStream const& sets);

}  // namespace velk::platform::storage
