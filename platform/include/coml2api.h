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

#define STGFMT_STORAGE 0
#define STGFMT_NATIVE 1
#define STGFMT_FILE 3
#define STGFMT_ANY 4
#define STGFMT_DOCFILE 5
#define STGOPTIONS_VERSION 2

struct STGOPTIONS {
    USHORT usVersion;
    USHORT reserved;
    ULONG ulSectorSize;  ///< 512 or 4096 bytes
    WCHAR const* pwcsTemplateFile;
};
static_assert(sizeof(STGOPTIONS) == 16);

/// Makes a compound file, or a temporary one when `name` is null. The file
/// exists when this returns; what is put into it is there after a commit or
/// the last release.
WINOLEAPI StgCreateDocfile(OLECHAR const* name, DWORD mode, DWORD reserved, IStorage** storage);

/// The same with a choice of the sector size. Gives `riid` of the storage.
WINOLEAPI StgCreateStorageEx(WCHAR const* name, DWORD mode, DWORD format, DWORD attributes,
                             STGOPTIONS* options, void* security, REFIID riid, void** object);

/// Opens a compound file. STG_E_FILENOTFOUND, STG_E_ACCESSDENIED,
/// STG_E_SHAREVIOLATION, STG_E_LOCKVIOLATION; STG_E_FILEALREADYEXISTS for a
/// file of another kind; STG_E_INVALIDFLAG for modes that make no sense.
WINOLEAPI StgOpenStorage(OLECHAR const* name, IStorage* priority, DWORD mode, SNB exclude,
                         DWORD reserved, IStorage** storage);
WINOLEAPI StgOpenStorageEx(WCHAR const* name, DWORD mode, DWORD format, DWORD attributes,
                           STGOPTIONS* options, void* reserved, REFIID riid, void** object);

/// S_OK for a compound file, S_FALSE for another, and the error of opening it.
WINOLEAPI StgIsStorageFile(OLECHAR const* name);
