/// Structured storage: streams, storages and what they tell of themselves.
/// Slots stand in their published order.
#pragma once

#include "unknwn.h"

union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        LONG HighPart;
    };
    LONGLONG QuadPart;
};
union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    };
    ULONGLONG QuadPart;
};
static_assert(sizeof(LARGE_INTEGER) == 8 && sizeof(ULARGE_INTEGER) == 8);

/// A list of names that ends with a null pointer.
using SNB = LPOLESTR*;

enum STGTY { STGTY_STORAGE = 1, STGTY_STREAM = 2, STGTY_LOCKBYTES = 3, STGTY_PROPERTY = 4 };
enum STREAM_SEEK { STREAM_SEEK_SET = 0, STREAM_SEEK_CUR = 1, STREAM_SEEK_END = 2 };
enum STATFLAG { STATFLAG_DEFAULT = 0, STATFLAG_NONAME = 1, STATFLAG_NOOPEN = 2 };
enum STGMOVE { STGMOVE_MOVE = 0, STGMOVE_COPY = 1, STGMOVE_SHALLOWCOPY = 2 };
enum LOCKTYPE { LOCK_WRITE = 1, LOCK_EXCLUSIVE = 2, LOCK_ONLYONCE = 4 };
enum STGC {
    STGC_DEFAULT = 0,
    STGC_OVERWRITE = 1,
    STGC_ONLYIFCURRENT = 2,
    STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE = 4,
    STGC_CONSOLIDATE = 8
};

struct STATSTG {
    LPOLESTR pwcsName;  ///< of CoTaskMemAlloc; null when it was not asked for
    DWORD type;         ///< one of STGTY
    ULARGE_INTEGER cbSize;
    FILETIME mtime;
    FILETIME ctime;
    FILETIME atime;
    DWORD grfMode;
    DWORD grfLocksSupported;
    CLSID clsid;
    DWORD grfStateBits;
    DWORD reserved;
};
static_assert(sizeof(STATSTG) == 80 && offsetof(STATSTG, cbSize) == 16 &&
              offsetof(STATSTG, clsid) == 56);

EXTERN_C VELK_LAYER_EXPORT IID const IID_ISequentialStream;
struct ISequentialStream : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Read(void* pv, ULONG cb, ULONG* pcbRead) = 0;
    virtual HRESULT STDMETHODCALLTYPE Write(void const* pv, ULONG cb, ULONG* pcbWritten) = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_IStream;
struct IStream : ISequentialStream {
    virtual HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER dlibMove, DWORD dwOrigin,
                                           ULARGE_INTEGER* plibNewPosition) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER libNewSize) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyTo(IStream* pstm, ULARGE_INTEGER cb,
                                             ULARGE_INTEGER* pcbRead,
                                             ULARGE_INTEGER* pcbWritten) = 0;
    virtual HRESULT STDMETHODCALLTYPE Commit(DWORD grfCommitFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
    virtual HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb,
                                                 DWORD dwLockType) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb,
                                                   DWORD dwLockType) = 0;
    virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IStream** ppstm) = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_IEnumSTATSTG;
struct IEnumSTATSTG : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG celt, STATSTG* rgelt, ULONG* pceltFetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG celt) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumSTATSTG** ppenum) = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_IStorage;
struct IStorage : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateStream(OLECHAR const* pwcsName, DWORD grfMode,
                                                   DWORD reserved1, DWORD reserved2,
                                                   IStream** ppstm) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenStream(OLECHAR const* pwcsName, void* reserved1,
                                                 DWORD grfMode, DWORD reserved2,
                                                 IStream** ppstm) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateStorage(OLECHAR const* pwcsName, DWORD grfMode,
                                                    DWORD reserved1, DWORD reserved2,
                                                    IStorage** ppstg) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenStorage(OLECHAR const* pwcsName, IStorage* pstgPriority,
                                                  DWORD grfMode, SNB snbExclude, DWORD reserved,
                                                  IStorage** ppstg) = 0;
    virtual HRESULT STDMETHODCALLTYPE CopyTo(DWORD ciidExclude, IID const* rgiidExclude,
                                             SNB snbExclude, IStorage* pstgDest) = 0;
    virtual HRESULT STDMETHODCALLTYPE MoveElementTo(OLECHAR const* pwcsName, IStorage* pstgDest,
                                                    OLECHAR const* pwcsNewName, DWORD grfFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE Commit(DWORD grfCommitFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumElements(DWORD reserved1, void* reserved2,
                                                   DWORD reserved3, IEnumSTATSTG** ppenum) = 0;
    virtual HRESULT STDMETHODCALLTYPE DestroyElement(OLECHAR const* pwcsName) = 0;
    virtual HRESULT STDMETHODCALLTYPE RenameElement(OLECHAR const* pwcsOldName,
                                                    OLECHAR const* pwcsNewName) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetElementTimes(OLECHAR const* pwcsName,
                                                      FILETIME const* pctime,
                                                      FILETIME const* patime,
                                                      FILETIME const* pmtime) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetClass(REFCLSID clsid) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetStateBits(DWORD grfStateBits, DWORD grfMask) = 0;
    virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
};
