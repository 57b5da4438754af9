#include "platform/storage/compound/open_mode.h"

#include "platform/system/boundary.h"

namespace velk::platform::storage {
namespace {

constexpr DWORD knownBits = accessBits | sharingBits | STGM_CREATE | STGM_CONVERT |
                            STGM_TRANSACTED | STGM_PRIORITY | STGM_NOSCRATCH | STGM_NOSNAPSHOT |
                            STGM_DIRECT_SWMR | STGM_DELETEONRELEASE | STGM_SIMPLE;

void checkBits(DWORD mode) {
    DWORD const sharing = mode & sharingBits;
    require((mode & ~knownBits) == 0 && (mode & accessBits) != accessBits &&
                sharing <= STGM_SHARE_DENY_NONE,
            STG_E_INVALIDFLAG);
}

/// One writer beside any number of readers.
bool isSingleWriterMode(DWORD mode) {
    DWORD const rest = mode & (accessBits | sharingBits);
    return rest == (STGM_READWRITE | STGM_SHARE_DENY_WRITE) ||
           rest == (STGM_READ | STGM_SHARE_DENY_NONE);
}

bool isDirectMode(DWORD mode) {
    DWORD const sharing = mode & sharingBits;
    return sharing == STGM_SHARE_EXCLUSIVE || (!mayWrite(mode) && sharing == STGM_SHARE_DENY_WRITE);
}

}  // namespace

void checkFileMode(DWORD mode, bool toCreate) {
    checkBits(mode);
    constexpr DWORD ofCreating = STGM_CREATE | STGM_DELETEONRELEASE;
    require((mode & STGM_CONVERT) == 0 && (toCreate || (mode & ofCreating) == 0),
            STG_E_INVALIDFLAG);
    require(!toCreate || mayWrite(mode), STG_E_INVALIDFLAG);
    if ((mode & STGM_DIRECT_SWMR) != 0) {
        require(!isTransacted(mode) && isSingleWriterMode(mode), STG_E_INVALIDFLAG);
    } else if ((mode & STGM_PRIORITY) != 0) {
        require(!mayWrite(mode) && !isTransacted(mode), STG_E_INVALIDFLAG);
    } else {
        require(isTransacted(mode) || isDirectMode(mode), STG_E_INVALIDFLAG);
    }
}

void checkElementMode(DWORD mode, DWORD parent, bool toCreate) {
    checkBits(mode);
    require((mode & sharingBits) == STGM_SHARE_EXCLUSIVE, STG_E_INVALIDFLAG);
    constexpr DWORD ofFiles = STGM_CONVERT | STGM_TRANSACTED | STGM_PRIORITY |
                              STGM_DELETEONRELEASE | STGM_NOSCRATCH | STGM_NOSNAPSHOT;
    require((mode & ofFiles) == 0 && (toCreate || (mode & STGM_CREATE) == 0), STG_E_INVALIDFLAG);
    require(mayWrite(parent) || (!mayWrite(mode) && !toCreate), STG_E_ACCESSDENIED);
}

Sharing sharingOf(DWORD mode) {
    DWORD const sharing = mode & sharingBits;
    bool const alone = sharing == STGM_SHARE_EXCLUSIVE;
    return {true, mayWrite(mode), alone || sharing == STGM_SHARE_DENY_READ,
            alone || sharing == STGM_SHARE_DENY_WRITE};
}

}  // namespace velk::platform::storage
