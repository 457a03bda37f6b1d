#include "platform/files.h"

#ifndef _WIN32

#include <fcntl.h>

#include <cerrno>
#include <climits>
#include <new>

#include "compound/disk.h"
#include "platform/file_copy.h"
#include "platform/path.h"

namespace {

constexpr int WriteBit = 0x80;    // in a mode of _chmod
constexpr int WriteAccess = 0x2;  // in a mode of _access
constexpr mode_t EveryonesWrite = S_IWUSR | S_IWGRP | S_IWOTH;

/// Runs a service on a path. The service tells an errno; it becomes the run-time's kind of result.
template <class Service>
int Run(const char* path, const Service& service) {
  errno = EINVAL;
  if (path == nullptr) return -1;
  try {
    errno = service(NativePath(path).Text());
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
  }
  if (errno == EBUSY) errno = EACCES;  // what the run-time says of a file in use
  return errno == 0 ? 0 : -1;
}

bool IsReadOnly(const struct stat& status) {
  return !S_ISDIR(status.st_mode) && (status.st_mode & S_IWUSR) == 0;
}

/// 0 when nobody has the file open, here or in another process, which is told by locks: a storage
/// that is written has it alone, those that read it share it. Then it stays locked as long as
/// `file` is open, so that nobody begins to. EBUSY when somebody has, or another errno when that
/// cannot be found out. A file that lost its name before it was locked has made room for another,
/// which a save is writing.
int FindNoUse(const char* path, OpenFile& file) {
  Disk& disk = CurrentDisk();
  struct stat locked = {};
  struct stat named = {};
  int error = disk.Open(path, O_RDONLY | O_NONBLOCK, 0, file.Place());
  if (error != 0) return error;
  if (disk.Lock(file.Number(), true) == EWOULDBLOCK) return EBUSY;
  error = disk.Status(file.Number(), &locked);
  if (error != 0 || disk.StatusOf(path, &named) != 0) return error;
  return IsSameFile(named, locked) ? 0 : EBUSY;
}

int Remove(const char* path, bool isOwn) {
  struct stat status;
  int error = CurrentDisk().StatusOfLink(path, &status);
  if (error != 0) return error;
  if (IsReadOnly(status)) return EACCES;
  OpenFile file;
  if (!isOwn && S_ISREG(status.st_mode)) error = FindNoUse(path, file);
  // What this user may not read is still this user's to delete.
  return error == 0 || error == EACCES ? CurrentDisk().Remove(path) : error;
}

/// Renames, or copies to another file system, while the lock of FindNoUse is held.
int Move(const char* from, const char* to) {
  const int error = CurrentDisk().Rename(from, to);
  return error == EXDEV ? MoveByCopying(from, to) : error;
}

unsigned char Folded(unsigned char byte) {
  const bool capital = byte >= 'A' && byte <= 'Z';
  return static_cast<unsigned char>(capital ? byte - 'A' + 'a' : byte);
}

}  // namespace

namespace files {

int _access(const char* path, int mode) {
  return Run(path, [mode](const char* native) {
    struct stat status;
    const int error = CurrentDisk().StatusOf(native, &status);
    if (error != 0) return error;
    return (mode & WriteAccess) != 0 && IsReadOnly(status) ? EACCES : 0;
  });
}

int _chmod(const char* path, int mode) {
  return Run(path, [mode](const char* native) {
    struct stat status;
    const int error = CurrentDisk().StatusOf(native, &status);
    if (error != 0 || S_ISDIR(status.st_mode)) return error;
    const mode_t old = status.st_mode & 07777U;
    const mode_t wanted = (mode & WriteBit) != 0 ? old | S_IWUSR : old & ~EveryonesWrite;
    return wanted == old ? 0 : CurrentDisk().SetPermissions(native, wanted);
  });
}

int remove(const char* path) {
  return Run(path, [](const char* native) { return Remove(native, false); });
}

int KelRemoveOwn(const char* path) {
  return Run(path, [](const char* native) { return Remove(native, true); });
}

int rename(const char* from, const char* to) {
  if (to == nullptr) from = nullptr;
  return Run(from, [to](const char* source) {
    const NativePath target(to);
    OpenFile file;
    const int error = FindNoUse(source, file);
    return error == 0 ? Move(source, target.Text()) : error;
  });
}

int KelReplace(const char* from, const char* to) {
  return Run(from, [to](const char* source) {
    const NativePath target(to);
    OpenFile file;
    const int error = FindNoUse(source, file);
    if (error != 0 && error != ENOENT) return error;
    Remove(target.Text(), false);
    return error == 0 ? Move(source, target.Text()) : error;
  });
}

int _mbsnbicmp(const unsigned char* a, const unsigned char* b, std::size_t count) {
  if (a == nullptr || b == nullptr) return INT_MAX;
  for (; count > 0; --count, ++a, ++b) {
    const int difference = Folded(*a) - Folded(*b);
    if (difference != 0 || *a == 0) return difference;
  }
  return 0;
}

}  // namespace files

#endif
