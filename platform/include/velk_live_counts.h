/// Counts of what the layer has handed out and not got back yet.
///
/// Tests compare them with zero at their end; nothing else reads them.
#pragma once

#include "windef.h"

enum VelkLiveKind {
    VELK_LIVE_BSTR = 0,           ///< texts of SysAllocString and its kin
    VELK_LIVE_SAFEARRAY = 1,      ///< array descriptors, and data blocks of their own
    VELK_LIVE_TASK_MEMORY = 2,    ///< blocks of CoTaskMemAlloc
    VELK_LIVE_TYPE_LIBRARY = 3,   ///< loaded type libraries, each counted once
    VELK_LIVE_DESCRIPTION = 4,    ///< TYPEATTR, FUNCDESC, VARDESC and TLIBATTR handed out
    VELK_LIVE_REGISTRY_KEY = 5,   ///< open registry keys
    VELK_LIVE_RECORD = 6,         ///< records of RecordCreate and its kin
    VELK_LIVE_COMPOUND_FILE = 7,  ///< files that are open as compound files
    VELK_LIVE_KINDS = 8
};

/// How many things of a kind are alive in this process. Exact once the
/// threads that make and free them have been joined. An unknown kind counts 0.
EXTERN_C VELK_LAYER_EXPORT LONGLONG VelkLiveCount(int kind);
