#pragma once

/// Structured storage: one file that holds a tree of storages (folders) and streams (files).
/// Stands in for the system's own <objbase.h> with the same names, values, signatures and slot
/// order, so that code written for Windows compiles unchanged; there it gives way to it.
///
/// Supported is what a writer of new files needs, StgCreateStorageEx in direct mode, and what a
/// reader needs, StgOpenStorageEx: an existing file is opened for reading only. A file is a
/// compound file of version 3 (512-byte sectors) or 4 (4096-byte sectors); one that is written is
/// complete and valid after the last Release of the root storage, and also after every Commit.
///
/// - Objects are used from one thread at a time.
/// - Open elements do not keep the root alive. After the root's last Release the file is finished
///   and closed; what is still held then answers STG_E_REVERTED to everything but
///   QueryInterface, AddRef and Release, and goes with its own last Release. The same holds for
///   an open element that is destroyed or replaced.
/// - Whatever can fail for lack of space fails in the call that needs the space (STG_E_MEDIUMFULL)
///   and leaves the object usable: what a Write reported as written, the last Release keeps.
/// - The last Release has no result. What can still go wrong there is an input/output error of the
///   disk, and lack of memory for the tables (some bytes for each element and fragment). Commit
///   makes the file valid and reports both: call it first where that has to be known.
/// - Changes after a Commit go over the tables that it wrote: until the next Commit or the last
///   Release the file is not valid, and a process that stops in between leaves it so.
/// - Creating with STGM_CREATE replaces only when nothing can fail any more: a refused call leaves
///   the old element or, when the file itself is refused for lack of space, the old file.
/// - A stream that grows takes the sectors it needs and none ahead. Streams that grow in turns by
///   small writes are valid but lie in many fragments, at 8 bytes of memory each; written one
///   after the other they lie in one piece.
/// - No operation throws; lack of memory is E_OUTOFMEMORY.

#ifdef _WIN32

#include <objbase.h>
#include <ole2.h>
#ifndef KEL_PLATFORM_API
#define KEL_PLATFORM_API
#endif

#else

#include <cstddef>
#include <cstdint>

#include "platform/base_types.h"

using WCHAR = wchar_t;
using OLECHAR = wchar_t;  // one code point; names are UTF-16 in the file
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
#ifndef OLESTR
#define OLESTR(text) L##text
#endif
using SNB = LPOLESTR*;  // names, ended by a null pointer
using USHORT = std::uint16_t;
using SIZE_T = std::size_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using PSECURITY_DESCRIPTOR = void*;

/// 100-nanosecond intervals since 1601-01-01, UTC.
struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

union LARGE_INTEGER {
  __extension__ struct {
    DWORD LowPart;
    LONG HighPart;
  };
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  LONGLONG QuadPart;
};

union ULARGE_INTEGER {
  __extension__ struct {
    DWORD LowPart;
    DWORD HighPart;
  };
  struct {
    DWORD LowPart;
    DWORD HighPart;
  } u;
  ULONGLONG QuadPart;
};

// Result codes.
constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004);
constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFF);
constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005);
constexpr HRESULT E_HANDLE = static_cast<HRESULT>(0x80070006);
constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
constexpr HRESULT STG_E_INVALIDFUNCTION = static_cast<HRESULT>(0x80030001);
constexpr HRESULT STG_E_FILENOTFOUND = static_cast<HRESULT>(0x80030002);
constexpr HRESULT STG_E_PATHNOTFOUND = static_cast<HRESULT>(0x80030003);
constexpr HRESULT STG_E_TOOMANYOPENFILES = static_cast<HRESULT>(0x80030004);
constexpr HRESULT STG_E_ACCESSDENIED = static_cast<HRESULT>(0x80030005);
constexpr HRESULT STG_E_INVALIDHANDLE = static_cast<HRESULT>(0x80030006);
constexpr HRESULT STG_E_INSUFFICIENTMEMORY = static_cast<HRESULT>(0x80030008);
constexpr HRESULT STG_E_INVALIDPOINTER = static_cast<HRESULT>(0x80030009);
constexpr HRESULT STG_E_NOMOREFILES = static_cast<HRESULT>(0x80030012);
constexpr HRESULT STG_E_DISKISWRITEPROTECTED = static_cast<HRESULT>(0x80030013);
constexpr HRESULT STG_E_SEEKERROR = static_cast<HRESULT>(0x80030019);
constexpr HRESULT STG_E_WRITEFAULT = static_cast<HRESULT>(0x8003001D);
constexpr HRESULT STG_E_READFAULT = static_cast<HRESULT>(0x8003001E);
constexpr HRESULT STG_E_SHAREVIOLATION = static_cast<HRESULT>(0x80030020);
constexpr HRESULT STG_E_LOCKVIOLATION = static_cast<HRESULT>(0x80030021);
constexpr HRESULT STG_E_FILEALREADYEXISTS = static_cast<HRESULT>(0x80030050);
constexpr HRESULT STG_E_INVALIDPARAMETER = static_cast<HRESULT>(0x80030057);
constexpr HRESULT STG_E_MEDIUMFULL = static_cast<HRESULT>(0x80030070);
constexpr HRESULT STG_E_ABNORMALAPIEXIT = static_cast<HRESULT>(0x800300FA);
constexpr HRESULT STG_E_INVALIDHEADER = static_cast<HRESULT>(0x800300FB);
constexpr HRESULT STG_E_INVALIDNAME = static_cast<HRESULT>(0x800300FC);
constexpr HRESULT STG_E_UNKNOWN = static_cast<HRESULT>(0x800300FD);
constexpr HRESULT STG_E_UNIMPLEMENTEDFUNCTION = static_cast<HRESULT>(0x800300FE);
constexpr HRESULT STG_E_INVALIDFLAG = static_cast<HRESULT>(0x800300FF);
constexpr HRESULT STG_E_INUSE = static_cast<HRESULT>(0x80030100);
constexpr HRESULT STG_E_NOTCURRENT = static_cast<HRESULT>(0x80030101);
constexpr HRESULT STG_E_REVERTED = static_cast<HRESULT>(0x80030102);
constexpr HRESULT STG_E_CANTSAVE = static_cast<HRESULT>(0x80030103);
constexpr HRESULT STG_E_OLDFORMAT = static_cast<HRESULT>(0x80030104);
constexpr HRESULT STG_E_OLDDLL = static_cast<HRESULT>(0x80030105);
constexpr HRESULT STG_E_DOCFILECORRUPT = static_cast<HRESULT>(0x80030109);

// Access modes. A file is created with STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE.
constexpr DWORD STGM_DIRECT = 0x00000000;
constexpr DWORD STGM_TRANSACTED = 0x00010000;
constexpr DWORD STGM_SIMPLE = 0x08000000;
constexpr DWORD STGM_READ = 0x00000000;
constexpr DWORD STGM_WRITE = 0x00000001;
constexpr DWORD STGM_READWRITE = 0x00000002;
constexpr DWORD STGM_SHARE_EXCLUSIVE = 0x00000010;
constexpr DWORD STGM_SHARE_DENY_WRITE = 0x00000020;
constexpr DWORD STGM_SHARE_DENY_READ = 0x00000030;
constexpr DWORD STGM_SHARE_DENY_NONE = 0x00000040;
constexpr DWORD STGM_PRIORITY = 0x00040000;
constexpr DWORD STGM_DELETEONRELEASE = 0x04000000;
constexpr DWORD STGM_NOSCRATCH = 0x00100000;
constexpr DWORD STGM_NOSNAPSHOT = 0x00200000;
constexpr DWORD STGM_DIRECT_SWMR = 0x00400000;
constexpr DWORD STGM_CREATE = 0x00001000;
constexpr DWORD STGM_CONVERT = 0x00020000;
constexpr DWORD STGM_FAILIFTHERE = 0x00000000;

constexpr DWORD STGFMT_STORAGE = 0;
constexpr DWORD STGFMT_NATIVE = 1;
constexpr DWORD STGFMT_FILE = 3;
constexpr DWORD STGFMT_ANY = 4;
constexpr DWORD STGFMT_DOCFILE = 5;

enum STGC : DWORD {
  STGC_DEFAULT = 0,
  STGC_OVERWRITE = 1,
  STGC_ONLYIFCURRENT = 2,
  STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE = 4,
  STGC_CONSOLIDATE = 8,
};

enum STATFLAG : DWORD { STATFLAG_DEFAULT = 0, STATFLAG_NONAME = 1, STATFLAG_NOOPEN = 2 };

enum STREAM_SEEK : DWORD { STREAM_SEEK_SET = 0, STREAM_SEEK_CUR = 1, STREAM_SEEK_END = 2 };

enum STGTY : DWORD { STGTY_STORAGE = 1, STGTY_STREAM = 2, STGTY_LOCKBYTES = 3, STGTY_PROPERTY = 4 };

enum STGMOVE : DWORD { STGMOVE_MOVE = 0, STGMOVE_COPY = 1, STGMOVE_SHALLOWCOPY = 2 };

// The kinds of region locks are left out: LOCK_WRITE is a macro of <fcntl.h> here, and regions
// cannot be locked.

/// What Stat and Next say of an element. `pwcsName` is freed with CoTaskMemFree.
struct STATSTG {
  LPOLESTR pwcsName;
  DWORD type;             // STGTY_STORAGE or STGTY_STREAM
  ULARGE_INTEGER cbSize;  // bytes; 0 for a storage
  FILETIME mtime;         // zero for a stream, as are ctime and atime
  FILETIME ctime;
  FILETIME atime;
  DWORD grfMode;
  DWORD grfLocksSupported;
  CLSID clsid;
  DWORD grfStateBits;
  DWORD reserved;
};

/// How StgCreateStorageEx lays out the file. Of version 1 only the first three fields are read.
struct STGOPTIONS {
  USHORT usVersion;
  USHORT reserved;                // 0
  ULONG ulSectorSize;             // 512 or 4096 bytes
  const WCHAR* pwcsTemplateFile;  // from version 2 on
};

constexpr IID IID_IUnknown = {0x00000000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID IID_IStorage = {0x0000000B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID IID_IStream = {0x0000000C, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID IID_IEnumSTATSTG = {0x0000000D, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID IID_ISequentialStream = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};

// The interfaces. Slots are called by position: their order is part of the contract. Objects are
// ended by Release alone, so no class here has a virtual destructor.

struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;   // the new count
  virtual ULONG STDMETHODCALLTYPE Release() = 0;  // the count that is left
};

struct ISequentialStream : IUnknown {
  /// Reads at the seek pointer. A short read at the end is S_OK with the count in `pcbRead`.
  virtual HRESULT STDMETHODCALLTYPE Read(void* pv, ULONG cb, ULONG* pcbRead) = 0;
  /// Writes at the seek pointer, growing the stream. On failure `pcbWritten` bytes are in it.
  virtual HRESULT STDMETHODCALLTYPE Write(const void* pv, ULONG cb, ULONG* pcbWritten) = 0;
};

struct IEnumSTATSTG;

struct IStream : ISequentialStream {
  virtual HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER dlibMove, DWORD dwOrigin,
                                         ULARGE_INTEGER* plibNewPosition) = 0;
  /// Cuts the stream or lengthens it with zero bytes; the seek pointer stays.
  virtual HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER libNewSize) = 0;
  virtual HRESULT STDMETHODCALLTYPE CopyTo(IStream* pstm, ULARGE_INTEGER cb,
                                           ULARGE_INTEGER* pcbRead, ULARGE_INTEGER* pcbWritten) = 0;
  virtual HRESULT STDMETHODCALLTYPE Commit(DWORD grfCommitFlags) = 0;
  /// No effect in direct mode.
  virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
  /// Not supported: STG_E_INVALIDFUNCTION.
  virtual HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb,
                                               DWORD dwLockType) = 0;
  /// Not supported: STG_E_INVALIDFUNCTION.
  virtual HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb,
                                                 DWORD dwLockType) = 0;
  virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
  /// A second object on the same bytes, with a seek pointer of its own.
  virtual HRESULT STDMETHODCALLTYPE Clone(IStream** ppstm) = 0;
};

/// Names are at most 31 UTF-16 units without / \ : !, and are compared without regard to case.
/// Elements are opened with STGM_SHARE_EXCLUSIVE, and by one opener at a time.
struct IStorage : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateStream(const OLECHAR* pwcsName, DWORD grfMode,
                                                 DWORD reserved1, DWORD reserved2,
                                                 IStream** ppstm) = 0;
  virtual HRESULT STDMETHODCALLTYPE OpenStream(const OLECHAR* pwcsName, void* reserved1,
                                               DWORD grfMode, DWORD reserved2, IStream** ppstm) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateStorage(const OLECHAR* pwcsName, DWORD grfMode,
                                                  DWORD reserved1, DWORD reserved2,
                                                  IStorage** ppstg) = 0;
  virtual HRESULT STDMETHODCALLTYPE OpenStorage(const OLECHAR* pwcsName, IStorage* pstgPriority,
                                                DWORD grfMode, SNB snbExclude, DWORD reserved,
                                                IStorage** ppstg) = 0;
  virtual HRESULT STDMETHODCALLTYPE CopyTo(DWORD ciidExclude, const IID* rgiidExclude,
                                           SNB snbExclude, IStorage* pstgDest) = 0;
  virtual HRESULT STDMETHODCALLTYPE MoveElementTo(const OLECHAR* pwcsName, IStorage* pstgDest,
                                                  const OLECHAR* pwcsNewName, DWORD grfFlags) = 0;
  /// Writes everything out, so that the file is valid as it stands; through any storage of it.
  /// Committing the root also waits for the disk, unless the flag for the disk cache is given.
  virtual HRESULT STDMETHODCALLTYPE Commit(DWORD grfCommitFlags) = 0;
  /// No effect in direct mode.
  virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
  /// A snapshot, in the order of the names.
  virtual HRESULT STDMETHODCALLTYPE EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                                                 IEnumSTATSTG** ppenum) = 0;
  virtual HRESULT STDMETHODCALLTYPE DestroyElement(const OLECHAR* pwcsName) = 0;
  /// The element must not be open.
  virtual HRESULT STDMETHODCALLTYPE RenameElement(const OLECHAR* pwcsOldName,
                                                  const OLECHAR* pwcsNewName) = 0;
  /// A null name means this storage. A stream has no times: nothing happens.
  virtual HRESULT STDMETHODCALLTYPE SetElementTimes(const OLECHAR* pwcsName, const FILETIME* pctime,
                                                    const FILETIME* patime,
                                                    const FILETIME* pmtime) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetClass(REFCLSID clsid) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetStateBits(DWORD grfStateBits, DWORD grfMask) = 0;
  virtual HRESULT STDMETHODCALLTYPE Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
};

using LPSTREAM = IStream*;
using LPSTORAGE = IStorage*;

/// Gives `storage` the class identifier `clsid`.
inline HRESULT WriteClassStg(LPSTORAGE storage, REFCLSID clsid) {
  return storage == nullptr ? E_INVALIDARG : storage->SetClass(clsid);
}

struct IEnumSTATSTG : IUnknown {
  /// S_FALSE when fewer than `celt` were left; `pceltFetched` may be null only when `celt` is 1.
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG celt, STATSTG* rgelt, ULONG* pceltFetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG celt) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumSTATSTG** ppenum) = 0;
};

extern "C" {

/// Creates a compound file, replacing what is there, and gives its root storage to the caller,
/// who owns one reference.
///
/// `pwcsName` may use both separators. `grfMode` is STGM_CREATE | STGM_SHARE_EXCLUSIVE |
/// STGM_READWRITE (0x1012; else STG_E_INVALIDFLAG), `stgfmt` STGFMT_DOCFILE and `grfAttrs` 0 (else
/// STG_E_INVALIDPARAMETER), `riid` IID_IStorage or IID_IUnknown (else E_NOINTERFACE). Null
/// `pStgOptions` means 512-byte sectors.
///
/// A file without write permission for its owner is refused with STG_E_ACCESSDENIED, also to
/// root; one that is open through this function already, with STG_E_SHAREVIOLATION.
KEL_PLATFORM_API HRESULT WINAPI StgCreateStorageEx(const WCHAR* pwcsName, DWORD grfMode,
                                                   DWORD stgfmt, DWORD grfAttrs,
                                                   STGOPTIONS* pStgOptions,
                                                   PSECURITY_DESCRIPTOR pSecurityDescriptor,
                                                   REFIID riid, void** ppObjectOpen);

/// Opens a compound file for reading and gives its root storage to the caller, who owns one
/// reference. Any file may be opened: one that is damaged, or made to harm, costs no more than its
/// own tables do, and reading answers STG_E_DOCFILECORRUPT where its bytes cannot be trusted.
///
/// `grfMode` is STGM_READ with STGM_SHARE_DENY_WRITE (others may read it meanwhile) or
/// STGM_SHARE_EXCLUSIVE (nobody may), or STGM_READ | STGM_TRANSACTED with either of them or
/// STGM_SHARE_DENY_NONE, which is taken for STGM_SHARE_DENY_WRITE; else STG_E_INVALIDFLAG. While
/// the file is open nobody can save over it, rename it or delete it (files.h).
/// Asking to write is refused: STG_E_ACCESSDENIED, and so does every operation that would write.
/// `stgfmt` is STGFMT_DOCFILE, STGFMT_STORAGE or STGFMT_ANY and `grfAttrs` 0 (else
/// STG_E_INVALIDPARAMETER), `riid` as above. `pStgOptions` may be null; else its version is 1 or 2
/// and the sector size of the file is put there.
///
/// | The path names | |
/// |---|---|
/// | nothing | STG_E_FILENOTFOUND; STG_E_PATHNOTFOUND when its folder is not there either |
/// | a file that may not be read, a folder, a pipe, a device | STG_E_ACCESSDENIED |
/// | a file that is being written, or read by one who shares it not | STG_E_SHAREVIOLATION |
/// | a file of another kind, also an empty one | STG_E_FILEALREADYEXISTS |
/// | a compound file with a header that makes no sense | STG_E_INVALIDHEADER |
/// | one of an older or a newer format | STG_E_OLDFORMAT, STG_E_OLDDLL |
/// | one whose directory makes no sense | STG_E_DOCFILECORRUPT |
KEL_PLATFORM_API HRESULT WINAPI StgOpenStorageEx(const WCHAR* pwcsName, DWORD grfMode, DWORD stgfmt,
                                                 DWORD grfAttrs, STGOPTIONS* pStgOptions,
                                                 PSECURITY_DESCRIPTOR pSecurityDescriptor,
                                                 REFIID riid, void** ppObjectOpen);

/// The same in the older manner. `pstgPriority` and `snbExclude` are null and `reserved` 0, else
/// STG_E_INVALIDPARAMETER.
KEL_PLATFORM_API HRESULT WINAPI StgOpenStorage(const WCHAR* pwcsName, IStorage* pstgPriority,
                                               DWORD grfMode, SNB snbExclude, DWORD reserved,
                                               IStorage** ppstgOpen);

/// S_OK when the file begins as a compound file does, S_FALSE when not, else as above.
KEL_PLATFORM_API HRESULT WINAPI StgIsStorageFile(const WCHAR* pwcsName);

/// What the last creation or opening of this thread answered; S_OK before the first. For a caller
/// that hears from a library in between only that there is no file.
KEL_PLATFORM_API HRESULT WINAPI KelLastStorageResult();

/// The allocator of memory that changes hands: names in STATSTG come from it.
KEL_PLATFORM_API LPVOID WINAPI CoTaskMemAlloc(SIZE_T cb);
KEL_PLATFORM_API LPVOID WINAPI CoTaskMemRealloc(LPVOID pv, SIZE_T cb);
KEL_PLATFORM_API void WINAPI CoTaskMemFree(LPVOID pv);
}

#endif
