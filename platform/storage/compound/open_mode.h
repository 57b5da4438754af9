/// The modes in which files and elements are opened.
#pragma once

#include <coml2api.h>

#include "platform/storage/compound/disk_file.h"

namespace velk::platform::storage {

inline constexpr DWORD accessBits = 0x3;
inline constexpr DWORD sharingBits = 0x70;

constexpr bool mayRead(DWORD mode) {
    return (mode & accessBits) != STGM_WRITE;
}
constexpr bool mayWrite(DWORD mode) {
    return (mode & accessBits) != STGM_READ;
}
constexpr bool isTransacted(DWORD mode) {
    return (mode & STGM_TRANSACTED) != 0;
}

/// Fails with STG_E_INVALIDFLAG for bits that mean nothing, and for
/// combinations in which a file cannot be opened or made.
void checkFileMode(DWORD mode, bool toCreate);

/// Fails with STG_E_INVALIDFLAG unless an element can be opened so: alone, and
/// with its changes made at once. STG_E_ACCESSDENIED when `parent`, the mode
/// of what it is in, does not permit the access.
void checkElementMode(DWORD mode, DWORD parent, bool toCreate);

/// What a mode means for the file.
Sharing sharingOf(DWORD mode);

}  // namespace velk::platform::storage
