#pragma once

/// The run-time's file services as Windows gives them, in a namespace of their own because two
/// of them share their names with the standard library's. On Windows they are the run-time's.
///
/// Off Windows both '/' and '\' separate the parts of a path. A file is read-only when its owner
/// has no write permission; that is asked of the file alone, so it holds for the superuser too.
/// A function that fails returns -1 (the comparison excepted), sets errno and changes nothing.

#ifdef _WIN32

#include <io.h>
#include <mbstring.h>
#include <windows.h>

#include <cerrno>
#include <cstdio>

namespace files {
using ::_access;
using ::_chmod;
using ::_mbsnbicmp;
using std::remove;
using std::rename;
inline int KelRemoveOwn(const char* /*path*/) { return -1; }
inline int KelReplace(const char* from, const char* to) {
  constexpr DWORD Anybody = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE file = CreateFileA(from, DELETE, Anybody, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file != INVALID_HANDLE_VALUE) {
    CloseHandle(file);
  } else if (GetLastError() == ERROR_SHARING_VIOLATION) {
    errno = EACCES;
    return -1;
  }
  std::remove(to);
  return std::rename(from, to);
}
}  // namespace files

#else

#include <cstddef>

#include "platform/base_types.h"

namespace files {

/// 0 when `path` exists (mode 0 or 4) and is not read-only (mode 2 or 6), else -1.
/// Directories are never read-only.
KEL_PLATFORM_API int _access(const char* path, int mode);

/// Makes `path` writable by its owner (mode 0x80 or 0x180) or read-only for everyone (mode 0 or
/// 0x100); its other permissions stay. A directory is left as it is. 0 when done.
KEL_PLATFORM_API int _chmod(const char* path, int mode);

/// Deletes the file `path`. 0 when done; a read-only file, one that a storage has open and a
/// directory are refused.
KEL_PLATFORM_API int remove(const char* path);

/// Deletes the file of a storage that the caller is writing: as long as it is open nobody else who
/// moves and makes files as here has a file of that name. 0 when done; Windows deletes no open
/// file.
KEL_PLATFORM_API int KelRemoveOwn(const char* path);

/// Gives the file `from` the name `to`. 0 when done. An existing `to` is refused and left alone,
/// and so is a `from` that a storage has open, or that this user may not read, of which that is not
/// known.
/// Between file systems the file is copied with its permissions and times, the copy brought safely
/// to the disk, and only then `from` deleted; a copy that fails is removed.
KEL_PLATFORM_API int rename(const char* from, const char* to);

/// Removes `to`, whether or not that is possible, and renames. But a `from` that is in use, which
/// would be refused afterwards, keeps its `to` as well: it may be the backup of who is writing now.
KEL_PLATFORM_API int KelReplace(const char* from, const char* to);

/// Compares at most `count` bytes, up to the end of either text, ignoring the case of the letters
/// A to Z: negative, 0 or positive as `a` sorts before, with or after `b`. A null text is never
/// equal (INT_MAX).
KEL_PLATFORM_API int _mbsnbicmp(const unsigned char* a, const unsigned char* b, std::size_t count);

}  // namespace files

#endif
