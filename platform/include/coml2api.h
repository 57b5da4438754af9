/// Functions of structured storage: making and opening compound files.
#pragma once

#include "objidl_storage.h"

#define STGM_DIRECT 0x00000000
#define STGM_TRANSACTED 0x00010000
#define STGM_SIMPLE 0x08000000
#define STGM_READ 0x00000000
#define STGM_WRITE 0x00000001
#define STGM_READWRITE 0x00000002
#define STGM_SHARE_DENY_NONE 0x00000040
#define STGM_SHARE_DENY_READ 0x00000030
#define STGM_SHARE_DENY_WRITE 0x00000020
#define STGM_SHARE_EXCLUSIVE 0x00000010
#define STGM_PRIORITY 0x00040000
#define STGM_DELETEONRELEASE 0x04000000
#define STGM_NOSCRATCH 0x00100000
#define STGM_CREATE 0x00001000
#define STGM_CONVERT 0x00020000
#define STGM_FAILIFTHERE 0x00000000
#define STGM_NOSNAPSHOT 0x00200000
#define STGM_DIRECT_SWMR 0x00400000

/// Makes a compound file, or a temporary one when `name` is null. The file
/// exists when this returns; what is put into it is there after a commit or
/// the last release.
WINOLEAPI StgCreateDocfile(OLECHAR const* name, DWORD mode, DWORD reserved, IStorage** storage);

/// Opens a compound file. STG_E_FILENOTFOUND, STG_E_ACCESSDENIED,
/// STG_E_SHAREVIOLATION, STG_E_LOCKVIOLATION; STG_E_FILEALREADYEXISTS for a
/// file of another kind; STG_E_INVALIDFLAG for modes that make no sense.
WINOLEAPI StgOpenStorage(OLECHAR const* name, IStorage* priority, DWORD mode, SNB exclude,
                         DWORD reserved, IStorage** storage);
