/// From the paths of programs to the files of this system.
///
/// Drives and shares stand in the registry, in the values of the key
/// `Software\VelkCOMAdapter\Volumes`, the user's before the machine's: the
/// value `C:\` or `\\server\share\` names the folder that is the root there.
/// A value of the same name in the key `FileSystems` below it is the name of
/// the file system to report, instead of what is mounted there.
#pragma once

#include "windef.h"

/// The file that `path` names, as UTF-8. A path with a drive or a share is
/// looked up in the table; `.` and `..` in it never lead out of its root, and
/// names below the root count case. Every other path is one of this system;
/// in a relative one `\` separates as `/` does.
///
/// \param file      receives the path with its zero; null with capacity 0
/// \param capacity  of `file`, in bytes
/// \return the length without the zero; with too small a buffer the length
///     with it, and nothing is written. 0 on failure, where GetLastError tells
///     ERROR_PATH_NOT_FOUND (no such drive), ERROR_BAD_NETPATH (no such share)
///     or ERROR_INVALID_NAME (no path).
///
/// Thread-safe.
EXTERN_C VELK_LAYER_EXPORT DWORD VelkFileOfPath(LPCWSTR path, char* file, DWORD capacity);

/// A drive that stands for the same folder as the share of this path: its root
/// (`C:\`) goes into `root`, which has room for 4 units. FALSE when there is none.
/// Thread-safe.
EXTERN_C VELK_LAYER_EXPORT BOOL VelkDriveOfShare(LPCWSTR share, LPWSTR root);
