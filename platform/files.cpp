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
  return errno == 0 ? 0 : -1;
}

bool IsReadOnly(const struct stat& status) {
  return !S_ISDIR(status.st_mode) && (status.st_mode & S_IWUSR) == 0;
}

enum class Use { None, Reading, Writing };

/// Who has the file open, here or in another process, which is told by locks: a storage that is
/// written has it alone, those that read it share it. 0, or an errno when that cannot be found out.
/// A file that nobody uses stays locked as long as `file` is open, so that nobody begins to. One
/// that lost its name before it was locked has made room for another, which a save is writing.
int FindUse(const char* path, OpenFile& file, Use* use) {
  *use = Use::None;
  Disk& disk = CurrentDisk();
  const int error = disk.Open(path, O_RDONLY | O_NONBLOCK, 0, file.Place());
  if (error == EACCES) return 0;  // who may not read a file has no storage on it
  if (error != 0) return error;
  if (disk.Lock(file.Number(), false) == EWOULDBLOCK) {
    *use = Use::Writing;
  } else if (disk.Lock(file.Number(), true) == EWOULDBLOCK) {
    *use = Use::Reading;
  } else {
    struct stat locked = {};
    struct stat named = {};
    const int unknown = disk.Status(file.Number(), &locked);
    if (unknown != 0 || disk.StatusOf(path, &named) != 0) return unknown;
    if (named.st_dev != locked.st_dev || named.st_ino != locked.st_ino) *use = Use::Writing;
  }
  return 0;
}

int Remove(const char* path, bool isOwn) {
  return Run(path, [isOwn](const char* native) {
    struct stat status;
    const int error = CurrentDisk().StatusOfLink(native, &status);
    if (error != 0) return error;
    if (IsReadOnly(status)) return EACCES;
    OpenFile file;
    Use use = Use::None;
    if (!isOwn && S_ISREG(status.st_mode)) FindUse(native, file, &use);
    return use != Use::None ? EACCES : CurrentDisk().Remove(native);
  });
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

int remove(const char* path) { return Remove(path, false); }

int KelRemoveOwn(const char* path) { return Remove(path, true); }

int rename(const char* from, const char* to) {
  if (to == nullptr) from = nullptr;
  return Run(from, [to](const char* source) {
    const NativePath target(to);
    OpenFile file;
    Use use = Use::None;
    int error = FindUse(source, file, &use);
    if (error != 0) return error;
    if (use != Use::None) return EACCES;
    error = CurrentDisk().Rename(source, target.Text());
    return error == EXDEV ? MoveByCopying(source, target.Text()) : error;
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
