/// Reading libraries of the MSFT format.
#pragma once

#include <memory>

#include "platform/typelib/format/byte_view.h"
#include "platform/typelib/model/model.h"

namespace velk::typelib {

/// Fails with a Failure unless a file that begins so is a library of this
/// format: TYPE_E_UNSUPFORMAT for another one's, else TYPE_E_CANTLOADLIBRARY.
void requireMsftSignature(ByteView beginning);

/// The model of the library in `bytes`, which are not needed afterwards.
///
/// Pointers, offsets into vtables and instance sizes are those of this
/// process, also for libraries that were made for 32-bit systems.
///
/// Fails with a Failure: TYPE_E_CANTLOADLIBRARY where the bytes are no
/// library, TYPE_E_UNSUPFORMAT for another format or version of it,
/// TYPE_E_INVDATAREAD for a damaged one. Time and memory are bounded by the
/// number of bytes.
std::unique_ptr<LibraryModel const> readMsftLibrary(ByteView bytes);

}  // namespace velk::typelib
